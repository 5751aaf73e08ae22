#pragma once

#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "vantile/foundation/api.h"

namespace vantile {

/// One place that the kernel swaps to.
struct SwapArea {
  std::string path;         ///< absolute; of a file, a partition or another block device
  bool isFile = false;      ///< a file in a folder rather than a device
  std::uint64_t bytes = 0;  ///< its size
};

/// Swap in use, as the kernel counts it.
struct SwapUsage {
  std::uint64_t usedBytes = 0;
  bool encrypted = false;
};

/// Swap space of the machine. Any thread.
class SwapAreas {
 public:
  virtual ~SwapAreas() = default;

  /// The swap areas in the kernel's order, or nothing on a system whose kernel has no such list,
  /// where the swap files are found by their pager's command line and counted in its folder.
  /// macOS: nothing. Linux: /proc/swaps; an empty list when it can't be read.
  virtual std::optional<std::vector<SwapArea>> areas() = 0;

  /// Swap in use, or nothing when the system does not tell.
  /// macOS: sysctl {CTL_VM, VM_SWAPUSAGE}. Linux: the used column of /proc/swaps; encrypted when
  /// there is an area and every one of them is a dm-crypt device.
  virtual std::optional<SwapUsage> usage() = 0;
};

/// The machine's swap space, shared by the process.
VANTILE_API std::shared_ptr<SwapAreas> systemSwapAreas();

}  // namespace vantile
