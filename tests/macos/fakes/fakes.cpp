#include "fakes/fakes.h"

#include "fakes/counters.h"

namespace fakes {

Machine machine;
std::mutex mutex;
Live counts;
// Not a whole second, as it never is.
std::chrono::nanoseconds sinceStart{1'234'567'891};
int wakeupCount = 0;

namespace {

Live liveBefore;

}  // namespace

Live live() {
  const std::lock_guard lock(mutex);
  return {counts.hostRights - liveBefore.hostRights,
          counts.setRights - liveBefore.setRights,
          counts.mainPortRights - liveBefore.mainPortRights,
          counts.kernelMemory - liveBefore.kernelMemory,
          counts.kernelObjects - liveBefore.kernelObjects,
          counts.connections - liveBefore.connections,
          counts.sources - liveBefore.sources,
          counts.timers - liveBefore.timers,
          counts.loopReferences - liveBefore.loopReferences,
          counts.work - liveBefore.work,
          counts.values - liveBefore.values,
          counts.pools - liveBefore.pools,
          counts.threads - liveBefore.threads};
}

void reset() {
  machine = {};
  const std::lock_guard lock(mutex);
  liveBefore = counts;
  wakeupCount = 0;
}

std::chrono::nanoseconds uptime() {
  const std::lock_guard lock(mutex);
  return sinceStart;
}

void advance(std::chrono::nanoseconds time) {
  const std::lock_guard lock(mutex);
  sinceStart += time;
}

int wakeups() {
  const std::lock_guard lock(mutex);
  return wakeupCount;
}

}  // namespace fakes
