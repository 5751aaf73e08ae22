#pragma once

#include <deque>
#include <functional>
#include <utility>

#include "vantile/foundation/queue.h"

namespace vantile::testing {

/// Background work that runs when the test says so, on the test's thread. It is the global queue's
/// while it lives.
class ManualWorkers final : public WorkerQueue {
 public:
  void submit(std::function<void()> work) override { waiting.push_back(std::move(work)); }
  void submitAfter(std::chrono::nanoseconds delay, std::function<void()> work) override {
    lastDelay = delay;
    waiting.push_back(std::move(work));
  }

  void runOne() {
    const auto work = std::move(waiting.front());
    waiting.pop_front();
    work();
  }

  std::deque<std::function<void()>> waiting;
  std::chrono::nanoseconds lastDelay{0};

 private:
  Queue::GlobalOverride override_{*this};
};

}  // namespace vantile::testing
