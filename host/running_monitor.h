#pragma once

#include <memory>
#include <utility>

#include "registry.h"

namespace vantile::host {

/// A library monitor with a delegate of ours. The shared instances outlive us, so the delegate,
/// and the sink that it captured, is taken back at the end.
template <class Monitor>
class Delegating final : public RunningMonitor {
 public:
  explicit Delegating(std::shared_ptr<Monitor> monitor) : monitor_(std::move(monitor)) {}
  ~Delegating() override { monitor_->setDelegate(nullptr); }
  Delegating(const Delegating&) = delete;
  Delegating& operator=(const Delegating&) = delete;

 private:
  std::shared_ptr<Monitor> monitor_;
};

/// Gives the monitor its delegate and its interval, and takes the sample that is wanted at once.
template <class Monitor, class Delegate>
std::unique_ptr<RunningMonitor> startSampled(std::shared_ptr<Monitor> monitor,
                                             std::shared_ptr<Delegate> delegate,
                                             const Sampling& sampling) {
  monitor->setDelegate(std::move(delegate));
  monitor->setFreshInterval(sampling.interval);
  if (sampling.atOnce) monitor->updateInfo();
  return std::make_unique<Delegating<Monitor>>(std::move(monitor));
}

}  // namespace vantile::host
