#pragma once

#include <cstdint>
#include <memory>
#include <mutex>
#include <utility>

#include "vantile/foundation/api.h"
#include "vantile/foundation/delegate_slot.h"
#include "vantile/foundation/run_loop.h"

namespace vantile {

/// The refresh interval of a monitor and the timer behind it.
class VANTILE_API FreshInterval : public std::enable_shared_from_this<FreshInterval> {
 public:
  virtual ~FreshInterval() = default;

  /// Sets the refresh interval in whole seconds and calls `updateInfo` that often on the run loop
  /// of the calling thread, in place of the timer that was there. The present value changes
  /// nothing and keeps the timer; 0 or less is stored and leaves no timer. Where the thread's
  /// loop can't be made, nothing changes and a line is logged. Any thread.
  void setFreshInterval(std::int32_t seconds);
  /// The refresh interval in seconds; 0 before the first one is set. Any thread.
  std::int32_t freshInterval() const;

  /// Takes one sample now and reports it to the delegate. `firing` is the timer that asks for it,
  /// if one does; it is not consulted. Any thread.
  virtual void updateInfo(const Timer* firing = nullptr) = 0;

 private:
  mutable std::mutex intervalLock_;
  Timer updateTimer;
  std::int32_t _freshInterval = 0;
};

/// What all monitors share: a delegate, and a refresh interval. A monitor is always held by a
/// std::shared_ptr; its timer does not keep it alive and goes with it.
template <class Delegate>
class Monitor : public FreshInterval {
 public:
  /// A monitor that ends does not release its delegate: that belongs to the interface, by which
  /// hosts let go of a monitor while its delegate's code may still be running. It is kept for the
  /// rest of the process; a host that wants it released sets null first.
  ~Monitor() override { keepForGood(_delegate.get()); }

  /// Sets who is told of the samples; null for nobody. The monitor holds on to it and releases the
  /// one before. Any thread, also while a sample is being reported.
  void setDelegate(std::shared_ptr<Delegate> delegate) { _delegate.set(std::move(delegate)); }
  std::shared_ptr<Delegate> delegate() const { return _delegate.get(); }

 protected:
  /// Makes `held`, a delegate of before, the present one.
  void refreshDelegate(std::shared_ptr<Delegate>& held) const { _delegate.refresh(held); }

 private:
  DelegateSlot<Delegate> _delegate;
};

}  // namespace vantile
