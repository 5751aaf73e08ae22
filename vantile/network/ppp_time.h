#pragma once

#include <chrono>
#include <mutex>
#include <optional>

namespace vantile {

/// How long one operation may wait for the PPP daemon, in all.
constexpr std::chrono::seconds longestPppOperation{2};

/// While it lives, the operations of this thread have the time of one between them, so that a
/// caller with many links waits no longer than one with a single link. Only what they take counts.
/// Inside of another it is a part of that.
class SharedPppTime {
 public:
  SharedPppTime();
  ~SharedPppTime();
  SharedPppTime(const SharedPppTime&) = delete;
  SharedPppTime& operator=(const SharedPppTime&) = delete;

  /// What the calling thread's next operation has; all of it where nothing is shared.
  static std::chrono::nanoseconds left();
  /// An operation of the calling thread took so long.
  static void spend(std::chrono::nanoseconds time);

 private:
  const bool outermost_;
};

/// Whether the PPP daemon counts as away, as it does for 30 seconds after it let the time pass.
/// Known to the process, not to one controller: there may be none while it is away. Any thread.
class PppAbsence {
 public:
  using Moment = std::chrono::steady_clock::time_point;

  bool lasts(Moment now) const;
  void begin(Moment now);
  /// For tests, which begin without one.
  void forget();

 private:
  mutable std::mutex lock_;
  std::optional<Moment> until_;
};

PppAbsence& pppAbsence();

}  // namespace vantile
