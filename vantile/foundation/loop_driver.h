#pragma once

#include <chrono>
#include <functional>
#include <memory>
#include <optional>

#include "vantile/foundation/api.h"

namespace vantile {

/// What a run loop asks of the operating system: to sleep until a moment or a wake, and to be
/// served by whoever owns the thread. A platform port; it stands here because the foundation does
/// not see the platform floor.
class LoopDriver {
 public:
  using Moment = std::chrono::steady_clock::time_point;

  virtual ~LoopDriver() = default;

  /// Binds the driver to its thread's loop, and names what to call there whenever the loop was
  /// woken or a wakeup came due. Called once, on that thread unless `attachesAnywhere`, before any
  /// other operation but `now`, `wake` and `stop`.
  virtual void attach(std::function<void()> serve) = 0;

  /// Lets go of the thread's loop, which is about to end with its thread; only `now`, `wake` and
  /// `stop` follow. Loop thread.
  virtual void detach() = 0;

  /// Whether `attach` may be called on another thread than the loop's: the loop is there already
  /// and its thread serves it whether or not it knows of the library.
  /// macOS: the main loop's. Linux: none.
  virtual bool attachesAnywhere() const { return false; }

  /// The time that wakeups go by; only comparable with itself. It rests while the machine sleeps.
  /// Any thread. macOS: CLOCK_UPTIME_RAW. Linux: CLOCK_MONOTONIC.
  virtual Moment now() = 0;

  /// Asks for one call of `serve` at `moment`, in place of what was asked before; nothing asks for
  /// none. Loop thread, from inside `serve`.
  /// macOS: CFRunLoopTimerSetNextFireDate. Linux: sd_event_source_set_time.
  virtual void wakeAt(std::optional<Moment> moment) = 0;

  /// Asks for one call of `serve` as soon as may be; makes `fd` readable. Any thread, any moment.
  /// macOS: CFRunLoopSourceSignal and CFRunLoopWakeUp. Linux: an eventfd.
  virtual void wake() = 0;

  /// Serves the loop until `stop`. A stop that came before ends it at once. Loop thread.
  /// macOS: CFRunLoopRun. Linux: sd_event_run.
  virtual void run() = 0;

  /// Ends `run`. Any thread. macOS: the source, which calls CFRunLoopStop on the loop's thread.
  virtual void stop() = 0;

  /// A descriptor that is readable while something is due, or -1 where the platform has none.
  /// macOS: -1, hosts run CFRunLoop themselves. Linux: sd_event_get_fd.
  virtual int fd() = 0;

  /// Serves what is due now, without waiting. Loop thread.
  virtual void dispatch() = 0;
};

/// A new driver, not yet attached, for the loop of the thread that will attach it, or for that of
/// the process's first thread.
VANTILE_API std::unique_ptr<LoopDriver> makeLoopDriver();
VANTILE_API std::unique_ptr<LoopDriver> makeMainLoopDriver();

/// Whether the caller runs on the process's first thread, whose loop is the main loop.
/// macOS: pthread_main_np. Linux: the thread's id is the process's.
VANTILE_API bool onFirstThread();

}  // namespace vantile
