#pragma once

#include <string>

namespace vantile {

/// Where the kernel shows its facts, and daemons theirs. The one place that names these folders;
/// tests name others.
struct LinuxRoots {
  std::string proc = "/proc";
  std::string sys = "/sys";
  std::string sysctl = "/proc/sys";
  std::string run = "/run";
};

}  // namespace vantile
