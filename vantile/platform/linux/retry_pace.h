#pragma once

#include <algorithm>
#include <chrono>
#include <utility>

namespace vantile {

/// How long to wait before each further try of what keeps failing: a second, then twice as long
/// each time, up to a minute, so that what stays away costs one wakeup a minute.
class RetryPace {
 public:
  std::chrono::seconds next() { return std::exchange(wait_, std::min(2 * wait_, longest)); }
  void restart() { wait_ = shortest; }

  static constexpr std::chrono::seconds shortest{1}, longest{60};

 private:
  std::chrono::seconds wait_ = shortest;
};

}  // namespace vantile
