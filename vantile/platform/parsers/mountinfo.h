#pragma once

#include <compare>
#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

namespace vantile {

/// A device by the kernel's numbers.
struct DeviceNumber {
  std::uint64_t major = 0;  ///< 0 for what is no device: the file system was given a number
  std::uint64_t minor = 0;
  friend auto operator<=>(const DeviceNumber&, const DeviceNumber&) = default;
};

/// A line of /proc/PID/mountinfo, its octal escapes resolved.
struct Mount {
  std::string root;        ///< what of the file system is mounted
  std::string mountPoint;  ///< where
  std::string type;        ///< of the file system
  std::string source;
  std::string superOptions;  ///< of the file system, separated by commas
  std::uint64_t id = 0;
  std::uint64_t parent = 0;  ///< the mount that its mount point is in
  DeviceNumber device = {};  ///< of the file system, however often it is mounted
};

/// The mounts in the kernel's order. Lines that can't be read are left out.
std::vector<Mount> parseMountinfo(std::string_view text);

}  // namespace vantile
