#include <fcntl.h>
#include <sys/resource.h>
#include <unistd.h>

#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <memory>
#include <optional>
#include <string_view>

#include "vantile/disk/disk.h"
#include "vantile/memory/memory.h"
#include "vantile/process/process_stats.h"
#include "vantile/sensors/cpu.h"

// Leaves the process to monitors at the intervals that they have by themselves, and counts how
// often it wakes. A wakeup is the end of a voluntary context switch, of whichever of the process's
// threads.
//
//   wakeups [memory|all [SECONDS]]     the memory monitor, or all of them; 20 unless given
//
// Ends with 1 above 1.1 wakeups a second, for all monitors above 1.5 or a thousandth of a
// processor.

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

/// Whether what was used in between is within the aims.
bool report(const Spent& first, const Spent& last, bool all) {
  const double seconds = Seconds(last.at - first.at).count();
  const double wakeups = static_cast<double>(last.switches - first.switches) / seconds;
  const double microseconds = (last.processor - first.processor) / seconds * 1e6;
  std::printf("%.2f wakeups/s, %.0f us of processor a second, over %.1f s\n", wakeups, microseconds,
              seconds);
  return all ? wakeups <= 1.5 && microseconds <= 1000 : wakeups <= 1.1;
}

/// Those besides the memory monitor, with delegates that want everything.
struct Monitors {
  std::shared_ptr<vantile::CPUStatus> cpu;
  std::shared_ptr<vantile::ProcessStats> process;
  std::shared_ptr<vantile::KVDDisk> disk;
};

Monitors startOthers() {
  Monitors others{vantile::CPUStatus::singleton(), vantile::ProcessStats::init(),
                  vantile::KVDDisk::singleton()};
  auto cpu = std::make_shared<vantile::CPUDelegate>();
  cpu->cpuUsedWithSystemWithUserWithIdle = [](float, float, float) {};
  cpu->processorWithTaskCountWithThreadCount = [](std::int32_t, std::int32_t) {};
  cpu->loadAverageWith1mWith5mWith15m = [](float, float, float) {};
  cpu->cpuWithTemperature = [](double) {};
  if (others.cpu) others.cpu->setDelegate(cpu);
  auto process = std::make_shared<vantile::ProcessStatsDelegate>();
  process->updateProcessStaus = [](const auto*) {};
  others.process->setDelegate(process);
  auto disk = std::make_shared<vantile::DiskDelegate>();
  disk->diskDetails = [](const vantile::Array&) {};
  others.disk->setDelegate(disk);
  return others;
}

}  // namespace

int main(int argc, char** argv) {
  const bool all = argc > 1 && std::string_view(argv[1]) == "all";
  const int seconds = argc > 2 ? std::atoi(argv[2]) : 20;
  const auto memory = vantile::KVDMemory::singleton();
  if (!memory || seconds < 1) return 2;
  // The sensors' error line, where there is no sensor, is no part of the result.
  const int output = ::dup(STDOUT_FILENO), nowhere = ::open("/dev/null", O_WRONLY);
  ::dup2(nowhere, STDOUT_FILENO);
  const auto others = all ? startOthers() : Monitors();

  auto& loop = vantile::RunLoop::current();
  constexpr int before =
      9;  // the process monitor looks closely at what it sees the first eight times
  int left = seconds + (all ? 2 * before : 1);
  std::optional<Spent> first, last;
  auto delegate = std::make_shared<vantile::MemoryDelegate>();
  delegate->updateMemoryStatusWithVMStatusWithSwapDict =
      [&](const vantile::Dictionary&, const vantile::Dictionary&, const vantile::Dictionary*) {
        if (left-- > seconds) first = spent();
        if (left > 0) return;
        last = spent();
        loop.stop();
      };
  memory->setDelegate(delegate);
  loop.run();
  memory->setDelegate(nullptr);
  std::fflush(stdout);
  ::dup2(output, STDOUT_FILENO);
  return report(*first, *last, all) ? 0 : 1;
}
