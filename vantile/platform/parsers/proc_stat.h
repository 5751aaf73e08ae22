#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string_view>
#include <vector>

#include "vantile/platform/processors.h"

namespace vantile {

/// A processor's line of /proc/stat, in ticks since boot, in the four kinds that count here.
struct ProcessorLine {
  std::uint32_t number = 0;
  std::uint64_t user = 0;    ///< without nice; guests are in it
  std::uint64_t system = 0;  ///< with interrupts and stolen time
  std::uint64_t idle = 0;    ///< with waiting for disks
  std::uint64_t nice = 0;
  friend bool operator==(const ProcessorLine&, const ProcessorLine&) = default;
};

struct ProcStat {
  std::vector<ProcessorLine> processors;  ///< in the kernel's order; those that are online
  bool complete = false;                  ///< whether something else comes behind them
};

/// Reads the processors out of the beginning of the file. A line that can't be read or was cut off
/// is left out, and so is the sum of all processors. No number of a processor is 65536 or more.
ProcStat parseProcStat(std::string_view text);

/// Makes counters that begin at 0 and never run backwards of the kernel's, which do: time moves
/// between idle and waiting, and a processor's may begin anew when it comes back.
class ProcessorCounters {
 public:
  /// The counters after a reading. The first one settles how many there are; what is not in a
  /// reading repeats its own. What a processor did while it was not in the readings is not counted.
  const std::vector<ProcessorTicks>& advance(const ProcStat& reading);

 private:
  struct Seen {
    ProcessorLine line;         // what was counted to
    std::uint64_t reading = 0;  // that it was last in
  };

  std::uint64_t readings_ = 0;
  std::vector<Seen> seen_;
  std::vector<ProcessorTicks> ticks_;
};

}  // namespace vantile
