#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string_view>

namespace vantile {

/// Counters of /proc/vmstat, since boot. One that is missing is absent.
struct Vmstat {
  std::optional<std::uint64_t> pgpgin, pgpgout;  ///< KiB, not pages
  std::optional<std::uint64_t> pgfault;
  std::optional<std::uint64_t> pglazyfreed;
  std::optional<std::uint64_t> zswpin, zswpout;  ///< pages; near the end of the file
  std::size_t bytes = 0;  ///< of the text, up to the end of the last line that was looked up
};

/// Reads the counters that stand in the first part of the file.
Vmstat parseVmstat(std::string_view text);
/// Reads zswap's counters, too, for which the whole file is needed.
Vmstat parseWholeVmstat(std::string_view text);

}  // namespace vantile
