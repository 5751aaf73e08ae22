#pragma once

#include <functional>
#include <optional>
#include <vector>

#include "signals.h"

namespace vantile::host {

/// The program's loop: polls the library's run loop beside descriptors and signals of ours. Main
/// thread.
class EventLoop {
 public:
  explicit EventLoop(Signals& signals) : signals_(signals) {}

  void onSignal(std::function<void(int number)> handle) { onSignal_ = std::move(handle); }
  /// Calls `ready` with the events that poll found. A descriptor that hung up, failed or is invalid
  /// stays so: that call is the last one.
  void watch(int fd, short events, std::function<void(short found)> ready);
  /// Called after each round of events.
  void afterEach(std::function<void()> call) { afterEach_ = std::move(call); }

  /// Serves until `end`; gives its code.
  int run();
  /// Ends the loop; the first code counts.
  void end(int code);
  bool ended() const { return code_.has_value(); }

 private:
  struct Watched {
    int fd;
    short events;
    std::function<void(short)> ready;
  };

  Signals& signals_;
  std::function<void(int)> onSignal_;
  std::function<void()> afterEach_;
  std::vector<Watched> watched_;
  std::optional<int> code_;
};

}  // namespace vantile::host
