#pragma once

#include <cstdint>
#include <optional>
#include <string_view>

namespace vantile {

/// What /proc/meminfo says, in KiB. A line that is missing or unreadable is absent.
struct Meminfo {
  std::optional<std::uint64_t> memTotal, memFree, memAvailable;
  std::optional<std::uint64_t> active, inactive;
  std::optional<std::uint64_t> swapTotal;
  std::optional<std::uint64_t> zswap, zswapped;  ///< what zswap occupies, and what it holds
  std::optional<std::uint64_t> kReclaimable;
};

Meminfo parseMeminfo(std::string_view text);

}  // namespace vantile
