#pragma once

#include <cstdint>
#include <memory>

#include "vantile/foundation/api.h"

namespace vantile {

/// A setting of the interval timer: the period after the first alarm, and the time to it.
struct IntervalTimerSetting {
  std::int64_t intervalSeconds = 0, intervalMicroseconds = 0;
  std::int64_t valueSeconds = 0, valueMicroseconds = 0;
};

/// The process's real-time interval timer, which raises SIGALRM. There is one a process, so an
/// alarm of the host's own is replaced. The signal lands on any thread that does not block it.
class IntervalAlarm {
 public:
  virtual ~IntervalAlarm() = default;

  /// Lets `handler` handle SIGALRM, for good. Calls that it interrupts are taken up again where the
  /// system can. Both: signal. Linux: where the calling thread blocks the signal, one that is
  /// pending from before is dropped and the thread takes it until `leave`, so that at least this
  /// one does.
  virtual void handle(void (*handler)(int)) = 0;

  /// Undoes what `handle` did to the calling thread. Linux: pthread_sigmask. macOS: nothing.
  virtual void leave() {}

  /// Sets the timer; `previous` receives the setting that was there. 0, or -1 when refused.
  /// Both: setitimer, ITIMER_REAL.
  virtual int set(const IntervalTimerSetting& setting, IntervalTimerSetting& previous) = 0;

  /// Waits on the calling thread for the whole time, whatever signals arrive; the seconds left,
  /// which is always 0. Both: nanosleep until nothing is left.
  virtual unsigned pause(unsigned seconds) = 0;
};

/// The process's interval timer.
VANTILE_API std::shared_ptr<IntervalAlarm> systemIntervalAlarm();

}  // namespace vantile
