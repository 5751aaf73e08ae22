#include "vantile/foundation/monitor.h"

#include <chrono>

namespace vantile {

void FreshInterval::setFreshInterval(std::int32_t seconds) {
  const std::lock_guard lock(intervalLock_);
  if (seconds == _freshInterval) return;
  const auto tick = [weak = weak_from_this()] {
    if (const auto monitor = weak.lock()) monitor->updateInfo();
  };
  // A thread whose loop can't be made leaves the interval and the timer as they were.
  guarded("setting a refresh interval", [&] {
    updateTimer = RunLoop::current().every(std::chrono::seconds(seconds), tick);
    _freshInterval = seconds;
  });
}

std::int32_t FreshInterval::freshInterval() const {
  const std::lock_guard lock(intervalLock_);
  return _freshInterval;
}

}  // namespace vantile
