#include "vantile/platform/posix/interval_alarm.h"

#include <signal.h>

namespace vantile {
namespace {

class LinuxIntervalAlarm final : public PosixIntervalAlarm {
 public:
  void handle(void (*handler)(int)) override {
    PosixIntervalAlarm::handle(handler);
    // Some thread has to receive it. The host's may all block it, so that they get it from a
    // descriptor, say.
    sigset_t alarm;
    sigemptyset(&alarm);
    sigaddset(&alarm, SIGALRM);
    ::pthread_sigmask(SIG_UNBLOCK, &alarm, nullptr);
  }
};

}  // namespace

std::shared_ptr<IntervalAlarm> systemIntervalAlarm() {
  static auto& alarm = *new std::shared_ptr<IntervalAlarm>(std::make_shared<LinuxIntervalAlarm>());
  return alarm;
}

}  // namespace vantile
