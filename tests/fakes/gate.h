#pragma once

#include <condition_variable>
#include <mutex>

namespace vantile::testing {

/// Holds a thread up in the midst of something until it is let go on.
class Gate {
 public:
  void pass() {
    std::unique_lock lock(mutex_);
    entered_ = true;
    changed_.notify_all();
    changed_.wait(lock, [this] { return open_; });
  }
  void awaitEntry() {
    std::unique_lock lock(mutex_);
    changed_.wait(lock, [this] { return entered_; });
  }
  void open() {
    const std::lock_guard lock(mutex_);
    open_ = true;
    changed_.notify_all();
  }

 private:
  std::mutex mutex_;
  std::condition_variable changed_;
  bool entered_ = false, open_ = false;
};

}  // namespace vantile::testing
