#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace vantile {

/// A line of /proc/PID/mountinfo, its octal escapes resolved.
struct Mount {
  std::string root;        ///< what of the file system is mounted
  std::string mountPoint;  ///< where
  std::string type;        ///< of the file system
  std::string source;
  std::string superOptions;  ///< of the file system, separated by commas
};

/// The mounts in the kernel's order. Lines that can't be read are left out.
std::vector<Mount> parseMountinfo(std::string_view text);

}  // namespace vantile
