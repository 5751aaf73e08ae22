#pragma once

#include "vantile/platform/interval_alarm.h"

namespace vantile {

/// The interval timer as both platforms have it.
class PosixIntervalAlarm : public IntervalAlarm {
 public:
  void handle(void (*handler)(int)) override;
  int set(const IntervalTimerSetting& setting, IntervalTimerSetting& previous) override;
  unsigned pause(unsigned seconds) override;
};

}  // namespace vantile
