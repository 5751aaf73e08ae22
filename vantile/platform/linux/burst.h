#pragma once

#include <algorithm>
#include <chrono>
#include <optional>

#include "vantile/foundation/timer_schedule.h"

namespace vantile {

/// When a burst of changes is over: once it has been quiet for as long as the burst had lasted, so
/// that what stands alone is told soon, and what is drawn out is told once.
class Burst {
 public:
  using Moment = TimerSchedule::Moment;

  /// The bounds of that quiet. What comes later than the longest begins a burst of its own.
  static constexpr std::chrono::milliseconds shortestQuiet{2}, longestQuiet{20};
  /// A change waits for so long at most, though the burst goes on.
  static constexpr std::chrono::milliseconds longestWait{200};

  /// Something changed. When to tell of it unless more comes.
  Moment change(Moment now) {
    if (!latest_ || now - *latest_ > longestQuiet) began_ = now;
    latest_ = now;
    if (!untold_) untold_ = now;
    const auto quiet = std::clamp<Moment::duration>(now - began_, shortestQuiet, longestQuiet);
    return std::min(now + quiet, *untold_ + longestWait);
  }
  /// Whether what changed first has waited for as long as it may.
  bool isOverdue(Moment now) const { return untold_ && now - *untold_ >= longestWait; }
  /// All that changed is told.
  void tell() { untold_.reset(); }

 private:
  Moment began_;
  std::optional<Moment> latest_, untold_;
};

}  // namespace vantile
