#include "vantile/platform/interval_alarm.h"

#include <signal.h>
#include <sys/time.h>
#include <time.h>

#include <cerrno>

namespace vantile {
namespace {

class LinuxIntervalAlarm final : public IntervalAlarm {
 public:
  void handle(void (*handler)(int)) override {
    // With SA_RESTART, as signal does here: system calls of the host that can be, are taken up
    // again.
    ::signal(SIGALRM, handler);
    // Some thread has to receive it. The host's may all block it, so that they get it from a
    // descriptor, say.
    sigset_t alarm;
    sigemptyset(&alarm);
    sigaddset(&alarm, SIGALRM);
    ::pthread_sigmask(SIG_UNBLOCK, &alarm, nullptr);
  }

  int set(const IntervalTimerSetting& setting, IntervalTimerSetting& previous) override {
    const itimerval now = {{setting.intervalSeconds, setting.intervalMicroseconds},
                           {setting.valueSeconds, setting.valueMicroseconds}};
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
    while (::clock_nanosleep(CLOCK_MONOTONIC, 0, &left, &left) == EINTR) {
    }
    return 0;
  }
};

}  // namespace

std::shared_ptr<IntervalAlarm> systemIntervalAlarm() {
  static auto& alarm = *new std::shared_ptr<IntervalAlarm>(std::make_shared<LinuxIntervalAlarm>());
  return alarm;
}

}  // namespace vantile
