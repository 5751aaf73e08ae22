#pragma once

#include <chrono>
#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <vector>

namespace vantile {

/// Which timers of a loop are due. Repeating timers keep their phase: their due times are their
/// first one plus whole periods, however late or early a call came. Timers that fall due within a
/// tenth of their periods of each other are served in one wakeup, the later ones early. Periods
/// missed while the loop was busy or asleep are skipped, not made up. Not synchronised.
class TimerSchedule {
 public:
  using Duration = std::chrono::nanoseconds;
  using Moment = std::chrono::steady_clock::time_point;
  using Fire = std::shared_ptr<const std::function<void()>>;
  using Id = std::uint64_t;

  /// `moment` and so much later; the end of time where that would be beyond it.
  static Moment later(Moment moment, Duration by);

  /// Adds a timer that falls due at `due` and then every `period`; once where `period` is 0.
  Id add(Moment due, Duration period, Fire fire);
  /// Takes a timer out and gives what it would have called, for the caller to let go of; null when
  /// there is no such timer.
  Fire remove(Id id);
  bool contains(Id id) const;

  /// When the loop has to wake next.
  std::optional<Moment> next() const;

  /// A wakeup: its time, and the timer that was due first in it.
  struct Wakeup {
    Moment now, firstDue;
    Duration firstTolerance;
  };

  /// Begins to serve a wakeup at `now`; nothing when no timer is due.
  std::optional<Wakeup> wakeUp(Moment now) const;

  /// Takes the next timer that the wakeup serves, the earliest first, moving it on by its period or
  /// dropping it; null when none is left. Those that are due are served, and those near the first
  /// one. None is served twice in a wakeup.
  Fire takeDue(const Wakeup& wakeup);

 private:
  struct Entry {
    Id id;
    Moment due;
    Duration period;
    Fire fire;
    Duration tolerance() const { return period / 10; }
  };

  const Entry* earliest() const;

  std::vector<Entry> entries_;
  Id lastId_ = 0;
};

}  // namespace vantile
