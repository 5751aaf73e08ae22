#include "vantile/platform/linux/power_sources.h"

#include <unistd.h>

#include <cerrno>
#include <chrono>
#include <utility>

#include "vantile/foundation/log.h"
#include "vantile/foundation/run_loop.h"
#include "vantile/platform/linux/descriptor_source.h"
#include "vantile/platform/linux/udev.h"

namespace vantile {
namespace {

// A charger that is plugged in shows as changes of its own and of each battery, some of them tens
// of milliseconds later.
constexpr std::chrono::milliseconds burst(100);

using Monitor = Udev<udev_monitor>;

/// A monitor of the power supplies' changes; null where there can't be one.
Monitor openMonitor(const LinuxRoots& roots) {
  const auto context = udevContext();
  if (!context) return nullptr;
  // Without udevd nobody sends to its group.
  const bool hasUdevd = ::access((roots.run + "/udev/control").c_str(), F_OK) == 0;
  Monitor monitor(
      ::udev_monitor_new_from_netlink(context.get(), hasUdevd ? "udev" : "kernel"));  // keeps it
  if (!monitor ||
      ::udev_monitor_filter_add_match_subsystem_devtype(monitor.get(), "power_supply", nullptr) <
          0 ||
      ::udev_monitor_enable_receiving(monitor.get()) < 0)
    return nullptr;
  return monitor;
}

class Subscription final : public PowerSourceSubscription {
 public:
  Subscription(Monitor monitor, void (*changed)(void*), void* context)
      : monitor_(std::move(monitor)),
        changed_(changed),
        context_(context),
        source_(::udev_monitor_get_fd(monitor_.get()), [this] { onEvents(); }) {}

 private:
  void onEvents() {
    // A whole burst is one change, told when its first event is so old.
    bool any = false;
    while (true) {
      errno = 0;
      const Udev<udev_device> device(::udev_monitor_receive_device(monitor_.get()));
      const bool lost = !device && errno == ENOBUFS;  // there were more than the socket holds
      if (!device && !lost) break;
      any = true;
    }
    if (!any || told_.isValid()) return;
    told_ = RunLoop::current().after(burst, [this] { tell(); });
  }
  void tell() {
    const auto changed = changed_;  // the call may end this
    auto* const context = context_;
    changed(context);
  }

  const Monitor monitor_;
  void (*const changed_)(void*);
  void* const context_;
  Timer told_;
  const DescriptorSource source_;
};

}  // namespace

std::vector<std::shared_ptr<const Dictionary>> LinuxPowerSources::descriptions() {
  const auto found = supplies_.read(SupplyUse::description, true);
  const auto external = onExternalPower(found.mains, found.batteries);
  std::vector<std::shared_ptr<const Dictionary>> descriptions;
  for (const auto& battery : found.batteries)
    descriptions.push_back(std::make_shared<const Dictionary>(descriptionOf(battery, external)));
  return descriptions;
}

std::unique_ptr<PowerSourceSubscription> LinuxPowerSources::subscribe(void (*changed)(void*),
                                                                      void* context) {
  auto monitor = openMonitor(roots_);
  if (!monitor) {
    logLine("changes of the power supplies can't be watched");
    return nullptr;
  }
  return std::make_unique<Subscription>(std::move(monitor), changed, context);
}

std::shared_ptr<PowerSources> systemPowerSources() {
  static auto& sources = *new std::shared_ptr<PowerSources>(std::make_shared<LinuxPowerSources>());
  return sources;
}

}  // namespace vantile
