#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

namespace vantile {

/// What /proc/cpuinfo tells of the processors. What it does not is absent: which lines there are
/// depends on the architecture.
struct Cpuinfo {
  std::optional<std::string> modelName;  ///< of the first processor that has one
  /// Different pairs of "physical id" and "core id"; absent where a processor lacks one.
  std::optional<std::uint32_t> physicalCores;
  /// Hertz of the first processor that tells: the rate that its model name ends in ("@ 2.40GHz"),
  /// else "cpu MHz", which on many machines is the present rate.
  std::optional<std::uint64_t> nominalRate;
};

/// Reads blocks of "key : value" lines, one a processor, with a blank line between them.
Cpuinfo parseCpuinfo(std::string_view text);

}  // namespace vantile
