#pragma once

#include <chrono>
#include <functional>
#include <memory>

#include "vantile/foundation/api.h"
#include "vantile/foundation/worker_queue.h"

namespace vantile {

/// Where work is handed to be done later: on the main thread, or on a background thread.
/// What the work throws becomes a log line. Any thread.
class VANTILE_API Queue {
 public:
  using Duration = std::chrono::nanoseconds;

  /// The main run loop's thread, in order.
  static Queue& main();
  /// Background threads of default priority, concurrently.
  static Queue& global();

  virtual ~Queue() = default;
  virtual void async(std::function<void()> work) = 0;
  virtual void after(Duration delay, std::function<void()> work) = 0;

  /// While it lives, `global()` hands its work to `workers`. For tests.
  class VANTILE_API GlobalOverride {
   public:
    explicit GlobalOverride(WorkerQueue& workers);
    ~GlobalOverride();
    GlobalOverride(const GlobalOverride&) = delete;
    GlobalOverride& operator=(const GlobalOverride&) = delete;

   private:
    WorkerQueue* previous_;
  };
};

}  // namespace vantile
