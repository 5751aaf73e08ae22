#pragma once

#include <cstdint>
#include <optional>
#include <string>

namespace vantile {

struct MemoryPorts;

/// Where the swap files stand and what their names begin with.
struct SwapLocation {
  std::string folder, prefix;
};

/// Swap files found, and what they take.
struct SwapFiles {
  std::uint32_t count = 0;
  std::uint64_t bytes = 0;
  bool anyEntry = false;  ///< whether there was anything to look at
};

/// From the kernel's own list of swap areas: the first one that is a file. Where the kernel keeps
/// no list: from the pager's command line in the process list. The defaults where that gives
/// nothing.
SwapLocation findSwapLocation(const MemoryPorts& ports);

/// The kernel's swap areas; where it keeps no list, the files below the location's folder whose
/// path from there begins with its prefix.
SwapFiles countSwapFiles(const MemoryPorts& ports, const SwapLocation& location);

}  // namespace vantile
