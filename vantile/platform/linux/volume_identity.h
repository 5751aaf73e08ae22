#pragma once

#include <cstdint>
#include <functional>
#include <optional>
#include <string>

#include "vantile/platform/linux/roots.h"
#include "vantile/platform/parsers/mounted_volumes.h"

namespace vantile {

/// The kernel's number of the mount that stands at the path, which it gives to no other one as long
/// as it runs; nothing before Linux 6.8, or where the path can't be reached. Asks no server.
std::optional<std::uint64_t> lastingMountId(const std::string& mountPoint);

/// The number that the file system there gives itself in its statistics, for which it is asked.
std::optional<std::uint64_t> fileSystemId(const std::string& mountPoint);

/// What of a volume tells it apart from others that were, or will be, mounted at its place.
class VolumeIdentities {
 public:
  struct Means {
    std::function<std::optional<std::uint64_t>(const std::string&)> mountId = lastingMountId;
    std::function<std::optional<std::uint64_t>(const std::string&)> fileSystemId =
        vantile::fileSystemId;
    LinuxRoots roots = {};
  };

  VolumeIdentities() : VolumeIdentities(Means{}) {}
  explicit VolumeIdentities(Means means) : means_(std::move(means)) {}

  /// The mount's own number where the kernel has one that lasts. Else the numbers of device and
  /// mount, which are used again, with those of the medium and of the file system: the one knows
  /// sticks and images apart, the other what was made anew on the same. Waits for nobody.
  std::string of(const MountedVolume& volume) const;

 private:
  std::optional<std::string> mediumOf(const DeviceNumber& device) const;

  const Means means_;
};

}  // namespace vantile
