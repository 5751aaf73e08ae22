#pragma once

#include <atomic>
#include <memory>
#include <mutex>
#include <utility>

#include "vantile/foundation/api.h"
#include "vantile/foundation/guard.h"

namespace vantile {

/// Holds an object's delegate: a struct of optional std::function members, one an operation.
/// The delegate may be replaced from any thread while another thread calls it; a call in progress
/// keeps the delegate it began with.
template <class Delegate>
class DelegateSlot {
 public:
  void set(std::shared_ptr<Delegate> delegate) {
    {
      const std::lock_guard lock(mutex_);
      delegate_.swap(delegate);
      current_ = delegate_.get();
    }
    // The old delegate is released here, outside the lock: its captures may call back.
  }

  std::shared_ptr<Delegate> get() const {
    const std::lock_guard lock(mutex_);
    return delegate_;
  }

  /// Brings `held`, of an earlier `get`, up to date: between many calls in a row it costs less.
  void refresh(std::shared_ptr<Delegate>& held) const {
    if (current_ != held.get()) held = get();
  }

 private:
  mutable std::mutex mutex_;
  std::shared_ptr<Delegate> delegate_;
  std::atomic<const Delegate*> current_ = nullptr;  // delegate_'s
};

/// Holds on to `object` for the rest of the process.
VANTILE_API void keepForGood(std::shared_ptr<const void> object) noexcept;

/// Whether `delegate` is set and implements `operation`.
template <class Delegate, class Operation>
bool implements(const std::shared_ptr<Delegate>& delegate, Operation Delegate::*operation) {
  return delegate && (*delegate).*operation;
}

/// Calls `operation` of `delegate` where it is set and implemented; does nothing otherwise. What
/// the delegate throws becomes a log line.
template <class Delegate, class Operation, class... Arguments>
void tell(const std::shared_ptr<Delegate>& delegate, Operation Delegate::*operation,
          Arguments&&... arguments) {
  if (!implements(delegate, operation)) return;
  guarded("a delegate", [&] { ((*delegate).*operation)(std::forward<Arguments>(arguments)...); });
}

}  // namespace vantile
