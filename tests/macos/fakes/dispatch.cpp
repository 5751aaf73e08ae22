#include <dispatch/dispatch.h>

#include <algorithm>
#include <cstdlib>
#include <vector>

#include "fakes/counters.h"

namespace {

struct Queued {
  std::uint64_t due;
  void* context;
  dispatch_function_t work;
};

std::vector<Queued> queued;

const auto globalQueue = reinterpret_cast<dispatch_queue_t>(0x30);

std::uint64_t nanosecondsSinceStart() {
  return static_cast<std::uint64_t>(fakes::sinceStart.count());
}

void enqueue(Queued work) {
  queued.push_back(work);
  ++fakes::counts.work;
}

}  // namespace

namespace fakes {

void runGlobalQueue() {
  while (true) {
    Queued next;
    {
      const std::lock_guard lock(mutex);
      const auto found = std::find_if(queued.begin(), queued.end(), [](const Queued& work) {
        return work.due <= nanosecondsSinceStart();
      });
      if (found == queued.end()) return;
      next = *found;
      queued.erase(found);
      --counts.work;
    }
    next.work(next.context);
  }
}

}  // namespace fakes

extern "C" {

dispatch_queue_t dispatch_get_global_queue(intptr_t identifier, uintptr_t flags) {
  if (identifier != 0 || flags != 0) std::abort();
  return globalQueue;
}

dispatch_time_t dispatch_time(dispatch_time_t when, int64_t nanoseconds) {
  if (when != DISPATCH_TIME_NOW) std::abort();
  const std::lock_guard lock(fakes::mutex);
  return nanosecondsSinceStart() + static_cast<std::uint64_t>(nanoseconds);
}

void dispatch_async_f(dispatch_queue_t queue, void* context, dispatch_function_t work) {
  if (queue != globalQueue) std::abort();
  const std::lock_guard lock(fakes::mutex);
  enqueue({0, context, work});
}

void dispatch_after_f(dispatch_time_t when, dispatch_queue_t queue, void* context,
                      dispatch_function_t work) {
  if (queue != globalQueue) std::abort();
  const std::lock_guard lock(fakes::mutex);
  enqueue({when, context, work});
}

}  // extern "C"
