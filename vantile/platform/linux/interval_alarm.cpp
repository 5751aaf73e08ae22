#include "vantile/platform/posix/interval_alarm.h"

#include <signal.h>
#include <time.h>

namespace vantile {
namespace {

class LinuxIntervalAlarm final : public PosixIntervalAlarm {
 public:
  void handle(void (*handler)(int)) override {
    PosixIntervalAlarm::handle(handler);
    // Some thread has to receive it. The host's may all block it, so that they get it from a
    // descriptor, say. Then an earlier alarm may still be pending.
    const sigset_t alarm = alarmAlone();
    const timespec now = {};
    ::sigtimedwait(&alarm, nullptr, &now);
    sigset_t before;
    ::pthread_sigmask(SIG_UNBLOCK, &alarm, &before);
    blocked = sigismember(&before, SIGALRM) == 1;
  }

  void leave() override {
    const sigset_t alarm = alarmAlone();
    if (blocked) ::pthread_sigmask(SIG_BLOCK, &alarm, nullptr);
    blocked = false;
  }

 private:
  static sigset_t alarmAlone() {
    sigset_t set;
    sigemptyset(&set);
    sigaddset(&set, SIGALRM);
    return set;
  }

  inline static thread_local bool blocked = false;  // before `handle`
};

}  // namespace

std::shared_ptr<IntervalAlarm> systemIntervalAlarm() {
  static auto& alarm = *new std::shared_ptr<IntervalAlarm>(std::make_shared<LinuxIntervalAlarm>());
  return alarm;
}

}  // namespace vantile
