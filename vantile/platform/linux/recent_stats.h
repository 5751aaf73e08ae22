#pragma once

#include <cstddef>
#include <cstdint>
#include <mutex>
#include <optional>
#include <vector>

#include "vantile/platform/parsers/pid_stat.h"

namespace vantile {

/// What processes' "stat" said a moment ago: the applications are looked for, and then their
/// figures asked for, from the same files. Any thread.
class RecentStats {
 public:
  struct Reading {
    PidStat stat;                   ///< without its name
    std::uint64_t nanoseconds = 0;  ///< since boot, when it was read
  };

  /// Begins a new look at the processes.
  void begin() {
    const std::lock_guard lock(mutex_);
    readings_.clear();
    next_ = 0;
  }
  void put(Reading reading) {
    reading.stat.name = {};  // a view into what was read
    const std::lock_guard lock(mutex_);
    readings_.push_back(reading);
  }
  /// Gives a reading that is still good, once. They are asked for in about the order that they were
  /// made in, so the search goes on from the one before.
  std::optional<Reading> take(std::int32_t pid, std::uint64_t now) {
    constexpr std::uint64_t good = 50'000'000;  // nanoseconds
    const std::lock_guard lock(mutex_);
    for (std::size_t tried = 0; tried < readings_.size(); ++tried) {
      Reading& reading = readings_[next_++ % readings_.size()];
      if (reading.stat.pid != pid) continue;
      reading.stat.pid = 0;  // taken
      if (now - reading.nanoseconds > good) return std::nullopt;
      auto given = reading;
      given.stat.pid = pid;
      return given;
    }
    return std::nullopt;
  }

  /// Those that the adapters of the process share.
  static RecentStats& shared();

 private:
  std::mutex mutex_;
  std::vector<Reading> readings_;
  std::size_t next_ = 0;
};

/// Nanoseconds since boot, those asleep with them: what the kernel counts the starts of processes
/// in.
std::uint64_t sinceBoot();

}  // namespace vantile
