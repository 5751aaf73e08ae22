#include "vantile/foundation/monitor.h"

#include <chrono>

namespace vantile {

void FreshInterval::setFreshInterval(std::int32_t seconds) {
  const std::lock_guard lock(intervalLock_);
  if (seconds == _freshInterval) return;
  _freshInterval = seconds;
  updateTimer.invalidate();
  updateTimer = RunLoop::current().every(std::chrono::seconds(seconds), [weak = weak_from_this()] {
    if (const auto monitor = weak.lock()) monitor->updateInfo();
  });
}

std::int32_t FreshInterval::freshInterval() const {
  const std::lock_guard lock(intervalLock_);
  return _freshInterval;
}

}  // namespace vantile
