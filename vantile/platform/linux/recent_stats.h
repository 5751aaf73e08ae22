#pragma once

#include <cstdint>
#include <mutex>
#include <optional>
#include <unordered_map>

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
  }
  void put(Reading reading) {
    reading.stat.name = {};  // a view into what was read
    const std::lock_guard lock(mutex_);
    readings_.insert_or_assign(reading.stat.pid, reading);
  }
  /// Gives a reading that is still good, once.
  std::optional<Reading> take(std::int32_t pid, std::uint64_t now) {
    constexpr std::uint64_t good = 50'000'000;  // nanoseconds
    const std::lock_guard lock(mutex_);
    const auto node = readings_.extract(pid);
    if (!node || now - node.mapped().nanoseconds > good) return std::nullopt;
    return node.mapped();
  }

  /// Those that the adapters of the process share.
  static RecentStats& shared();

 private:
  std::mutex mutex_;
  std::unordered_map<std::int32_t, Reading> readings_;
};

/// Nanoseconds since boot, those asleep with them: what the kernel counts the starts of processes
/// in.
std::uint64_t sinceBoot();

}  // namespace vantile
