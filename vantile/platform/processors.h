#pragma once

#include <cstdint>
#include <memory>
#include <optional>
#include <vector>

#include "vantile/foundation/api.h"

namespace vantile {

/// What a processor did, in ticks of 10 ms since some moment.
struct ProcessorTicks {
  std::uint64_t user = 0, system = 0, idle = 0, nice = 0;
  friend bool operator==(const ProcessorTicks&, const ProcessorTicks&) = default;
};

/// How much there is to schedule.
struct TaskCounts {
  std::int32_t tasks = 0, threads = 0;
  friend bool operator==(const TaskCounts&, const TaskCounts&) = default;
};

/// The machine's processors and what they have to do. Any thread.
class Processors {
 public:
  virtual ~Processors() = default;

  /// The counters of every processor, by its number, or nothing when the system refuses them.
  /// macOS: host_processor_info, PROCESSOR_CPU_LOAD_INFO; its counters go on modulo 2^32.
  /// Linux: /proc/stat. Interrupts and stolen time are system, waiting for disks is idle. Counters
  /// begin at 0 with the process's first reading and never run backwards. A processor that is
  /// offline repeats its counters; one whose number is beyond those of the first reading is left
  /// out.
  virtual std::optional<std::vector<ProcessorTicks>> ticks() = 0;

  /// Processes and threads, or nothing when the system refuses them.
  /// macOS: processor_set_statistics of the default set, PROCESSOR_SET_LOAD_INFO: Mach tasks.
  /// Linux: the links of /proc, one a process beside those of its other folders, and the last
  /// number of /proc/loadavg's "running/all". Where /proc has no such links its folders are
  /// counted, which in a container are the container's; the threads are the machine's there too.
  virtual std::optional<TaskCounts> tasks() = 0;

  /// The load averages of 1, 5 and 15 minutes, as many as the system gives. getloadavg.
  virtual std::vector<double> loadAverages() = 0;

  /// The clock in hertz, or nothing when the system does not tell.
  /// macOS: sysctl {CTL_HW, HW_CPU_FREQ}, 32 bits wide; Apple's own processors have none.
  /// Linux: cpufreq's base_frequency, else its cpuinfo_max_freq, both of the first processor, else
  /// the rate that /proc/cpuinfo gives.
  virtual std::optional<std::uint64_t> frequency() = 0;

  /// How many processors there are, or nothing when the system does not tell.
  /// macOS: sysctl {CTL_HW, HW_NCPU}. Linux: those that /proc/stat lists, which are online.
  virtual std::optional<std::uint32_t> count() = 0;
};

/// The machine's processors, shared by the process.
VANTILE_API std::shared_ptr<Processors> systemProcessors();

}  // namespace vantile
