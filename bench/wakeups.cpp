#include <sys/resource.h>

#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <memory>
#include <optional>

#include "vantile/memory/memory.h"

// Leaves the process to the memory monitor at its interval of a second and counts how often it
// wakes. A wakeup is the end of a voluntary context switch, of whichever of the process's threads.
//
//   wakeups [TICKS]     20 unless given. Ends with 1 above 1.1 wakeups a second.

namespace {

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

}  // namespace

int main(int argc, char** argv) {
  const int ticks = argc > 1 ? std::atoi(argv[1]) : 20;
  const auto memory = vantile::KVDMemory::singleton();
  if (!memory || ticks < 1) return 2;

  auto& loop = vantile::RunLoop::current();
  std::optional<Spent> first, last;
  int left = ticks + 1;  // the first one, which also looks at the swap space, begins the count
  auto delegate = std::make_shared<vantile::MemoryDelegate>();
  delegate->updateMemoryStatusWithVMStatusWithSwapDict =
      [&](const vantile::Dictionary&, const vantile::Dictionary&, const vantile::Dictionary*) {
        (first ? last : first) = spent();
        if (--left == 0) loop.stop();
      };
  memory->setDelegate(delegate);
  loop.run();
  memory->setDelegate(nullptr);

  const double seconds = std::chrono::duration<double>(last->at - first->at).count();
  const double wakeups = static_cast<double>(last->switches - first->switches) / seconds;
  const double microseconds = (last->processor - first->processor) / seconds * 1e6;
  std::printf("%.2f wakeups/s, %.0f us of processor a second, over %.1f s\n", wakeups, microseconds,
              seconds);
  return wakeups <= 1.1 ? 0 : 1;
}
