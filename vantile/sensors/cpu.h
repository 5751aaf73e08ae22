#pragma once

#include <atomic>
#include <cstdint>
#include <functional>
#include <memory>
#include <mutex>
#include <optional>
#include <string>
#include <vector>

#include "vantile/foundation/api.h"
#include "vantile/foundation/monitor.h"
#include "vantile/foundation/sample_lock.h"

namespace vantile {

struct ProcessorTicks;
struct SensorsPorts;

/// Told of processor samples, in this order. Each operation may be left empty. Called on the thread
/// that samples, one call at a time; a sample asked for from inside a call is skipped.
struct CPUDelegate {
  /// Once a processor, by its number from 0: what it did since the sample before, as parts of 1.
  /// Nice work is the user's. All three are 0 where its counters did not move.
  std::function<void(std::uint32_t core, float system, float user, float idle)>
      cpuUsedWithCoreWithSystemWithUserWithIdle;
  /// Once, of all processors together. One whose counters did not move counts as a tick of nothing.
  /// macOS: a counter that went backwards makes a part huge, here and above.
  std::function<void(float system, float user, float idle)> cpuUsedWithSystemWithUserWithIdle;
  /// How many tasks and threads there are. Linux: processes and threads.
  std::function<void(std::int32_t tasks, std::int32_t threads)>
      processorWithTaskCountWithThreadCount;
  /// The load averages of 1, 5 and 15 minutes.
  std::function<void(float oneMinute, float fiveMinutes, float fifteenMinutes)>
      loadAverageWith1mWith5mWith15m;
  /// The processor's temperature in degrees Celsius, above 0. Left out where it can't be read.
  std::function<void(double celsius)> cpuWithTemperature;
};

/// Samples the processors once a refresh interval: the share that each one was busy, the tasks and
/// threads, the load averages and the temperature.
///
/// macOS: Mach host statistics, the SMC. Linux: /proc/stat, /proc, the processor's temperature
/// sensor; the figures are the machine's, in a container too.
class VANTILE_API CPUStatus final : public Monitor<CPUDelegate> {
 public:
  /// The instance that the process shares, made at the first call; null when the system gives no
  /// counters, and then tried again at the next call. It samples every second on the run loop of
  /// the thread that made it. Never destroyed. Any thread.
  static std::shared_ptr<CPUStatus> singleton();

  /// A new monitor that samples every second on the calling thread's run loop, or null when the
  /// system gives no counters.
  static std::shared_ptr<CPUStatus> init();

  ~CPUStatus() override;
  CPUStatus(const CPUStatus&) = delete;
  CPUStatus& operator=(const CPUStatus&) = delete;

  /// Takes one sample, which the first time tells of the time since `init`. Counters that the
  /// system refuses skip the whole sample silently. Where the temperature can't be had because
  /// there is no SMC or sensor, every sample prints a line to standard output.
  void updateInfo(const Timer* firing = nullptr) override;

  /// What the system told at the start, or a host set since. Any thread.
  std::optional<std::string> cpuName() const;
  void setCpuName(std::optional<std::string> name);
  std::optional<std::string> cpuSpeed() const;
  void setCpuSpeed(std::optional<std::string> speed);
  std::uint32_t numberOfCPUs() const { return _numberOfCPUs; }
  void setNumberOfCPUs(std::uint32_t count) { _numberOfCPUs = count; }

  /// "Intel", whatever the processor.
  std::string getCPUName() const;
  /// The clock, such as "2.40 GHz", up to one billion hertz as "1000.00 MHz"; nothing when the
  /// system does not tell.
  std::optional<std::string> getCPUSpeed() const;
  /// How many processors there are; 1 when the system does not tell.
  std::int32_t getNumberOfCPUs() const;

 private:
  /// Ticks of a processor since the sample before.
  struct CoreTicks {
    std::int64_t system = 0;
    std::int64_t user = 0;  ///< with nice
    std::int64_t idle = 0;
    std::int64_t total = 0;  ///< their sum; 1 where that is 0
  };

  explicit CPUStatus(SensorsPorts ports);
  bool begin();
  void sample();
  void account(const std::vector<ProcessorTicks>& ticks);
  static CoreTicks since(const ProcessorTicks& prior, const ProcessorTicks& now);
  void reportUsage();
  void reportTasks();
  void reportLoad();
  void reportTemperature();
  template <class Operation, class... Arguments>
  void report(Operation CPUDelegate::*operation, Arguments... arguments);

  const std::unique_ptr<const SensorsPorts> ports_;
  SampleLock CPUUsageLock;  // over one sample and its delegate calls
  std::vector<ProcessorTicks> priorCPUTicks;
  std::vector<CoreTicks> cpusInfo;          // of the latest sample
  std::atomic<std::uint64_t> samples_ = 0;  // whose counters were accounted for
  mutable std::mutex propertyLock_;         // over the two texts
  std::optional<std::string> _cpuName;
  std::optional<std::string> _cpuSpeed;
  std::atomic<std::uint32_t> _numberOfCPUs = 0;
};

}  // namespace vantile
