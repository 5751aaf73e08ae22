#include "vantile/platform/posix/interval_alarm.h"

namespace vantile {

// The threads of the global queue block signals, so that the alarm lands on one of the host's own.
std::shared_ptr<IntervalAlarm> systemIntervalAlarm() {
  static auto& alarm = *new std::shared_ptr<IntervalAlarm>(std::make_shared<PosixIntervalAlarm>());
  return alarm;
}

}  // namespace vantile
