#include <sys/resource.h>

#include <chrono>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <memory>
#include <optional>
#include <string>

#include "vantile/disk/disk.h"
#include "vantile/memory/memory.h"
#include "vantile/network/network.h"
#include "vantile/power/battery_info.h"
#include "vantile/process/process_stats.h"
#include "vantile/sensors/cpu.h"

#include "quiet_output.h"

// Leaves the process to monitors at the intervals that they have by themselves, and counts how
// often it wakes, what it takes of the processor and what memory it has. A wakeup is the end of a
// voluntary context switch, of whichever of the process's threads.
//
//   wakeups [memory|all|MONITOR...] [SECONDS]
//
// The memory monitor, all of them, or it and those that are named, of cpu, process, network, disk
// and battery, for 20 seconds. The disk monitor's volumes are gone through first.
//
// Ends with 1 above 1.1 wakeups a second; for all monitors above 1.5, 0.15 % of a processor or 16
// MiB.

namespace {

using Seconds = std::chrono::duration<double>;

struct Spent {
  std::chrono::steady_clock::time_point at = std::chrono::steady_clock::now();
  long switches = 0;
  double processor = 0;  // seconds
};

Spent spent() {
  rusage usage = {};
  ::getrusage(RUSAGE_SELF, &usage);
  const auto seconds = [](const timeval& time) {
    return static_cast<double>(time.tv_sec) + static_cast<double>(time.tv_usec) / 1e6;
  };
  Spent now;
  now.switches = usage.ru_nvcsw;
  now.processor = seconds(usage.ru_utime) + seconds(usage.ru_stime);
  return now;
}

/// Of this process, in MiB.
double residentMemory() {
  std::ifstream status("/proc/self/status");
  for (std::string line; std::getline(status, line);)
    if (line.starts_with("VmRSS:")) return std::atof(line.c_str() + 6) / 1024;
  return 0;
}

/// Whether what was used in between is within the aims.
bool report(const Spent& first, const Spent& last, double memory, bool all) {
  const double seconds = Seconds(last.at - first.at).count();
  const double wakeups = static_cast<double>(last.switches - first.switches) / seconds;
  const double microseconds = (last.processor - first.processor) / seconds * 1e6;
  const bool met =
      all ? wakeups <= 1.5 && microseconds <= 1500 && memory > 0 && memory <= 16 : wakeups <= 1.1;
  std::printf("%.2f wakeups/s, %.0f us of processor a second, %.1f MiB, over %.1f s: %s\n", wakeups,
              microseconds, memory, seconds, met ? "met" : "MISSED");
  return met;
}

/// Those besides the memory monitor, with delegates that want everything.
class Others {
 public:
  explicit Others(const std::string& wanted) {
    const auto wants = [&wanted](const char* name) {
      return wanted == "all " || wanted.find(name) != wanted.npos;
    };
    if (wants("cpu")) startProcessor();
    if (wants("process")) startProcess();
    if (wants("network")) startNetwork();
    if (wants("disk")) startDisk();
    if (wants("battery")) startBattery();
  }

  /// Whether the volumes were gone through, where they are to be.
  bool areCounted() const { return !disk_ || volumesAreCounted_; }

 private:
  void startProcessor() {
    cpu_ = vantile::CPUStatus::singleton();
    auto delegate = std::make_shared<vantile::CPUDelegate>();
    delegate->cpuUsedWithSystemWithUserWithIdle = [](float, float, float) {};
    delegate->processorWithTaskCountWithThreadCount = [](std::int32_t, std::int32_t) {};
    delegate->loadAverageWith1mWith5mWith15m = [](float, float, float) {};
    delegate->cpuWithTemperature = [](double) {};
    if (cpu_) cpu_->setDelegate(delegate);
  }
  void startProcess() {
    process_ = vantile::ProcessStats::init();
    auto delegate = std::make_shared<vantile::ProcessStatsDelegate>();
    delegate->updateProcessStaus = [](const auto*) {};
    process_->setDelegate(delegate);
  }
  void startNetwork() {
    network_ = vantile::Network::singleton();
    auto delegate = std::make_shared<vantile::NetworkDelegate>();
    delegate->networkStatus = [](const vantile::Array&) {};
    network_->setDelegate(delegate);
  }
  void startDisk() {
    disk_ = vantile::KVDDisk::singleton();
    auto delegate = std::make_shared<vantile::DiskDelegate>();
    delegate->diskDetails = [this](const vantile::Array& volumes) {
      volumesAreCounted_ = true;
      for (const auto& volume : volumes) {
        const auto& row = **volume.as<std::shared_ptr<vantile::Dictionary>>();
        volumesAreCounted_ &= row.contains(vantile::keys::disk_movies);
      }
    };
    disk_->setDelegate(delegate);
  }
  void startBattery() {
    battery_ = vantile::KVDBatteryInfo::init();
    auto delegate = std::make_shared<vantile::BatteryDelegate>();
    delegate->batteryCalculating = [](double) {};
    delegate->batteryWithRemaining = [](const std::string&) {};
    delegate->batteryRemainingWithLeft = [](const std::string&) {};
    delegate->batteryChargingCalculating = [] {};
    delegate->batteryChargingWithRemaining = [](const std::string&) {};
    delegate->batteryCharged = [] {};
    delegate->charged = [] {};
    battery_->setDelegate(delegate);
    battery_->updateCurrentStatus();
  }

  std::shared_ptr<vantile::CPUStatus> cpu_;
  std::shared_ptr<vantile::ProcessStats> process_;
  std::shared_ptr<vantile::Network> network_;
  std::shared_ptr<vantile::KVDDisk> disk_;
  std::shared_ptr<vantile::KVDBatteryInfo> battery_;
  bool volumesAreCounted_ = false;
};

}  // namespace

int main(int argc, char** argv) {
  int seconds = 20;
  std::string wanted;
  for (int each = 1; each < argc; ++each) {
    const int number = std::atoi(argv[each]);
    number > 0 ? void(seconds = number) : void(wanted.append(argv[each]).append(" "));
  }
  const bool all = wanted == "all ", alone = wanted.empty() || wanted == "memory ";
  const auto memory = vantile::KVDMemory::singleton();
  if (!memory) return 2;
  std::optional<Spent> first, last;
  double resident = 0;
  {
    const vantile::QuietOutput quiet;
    const Others others(wanted);
    auto& loop = vantile::RunLoop::current();
    // The process monitor looks closely at what it sees the first eight times, and after the first
    // pass over the volumes what was found is written down.
    int before = alone ? 1 : 18, patience = 900;
    auto delegate = std::make_shared<vantile::MemoryDelegate>();
    delegate->updateMemoryStatusWithVMStatusWithSwapDict =
        [&](const vantile::Dictionary&, const vantile::Dictionary&, const vantile::Dictionary*) {
          if (!others.areCounted() && --patience == 0) loop.stop();
          if (!others.areCounted() || --before > 0) return;
          if (!first) {
            first = spent();
          } else if (--seconds == 0) {
            last = spent();
            resident = residentMemory();
            loop.stop();
          }
        };
    memory->setDelegate(delegate);
    loop.run();
    memory->setDelegate(nullptr);
  }
  if (!last) std::puts("the volumes were not gone through");
  return last && report(*first, *last, resident, all) ? 0 : 1;
}
