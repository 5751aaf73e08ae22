#include "vantile/platform/linux/usage_volumes.h"

#include <linux/msdos_fs.h>
#include <sys/ioctl.h>
#include <sys/vfs.h>

#include <algorithm>
#include <array>
#include <cstring>
#include <memory>
#include <string_view>

#include "vantile/platform/linux/statx.h"
#include "vantile/platform/linux/udev.h"
#include "vantile/platform/posix/descriptor.h"

namespace vantile {
namespace {

std::string identifierByUdev(const DeviceNumber& number) {
  if (number.major == 0) return {};
  const auto device =
      ::makedev(static_cast<unsigned>(number.major), static_cast<unsigned>(number.minor));
  return udevProperty(device, "ID_FS_UUID_ENC").value_or("");
}

// As <linux/fs.h> has it since 6.9.
struct KernelUuid {
  std::uint8_t length;
  std::array<std::uint8_t, 16> bytes;
};
constexpr unsigned long getUuid = _IOR(0x15, 0, KernelUuid);

std::string hexadecimal(const void* bytes, std::size_t count) {
  std::string text;
  for (const auto* next = static_cast<const unsigned char*>(bytes); count > 0; ++next, --count)
    text.append({"0123456789abcdef"[*next >> 4], "0123456789abcdef"[*next & 15]});
  return text;
}

/// FAT's serial number; on kernels that tell it, any file system's UUID.
std::string identifierByFileSystem(const std::string& mountPoint) {
  const Descriptor root(::open(mountPoint.c_str(), folderFlags | O_NOFOLLOW));
  KernelUuid uuid = {};
  std::uint32_t serial = 0;
  if (root && ::ioctl(root.get(), getUuid, &uuid) == 0)
    return hexadecimal(uuid.bytes.data(), std::min<std::size_t>(uuid.length, uuid.bytes.size()));
  if (root && ::ioctl(root.get(), FAT_IOCTL_GET_VOLUME_ID, &serial) == 0)
    return hexadecimal(&serial, sizeof serial);
  return {};
}

}  // namespace

std::string deviceAndSize(const DeviceNumber& device, std::uint64_t blockSize,
                          std::uint64_t blocks) {
  std::string text;
  if (device.major == 0) return text;
  for (const auto number : {device.major, device.minor, blockSize, blocks})
    text.append(std::to_string(number)).push_back(' ');
  return text;
}

/// As the monitor knows volumes, of whatever type.
const MountedVolume* UsageVolumes::mountedAt(const std::string& mountPoint) {
  if (table_.changed()) {
    auto mounts = parseMountinfo(table_.text().value_or(std::string_view()));
    std::vector<std::string> names;
    names.reserve(mounts.size());
    for (const auto& mount : mounts) names.push_back(mount.type);
    const std::vector<std::string_view> types(names.begin(), names.end());
    volumes_ = volumesIn(std::move(mounts), types);
    identifiers_.clear();
  }
  const auto found = std::ranges::find(volumes_, mountPoint, [](const MountedVolume& volume) {
    return std::string_view(volume.mount.mountPoint);
  });
  return found == volumes_.end() ? nullptr : &*found;
}

bool UsageVolumes::mayHang(const std::string& mountPoint) {
  const auto* const volume = mountedAt(mountPoint);
  return volume && volume->mayHang;
}

std::vector<std::string> UsageVolumes::othersOf(const std::string& mountPoint) {
  const auto* const volume = mountedAt(mountPoint);
  return volume ? volume->others : std::vector<std::string>();
}

std::optional<UsageVolume> UsageVolumes::at(const std::string& mountPoint) {
  struct statfs system = {};
  const auto* const mounted = mountedAt(mountPoint);
  const auto status =
      statusOf(AT_FDCWD, mountPoint.c_str(), AT_SYMLINK_NOFOLLOW, STATX_TYPE | STATX_INO);
  if (!status || !S_ISDIR(status->stx_mode) || ::statfs(mountPoint.c_str(), &system) != 0)
    return std::nullopt;
  const auto [known, isNew] = identifiers_.try_emplace(mountPoint);
  if (isNew && mounted) known->second = identifierByUdev(mounted->mount.device);
  if (isNew && known->second.empty() && !(mounted && mounted->mayHang))
    known->second = identifierByFileSystem(mountPoint);
  UsageVolume volume{.root = status->stx_ino, .mountPoint = mountPoint};
  volume.identifier = known->second;
  if (known->second.empty())
    volume.identifier = deviceAndSize({status->stx_dev_major, status->stx_dev_minor},
                                      static_cast<std::uint64_t>(system.f_bsize), system.f_blocks);
  static_assert(sizeof volume.fileSystem == sizeof system.f_fsid);
  std::memcpy(&volume.fileSystem, &system.f_fsid, sizeof volume.fileSystem);
  return volume;
}

}  // namespace vantile
