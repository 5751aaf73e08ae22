#pragma once

#include <chrono>
#include <functional>

#include "vantile/foundation/api.h"

namespace vantile {

/// Background threads of default priority. Work is started in the order in which it was submitted
/// and runs concurrently; work that blocks does not hold up the rest. A platform port; it stands
/// here because the foundation does not see the platform floor. Any thread.
class WorkerQueue {
 public:
  virtual ~WorkerQueue() = default;

  /// macOS: dispatch_async_f on dispatch_get_global_queue(0, 0). Linux: threads of the library's
  /// own that end when idle and block all signals but those of a fault of their own.
  virtual void submit(std::function<void()> work) = 0;

  /// Submits once `delay` has gone by. macOS: dispatch_after_f.
  virtual void submitAfter(std::chrono::nanoseconds delay, std::function<void()> work) = 0;
};

/// The process's background threads; never destroyed.
VANTILE_API WorkerQueue& systemWorkerQueue();

}  // namespace vantile
