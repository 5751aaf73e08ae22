#include "vantile/platform/interval_alarm.h"

#include <signal.h>
#include <sys/time.h>
#include <time.h>

#include <cerrno>

namespace vantile {
namespace {

class MacosIntervalAlarm final : public IntervalAlarm {
 public:
  void handle(void (*handler)(int)) override {
    // With BSD meaning: the handler stays, and what it interrupts is taken up again. The threads
    // of the global queue block signals, so that the alarm lands on one of the host's own.
    ::signal(SIGALRM, handler);
  }

  int set(const IntervalTimerSetting& setting, IntervalTimerSetting& previous) override {
    const itimerval now = {timeOf(setting.intervalSeconds, setting.intervalMicroseconds),
                           timeOf(setting.valueSeconds, setting.valueMicroseconds)};
    itimerval before = {};
    const int result = ::setitimer(ITIMER_REAL, &now, &before);
    if (result == 0) {
      previous = {before.it_interval.tv_sec, before.it_interval.tv_usec, before.it_value.tv_sec,
                  before.it_value.tv_usec};
    }
    return result;
  }

  unsigned pause(unsigned seconds) override {
    timespec left = {static_cast<time_t>(seconds), 0};
    while (::nanosleep(&left, &left) != 0 && errno == EINTR) {
    }
    return 0;
  }

 private:
  static timeval timeOf(std::int64_t seconds, std::int64_t microseconds) {
    return {static_cast<time_t>(seconds), static_cast<suseconds_t>(microseconds)};
  }
};

}  // namespace

std::shared_ptr<IntervalAlarm> systemIntervalAlarm() {
  static auto& alarm = *new std::shared_ptr<IntervalAlarm>(std::make_shared<MacosIntervalAlarm>());
  return alarm;
}

}  // namespace vantile
