#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "vantile/platform/swap_areas.h"

namespace vantile {

/// A line of /proc/swaps.
struct SwapLine {
  SwapArea area;
  std::uint64_t usedBytes = 0;
};

/// The swap areas in the kernel's order. Lines that can't be read are left out. The kernel's mark
/// on a file that was deleted while in use is not part of its path.
std::vector<SwapLine> parseSwaps(std::string_view text);

}  // namespace vantile
