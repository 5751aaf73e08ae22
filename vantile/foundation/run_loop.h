#pragma once

#include <chrono>
#include <cstdint>
#include <deque>
#include <functional>
#include <memory>
#include <mutex>
#include <utility>

#include "vantile/foundation/api.h"
#include "vantile/foundation/loop_driver.h"
#include "vantile/foundation/timer_schedule.h"

namespace vantile {

class RunLoop;

/// Owns one timer of a run loop: when the handle goes, the timer goes. Any thread; on another one
/// than the loop's, a call that the loop has already taken up still runs to its end.
class VANTILE_API Timer {
 public:
  Timer() = default;
  Timer(Timer&&) noexcept = default;
  Timer& operator=(Timer&& other) noexcept;
  ~Timer() { invalidate(); }

  void invalidate();
  /// Whether the timer will still fire: not once it was invalidated, has fired for its only time,
  /// or its loop is gone.
  bool isValid() const;

 private:
  friend class RunLoop;
  Timer(std::weak_ptr<RunLoop> loop, TimerSchedule::Id id) : loop_(std::move(loop)), id_(id) {}

  std::weak_ptr<RunLoop> loop_;
  TimerSchedule::Id id_ = 0;
};

/// A thread's loop: timers and work that other threads post to it. It does nothing by itself;
/// the thread either calls `run`, or polls `fd` in a loop of its own and calls `dispatch` when it
/// is readable.
///
/// macOS: the thread's CFRunLoop, which hosts usually run already; `fd` is -1.
/// Linux: the thread's default sd-event loop, so a host that runs that one needs no more.
class VANTILE_API RunLoop : public std::enable_shared_from_this<RunLoop> {
 public:
  using Duration = std::chrono::nanoseconds;

  /// The calling thread's loop, made on first use; it ends with its thread.
  static RunLoop& current();
  /// The loop of the process's first thread, never destroyed. It takes posts and timers from the
  /// start; on Linux it serves them once the first thread asks for it, on macOS that thread's
  /// CFRunLoop does in any case.
  static RunLoop& main();

  /// A loop on a driver of the caller's own, bound to the calling thread.
  static std::shared_ptr<RunLoop> on(std::unique_ptr<LoopDriver> driver);

  ~RunLoop();

  /// Calls `fire` on the loop's thread every `period`, first one period from now, in phase with
  /// now for as long as it lives. A period of 0 or less gives an invalid timer. Any thread.
  [[nodiscard]] Timer every(Duration period, std::function<void()> fire);
  /// Calls `fire` on the loop's thread once, `delay` from now. Any thread.
  [[nodiscard]] Timer after(Duration delay, std::function<void()> fire);

  /// Calls `work` on the loop's thread, in the order of the posts. Any thread.
  void post(std::function<void()> work);
  /// Calls `work` on the loop's thread once `delay` has gone by. Any thread.
  void postAfter(Duration delay, std::function<void()> work);

  /// Serves the loop until `stop`. A stop that came before ends it at once. Loop thread only; does
  /// nothing from inside a call of the loop.
  void run();
  /// Ends `run`. Any thread.
  void stop();

  /// A descriptor that becomes readable when something is due: poll it for reading. It belongs to
  /// the loop. -1 where the platform has none (macOS). Loop thread only.
  int fd();
  /// Serves what is due, without waiting. Loop thread only; does nothing from inside a call.
  void dispatch();

  /// The time that the loop's timers go by. Any thread.
  TimerSchedule::Moment now() { return driver_->now(); }

  /// While it lives, `loop` is `current()` for this thread and, where `alsoMain`, `main()` for all.
  /// For tests and hosts that bring a driver of their own.
  class VANTILE_API Override {
   public:
    explicit Override(std::shared_ptr<RunLoop> loop, bool alsoMain = false);
    ~Override();
    Override(const Override&) = delete;
    Override& operator=(const Override&) = delete;

   private:
    std::shared_ptr<RunLoop> previousCurrent_;
    std::shared_ptr<RunLoop> previousMain_;
    const bool alsoMain_;
  };

 private:
  friend class Timer;
  friend struct ThreadLoop;

  explicit RunLoop(std::unique_ptr<LoopDriver> driver) : driver_(std::move(driver)) {}

  TimerSchedule::Id schedule(Duration delay, Duration period, std::function<void()> fire);
  void attach();
  void serve();
  void serveTimers();
  void servePosts();
  void wakeUnlessServing();
  bool isValid(TimerSchedule::Id id);
  void cancel(TimerSchedule::Id id);

  static std::shared_ptr<RunLoop>& mainInstance();
  static std::mutex& mainLock();

  std::unique_ptr<LoopDriver> driver_;
  std::once_flag attached_;

  std::mutex mutex_;  // over the two below
  TimerSchedule timers_;
  std::deque<std::function<void()>> posts_;
};

}  // namespace vantile
