#pragma once

#include <chrono>
#include <functional>
#include <memory>
#include <optional>
#include <string>

#include "vantile/platform/threads.h"

namespace vantile {

/// What reading a file came to.
struct TimedText {
  std::optional<std::string> text = std::nullopt;
  bool late = false;  ///< it did not come in time, and may be good for all that is known
};

/// Reads files that may be slow to answer, as some sensors are, and waits no longer than its
/// patience, but for one reading: a file is read on a thread of its own until it answered in time;
/// from then on it is read at once, which costs no wakeup, until it took too long. Not
/// synchronised.
class TimedRead {
 public:
  using Clock = std::chrono::steady_clock;

  struct Means {
    std::function<std::optional<std::string>(const std::string& path)> read;
    std::function<Clock::time_point()> now = Clock::now;
    std::shared_ptr<Threads> threads = systemThreads();
    std::chrono::milliseconds patience{100};
  };

  /// Reads the beginning of files; a sensor's is short.
  TimedRead();
  explicit TimedRead(Means means) : means_(std::move(means)) {}

  /// What the file says, or nothing. While a slow one is still being read, every other reading is
  /// late, too.
  TimedText read(const std::string& path);

 private:
  struct Pending;

  TimedText readHere(const std::string& path);
  TimedText readApart(const std::string& path);

  Means means_;
  std::string quick_;  // the file that last answered in time
  std::shared_ptr<Pending> pending_;
};

}  // namespace vantile
