#include "vantile/foundation/worker_queue.h"

#include <dispatch/dispatch.h>

#include <algorithm>
#include <memory>
#include <utility>

namespace vantile {
namespace {

using Work = std::function<void()>;

/// Does and deletes the work that was handed through the queue.
void perform(void* context) {
  const std::unique_ptr<Work> work(static_cast<Work*>(context));
  (*work)();
}

class MacosWorkerQueue final : public WorkerQueue {
 public:
  void submit(Work work) override {
    ::dispatch_async_f(globalQueue(), new Work(std::move(work)), perform);
  }

  void submitAfter(std::chrono::nanoseconds delay, Work work) override {
    const auto due = ::dispatch_time(DISPATCH_TIME_NOW, std::max<std::int64_t>(delay.count(), 0));
    ::dispatch_after_f(due, globalQueue(), new Work(std::move(work)), perform);
  }

 private:
  static dispatch_queue_t globalQueue() { return ::dispatch_get_global_queue(0, 0); }
};

}  // namespace

WorkerQueue& systemWorkerQueue() {
  static auto& queue = *new MacosWorkerQueue;
  return queue;
}

}  // namespace vantile
