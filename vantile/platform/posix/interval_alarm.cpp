#include "vantile/platform/posix/interval_alarm.h"

#include <signal.h>
#include <sys/time.h>
#include <time.h>

#include <cerrno>

namespace vantile {
namespace {

timeval timeOf(std::int64_t seconds, std::int64_t microseconds) {
  return {static_cast<time_t>(seconds), static_cast<suseconds_t>(microseconds)};
}

}  // namespace

void PosixIntervalAlarm::handle(void (*handler)(int)) {
  // With BSD meaning on both: the handler stays, and system calls that it interrupts are taken up
  // again where they can be.
  ::signal(SIGALRM, handler);
}

int PosixIntervalAlarm::set(const IntervalTimerSetting& setting, IntervalTimerSetting& previous) {
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

unsigned PosixIntervalAlarm::pause(unsigned seconds) {
  timespec left = {static_cast<time_t>(seconds), 0};
  while (::nanosleep(&left, &left) != 0 && errno == EINTR) {
  }
  return 0;
}

}  // namespace vantile
