#include "vantile/platform/linux/volume_label.h"

#include <fcntl.h>
#include <linux/fs.h>
#include <sys/ioctl.h>
#include <sys/stat.h>
#include <sys/sysmacros.h>

#include <cstring>

#include "vantile/platform/linux/udev.h"
#include "vantile/platform/parsers/text.h"
#include "vantile/platform/posix/descriptor.h"
#include "vantile/platform/posix/files.h"

namespace vantile {
namespace {

/// The block device of the file system. One that spans several, or has none, was given a number
/// by the kernel that is no device's, and names one as its source.
std::optional<dev_t> deviceOf(const Mount& mount) {
  if (mount.device.major != 0)
    return ::makedev(static_cast<unsigned>(mount.device.major),
                     static_cast<unsigned>(mount.device.minor));
  struct stat status = {};
  if (!mount.source.starts_with("/dev/")) return std::nullopt;
  if (::stat(mount.source.c_str(), &status) != 0 || !S_ISBLK(status.st_mode)) return std::nullopt;
  return status.st_rdev;
}

std::optional<std::string> labelByUdev(const Mount& mount) {
  const auto number = deviceOf(mount);
  const auto label = number ? udevProperty(*number, "ID_FS_LABEL_ENC") : std::nullopt;
  return label ? std::optional(withoutHexEscapes(*label)) : std::nullopt;
}

/// ext4, btrfs, xfs, f2fs and a few more tell it to anybody who may read their root.
std::optional<std::string> labelByFileSystem(const std::string& mountPoint) {
  const Descriptor root(::open(mountPoint.c_str(), folderFlags));
  char label[FSLABEL_MAX] = {};
  if (!root || ::ioctl(root.get(), FS_IOC_GETFSLABEL, label) != 0) return std::nullopt;
  return std::string(label, ::strnlen(label, sizeof label));
}

}  // namespace

std::optional<std::string> labelOf(const MountedVolume& volume) {
  auto label = labelByUdev(volume.mount);
  if (!label && !volume.mayHang) label = labelByFileSystem(volume.mount.mountPoint);
  return label && !label->empty() ? label : std::nullopt;
}

}  // namespace vantile
