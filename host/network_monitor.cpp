#include "network_monitor.h"

#include <vantile/foundation/run_loop.h>
#include <vantile/network/network.h>

#include <chrono>
#include <cstddef>
#include <utility>

#include "dashboard/network_panes.h"

namespace vantile::host {
namespace {

/// The services as they are now: the library changes them at the next sample.
Value copyOf(const Array& services) {
  auto copy = std::make_shared<Array>();
  for (const auto& service : services) {
    const auto* const held = service.as<std::shared_ptr<Dictionary>>();
    if (held && *held) copy->emplace_back(std::make_shared<Dictionary>(**held));
  }
  return Value(std::move(copy));
}

class RunningNetwork final : public RunningMonitor {
 public:
  RunningNetwork(std::shared_ptr<Network> monitor, const Sampling& sampling, ReportSink sink)
      : monitor_(std::move(monitor)), sink_(std::move(sink)) {
    auto delegate = std::make_shared<NetworkDelegate>();
    delegate->networkStatus = [this](const Array& services) { take(services); };
    monitor_->setDelegate(std::move(delegate));
    monitor_->setFreshInterval(sampling.interval);
    // After the monitor's own, which was set before it.
    timer_ = RunLoop::current().every(std::chrono::seconds(sampling.interval), [this] { end(); });
    if (!sampling.atOnce) return;
    monitor_->updateInfo();
    end();
  }
  ~RunningNetwork() override { monitor_->setDelegate(nullptr); }
  RunningNetwork(const RunningNetwork&) = delete;
  RunningNetwork& operator=(const RunningNetwork&) = delete;

 private:
  /// Comes once a service.
  void take(const Array& services) {
    if (++calls_ < services.size()) return;
    calls_ = 0;
    told_ = true;
    sink_({"network", "networkStatus", {copyOf(services)}});
  }
  /// Without services nobody was told.
  void end() {
    calls_ = 0;
    if (!std::exchange(told_, false)) sink_({"network", "networkStatus", {copyOf({})}});
  }

  const std::shared_ptr<Network> monitor_;
  const ReportSink sink_;
  std::size_t calls_ = 0;
  bool told_ = false;
  Timer timer_;
};

}  // namespace

std::unique_ptr<RunningMonitor> startNetwork(const Sampling& sampling, ReportSink sink) {
  auto monitor = Network::singleton();
  if (!monitor) return nullptr;
  return std::make_unique<RunningNetwork>(std::move(monitor), sampling, std::move(sink));
}

PaneGroup networkPanes() {
  const auto figures = std::make_shared<NetworkFigures>();
  PaneGroup group;
  group.panes.push_back(std::make_unique<ServicesPane>(figures));
  group.panes.push_back(std::make_unique<ThroughputPane>(figures));
  group.take = [figures](const Report& report) { figures->take(report); };
  return group;
}

}  // namespace vantile::host
