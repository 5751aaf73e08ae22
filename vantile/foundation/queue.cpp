#include "vantile/foundation/queue.h"

#include <atomic>
#include <utility>

#include "vantile/foundation/guard.h"
#include "vantile/foundation/run_loop.h"

namespace vantile {
namespace {

std::atomic<WorkerQueue*> overridingWorkers;

WorkerQueue& workers() {
  WorkerQueue* const overriding = overridingWorkers.load();
  return overriding ? *overriding : systemWorkerQueue();
}

class MainQueue : public Queue {
 public:
  void async(std::function<void()> work) override { RunLoop::main().post(std::move(work)); }
  void after(Duration delay, std::function<void()> work) override {
    RunLoop::main().postAfter(delay, std::move(work));
  }
};

class GlobalQueue : public Queue {
 public:
  void async(std::function<void()> work) override { workers().submit(contained(std::move(work))); }
  void after(Duration delay, std::function<void()> work) override {
    workers().submitAfter(delay, contained(std::move(work)));
  }

 private:
  static std::function<void()> contained(std::function<void()> work) {
    return [work = std::move(work)] { guarded("background work", work); };
  }
};

}  // namespace

Queue& Queue::main() {
  static auto& queue = *new MainQueue;
  return queue;
}

Queue& Queue::global() {
  static auto& queue = *new GlobalQueue;
  return queue;
}

Queue::GlobalOverride::GlobalOverride(WorkerQueue& workers)
    : previous_(overridingWorkers.exchange(&workers)) {}

Queue::GlobalOverride::~GlobalOverride() {
  overridingWorkers = previous_;
}

}  // namespace vantile
