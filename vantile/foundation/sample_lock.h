#pragma once

#include <atomic>
#include <mutex>
#include <thread>

namespace vantile {

/// The lock that a monitor holds over one sample and the delegate call it makes. A delegate that
/// samples again from inside that call would wait for itself, so a nested sample is refused.
class SampleLock {
 public:
  /// Holds the lock for its scope; false where this thread already holds it.
  class Scope {
   public:
    explicit Scope(SampleLock& lock) : lock_(lock), entered_(lock.enter()) {}
    ~Scope() {
      if (entered_) lock_.leave();
    }
    Scope(const Scope&) = delete;
    Scope& operator=(const Scope&) = delete;
    explicit operator bool() const noexcept { return entered_; }

   private:
    SampleLock& lock_;
    const bool entered_;
  };

 private:
  bool enter() {
    if (holder_.load(std::memory_order_relaxed) == std::this_thread::get_id()) return false;
    mutex_.lock();
    holder_.store(std::this_thread::get_id(), std::memory_order_relaxed);
    return true;
  }
  void leave() {
    holder_.store(std::thread::id(), std::memory_order_relaxed);
    mutex_.unlock();
  }

  std::mutex mutex_;
  std::atomic<std::thread::id> holder_;  // only ever equal to a thread's id while that thread holds
};

}  // namespace vantile
