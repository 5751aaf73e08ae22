#pragma once

#include <functional>
#include <memory>

#include "vantile/foundation/api.h"

namespace vantile {

/// Threads that live as long as what they do. Any thread.
class Threads {
 public:
  virtual ~Threads() = default;

  /// Runs `body`, which must not throw, on a thread of its own, called `name` (at most 15
  /// characters) in debuggers. False when no thread can be had; then it is not run.
  /// macOS: pthread_create, detached. Linux: that, with the host's signals blocked but for those
  /// that a fault of the thread's own raises.
  virtual bool detach(const char* name, std::function<void()> body) = 0;
};

/// The process's threads, shared by it.
VANTILE_API std::shared_ptr<Threads> systemThreads();

}  // namespace vantile
