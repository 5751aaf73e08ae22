#pragma once

#include <memory>
#include <mutex>
#include <utility>

namespace vantile {

/// The one instance of a class that a process shares, made at the first call under the class's
/// recursive lock. A construction that gave null or threw is tried again at the next call.
/// Keep it in storage that is never destroyed: threads may ask for it while the process ends.
template <class T>
class SharedInstance {
 public:
  template <class Make>
  std::shared_ptr<T> get(Make&& make) {
    const std::lock_guard lock(classLock_);
    if (!instance_) instance_ = std::forward<Make>(make)();
    return instance_;
  }

  /// Forgets the instance, so that the next call makes a new one. For tests.
  void forget() {
    const std::lock_guard lock(classLock_);
    instance_.reset();
  }

 private:
  std::recursive_mutex classLock_;
  std::shared_ptr<T> instance_;
};

}  // namespace vantile
