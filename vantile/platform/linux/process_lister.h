#pragma once

#include <cstdint>
#include <functional>
#include <mutex>
#include <string>
#include <unordered_map>

#include "vantile/platform/linux/kept_file.h"
#include "vantile/platform/linux/recent_stats.h"
#include "vantile/platform/linux/roots.h"
#include "vantile/platform/parsers/process_lines.h"
#include "vantile/platform/process_lister.h"

namespace vantile {

/// The list of processes from /proc/PID/stat.
class LinuxProcessLister final : public ProcessLister {
 public:
  /// Gives the nanoseconds since boot, those asleep with them.
  using Clock = std::function<std::uint64_t()>;

  /// Takes readings that somebody else just made from `recent`.
  LinuxProcessLister(const LinuxRoots& roots, Clock clock, RecentStats& recent);

  std::optional<ProcessListing> run(const std::string& pids, const std::string& columns) override;

 private:
  /// A process at the look that its present share began at.
  struct Seen {
    ProcessTimes times;
    Tenths share = 0;       ///< what was last told
    std::uint64_t run = 0;  ///< that saw it last
  };

  std::optional<RecentStats::Reading> read(int proc, std::int32_t pid);
  Tenths shareOf(const RecentStats::Reading& reading, const ProcessUnits& units);
  ProcessUnits units();
  void forget(std::size_t asked);

  const std::string proc_;
  const Clock clock_;
  RecentStats& recent_;
  std::mutex mutex_;  // over all below
  KeptFile meminfo_;
  std::uint64_t memoryBytes_ = 0;
  std::unordered_map<std::int32_t, Seen> seen_;
  std::uint64_t runs_ = 0;
};

}  // namespace vantile
