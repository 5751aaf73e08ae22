#pragma once

#include <atomic>
#include <chrono>
#include <functional>
#include <memory>
#include <optional>
#include <utility>

#include "vantile/foundation/loop_driver.h"
#include "vantile/foundation/run_loop.h"

namespace vantile::testing {

/// A loop's clock and sleep, moved on by hand. Counts how often the loop would have woken.
class SteppedDriver final : public LoopDriver {
 public:
  void attach(std::function<void()> serve) override { serve_ = std::move(serve); }
  void detach() override {}
  Moment now() override { return now_; }
  void wakeAt(std::optional<Moment> moment) override { wakeAt_ = moment; }
  void wake() override { woken_ = true; }
  void run() override {}
  void stop() override {}
  int fd() override { return -1; }
  void dispatch() override { settle(); }

  /// Serves what is due at the present time, and whatever that brings about.
  void settle() {
    while (woken_.exchange(false) || (wakeAt_ && *wakeAt_ <= now_)) {
      ++wakeups;
      serve_();
    }
  }

  /// Lets time pass, waking as the loop asked.
  void advance(std::chrono::nanoseconds duration) {
    settle();
    const auto end = now_ + duration;
    while (wakeAt_ && *wakeAt_ <= end) {
      now_ = std::max(now_, *wakeAt_);
      settle();
    }
    now_ = end;
  }

  /// Lets time pass while the loop is held up and can't serve.
  void stall(std::chrono::nanoseconds duration) { now_ += duration; }

  int wakeups = 0;

 private:
  Moment now_{std::chrono::hours(1)};
  std::optional<Moment> wakeAt_;
  std::atomic<bool> woken_ = false;
  std::function<void()> serve_;
};

/// A run loop on a `SteppedDriver`, the calling thread's own and the main one while it lives.
class SteppedLoop {
 public:
  SteppedLoop() : SteppedLoop(std::make_unique<SteppedDriver>()) {}

  RunLoop& loop() { return *loop_; }
  SteppedDriver& driver() { return *driver_; }
  void advance(std::chrono::nanoseconds duration) { driver_->advance(duration); }
  void settle() { driver_->settle(); }

 private:
  explicit SteppedLoop(std::unique_ptr<SteppedDriver> driver)
      : driver_(driver.get()), loop_(RunLoop::on(std::move(driver))), override_(loop_, true) {}

  SteppedDriver* driver_;  // the loop's
  std::shared_ptr<RunLoop> loop_;
  RunLoop::Override override_;
};

}  // namespace vantile::testing
