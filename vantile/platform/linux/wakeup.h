#pragma once

#include <chrono>
#include <optional>

#include "vantile/platform/posix/descriptor.h"

namespace vantile {

/// Wakes a thread that sleeps on it; a call that comes before it sleeps counts. Any thread may
/// wake, one may sleep, and neither waits for the other.
class Wakeup {
 public:
  Wakeup();
  explicit operator bool() const { return static_cast<bool>(event_); }

  void wake() const;
  /// Until then, at most an hour; without a time until it is woken, or until the kernel says that
  /// the file `watched`, which may be none, changed. Whether it said that.
  bool sleep(std::optional<std::chrono::nanoseconds> duration, int watched = -1) const;

 private:
  const Descriptor event_;
};

}  // namespace vantile
