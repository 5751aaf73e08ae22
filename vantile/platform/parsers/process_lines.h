#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "vantile/platform/parsers/pid_stat.h"

namespace vantile {

/// The identifiers in a list with commas between them, as far as they are positive 32-bit numbers.
std::vector<std::int32_t> parsePidList(std::string_view list);

/// Lengths that a machine counts in.
struct ProcessUnits {
  std::uint64_t ticksPerSecond = 100;
  std::uint64_t pageBytes = 4096;
  std::uint64_t memoryBytes = 0;  ///< physical; 0 for unknown, which makes each share 0
};

/// A process at one look at it.
struct ProcessTimes {
  std::uint64_t startTicks = 0;   ///< since boot
  std::uint64_t usedTicks = 0;    ///< of processor time
  std::uint64_t nanoseconds = 0;  ///< since boot, time asleep with it: when that was
};

/// A share in tenths of a percent.
using Tenths = std::uint64_t;

/// The share of one processor between two looks at one process; nothing where they are so close
/// together that a tick of the kernel's clock would decide.
std::optional<Tenths> processorShare(const ProcessTimes& before, const ProcessTimes& now,
                                     const ProcessUnits& units);
/// The share of one processor over the process's life.
Tenths processorShareOfLife(const ProcessTimes& now, const ProcessUnits& units);
Tenths memoryShare(std::uint64_t residentPages, const ProcessUnits& units);

/// The line above the processes'.
inline constexpr std::string_view processLineHeader =
    "    PID  %CPU %MEM      RSS        VSZ STAT\n";

/// Adds the process's line: pid, share of a processor, of the memory, resident and virtual KiB, and
/// the letters of its state: the kernel's own, N for a nice one, s for the leader of a session, l
/// for one of several threads.
void appendProcessLine(std::string& lines, const PidStat& stat, Tenths processor,
                       const ProcessUnits& units);

}  // namespace vantile
