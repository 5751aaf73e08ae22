#pragma once

#include <mutex>
#include <string>

#include "vantile/platform/linux/kept_file.h"
#include "vantile/platform/linux/roots.h"
#include "vantile/platform/parsers/proc_stat.h"
#include "vantile/platform/processors.h"

namespace vantile {

/// Processors from /proc/stat, their work from /proc itself and /proc/loadavg.
class LinuxProcessors final : public Processors {
 public:
  explicit LinuxProcessors(const LinuxRoots& roots = {});

  std::optional<std::vector<ProcessorTicks>> ticks() override;
  std::optional<TaskCounts> tasks() override;
  std::vector<double> loadAverages() override;
  std::optional<std::uint64_t> frequency() override;
  std::optional<std::uint32_t> count() override;

 private:
  std::optional<ProcStat> stat();
  std::optional<std::uint64_t> processes();
  std::uint64_t listProcesses();
  std::optional<std::uint64_t> kilohertz(const char* file);

  const std::string proc_, cpufreq_;
  std::mutex mutex_;  // over all below
  KeptFile stat_, loadavg_;
  std::size_t statPart_;  // bytes that hold the processors' lines
  ProcessorCounters counters_;
  std::uint64_t otherLinks_ = 0;  // of /proc, that are no process
  bool linksAreCounted_ = false;
  unsigned readings_ = 0;
};

}  // namespace vantile
