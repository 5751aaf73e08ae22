#include "vantile/platform/linux/volume_identity.h"

#include <sys/vfs.h>

#include <cstring>

#include "vantile/platform/linux/first_line.h"
#include "vantile/platform/linux/statx.h"

// Headers older than the kernel that runs lack it.
#ifndef STATX_MNT_ID_UNIQUE
#define STATX_MNT_ID_UNIQUE 0x00004000U
#endif

namespace vantile {
namespace {

/// Where the kernel puts the mount's number, which the C library's structure may not have a name
/// for yet.
constexpr std::size_t mountIdAt = 0x90;

}  // namespace

std::optional<std::uint64_t> lastingMountId(const std::string& mountPoint) {
  const auto status =
      statusOf(AT_FDCWD, mountPoint.c_str(), AT_STATX_DONT_SYNC, STATX_MNT_ID_UNIQUE);
  if (!status || (status->stx_mask & STATX_MNT_ID_UNIQUE) == 0) return std::nullopt;
  std::uint64_t id = 0;
  static_assert(sizeof *status >= mountIdAt + sizeof id);
  std::memcpy(&id, reinterpret_cast<const char*>(&*status) + mountIdAt, sizeof id);
  return id;
}

std::optional<std::uint64_t> fileSystemId(const std::string& mountPoint) {
  struct statfs system = {};
  if (::statfs(mountPoint.c_str(), &system) != 0) return std::nullopt;
  std::uint64_t id = 0;
  static_assert(sizeof id == sizeof system.f_fsid);
  std::memcpy(&id, &system.f_fsid, sizeof id);
  return id;
}

std::string VolumeIdentities::of(const MountedVolume& volume) const {
  const auto& mount = volume.mount;
  const auto id = volume.wayMayHang ? std::nullopt : means_.mountId(mount.mountPoint);
  if (id) return std::to_string(*id);
  const auto system = volume.mayHang ? std::nullopt : means_.fileSystemId(mount.mountPoint);
  return std::to_string(mount.device.major) + ':' + std::to_string(mount.device.minor) + ' ' +
         std::to_string(mount.id) + ' ' + mediumOf(mount.device).value_or("-") + ' ' +
         (system ? std::to_string(*system) : "-");
}

/// The number of the disk, which counts on with each medium and image; since Linux 5.15.
std::optional<std::string> VolumeIdentities::mediumOf(const DeviceNumber& device) const {
  const auto folder = means_.roots.sys + "/dev/block/" + std::to_string(device.major) + ':' +
                      std::to_string(device.minor);
  const auto number = firstLineOf(folder + "/diskseq");
  return number ? number : firstLineOf(folder + "/../diskseq");  // of the disk of a partition
}

}  // namespace vantile
