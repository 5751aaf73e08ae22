#include "vantile/network/network.h"

#include <algorithm>
#include <cstddef>
#include <string_view>
#include <utility>

#include "vantile/foundation/guard.h"
#include "vantile/network/net_manage.h"
#include "vantile/network/net_ppp.h"
#include "vantile/network/network_ports.h"
#include "vantile/network/ppp_time.h"
#include "vantile/network/shared_network.h"
#include "vantile/network/store_values.h"
#include "vantile/network/throughput_history.h"

namespace vantile {
namespace {

/// What a sample needs of a service's entry, found in one walk over it: with many services that is
/// most of what there is to do. Valid until the entry is changed.
struct Present {
  explicit Present(Dictionary& entry) {
    for (auto& each : entry) {
      const auto key = each.key();
      Value* const value = &each.value;
      if (key == keys::service_id) {
        service = value;
      } else if (key == keys::device_name) {
        device = value->as<std::string>();
      } else if (key == keys::linkactive_status) {
        linkActive = value;
      } else if (key == keys::is_active_interface) {
        active = value->as<bool>();
      } else if (key == keys::throughput_details) {
        details = value->as<Details>();
      } else if (key == keys::sampling_interval) {
        interval = value;
      } else if (key == keys::device_ppp_name) {
        link = value->as<std::string>();
      } else if (key == keys::ppp_status_info) {
        status = value;
      }
    }
  }

  /// Whether the service counts as active: unless its link is not, or its PPP link's status is 0.
  bool isActive() const {
    const auto* const held = status ? status->as<std::shared_ptr<Dictionary>>() : nullptr;
    if (held && *held && (*held)->uint64(keys::status).value_or(0) == 0) return false;
    return truthOf(linkActive).value_or(true);
  }

  using Details = std::shared_ptr<Dictionary>;
  const Value *service = nullptr, *status = nullptr, *linkActive = nullptr;
  const std::string *device = nullptr, *link = nullptr;
  const bool* active = nullptr;
  const Details* details = nullptr;
  Value* interval = nullptr;
};

/// The value under `key`, which as a rule is at `place`, that then becomes the one behind it: but
/// for the primary one, services come in the order of their interfaces.
const Value* findAt(const Dictionary& sample, std::size_t& place, std::string_view key) {
  const auto isIt = [key](const Dictionary::Entry& each) { return each.key() == key; };
  const auto begin = sample.begin(), end = sample.end();
  auto found = begin + static_cast<std::ptrdiff_t>(std::min(place, sample.size()));
  if (found == end || !isIt(*found)) found = std::find_if(begin, end, isIt);
  if (found == end) return nullptr;
  place = static_cast<std::size_t>(found - begin) + 1;
  return &found->value;
}

}  // namespace

SharedInstance<Network>& sharedNetworkMonitor() {
  static auto& instance = *new SharedInstance<Network>;
  return instance;
}

std::shared_ptr<Network> Network::singleton() {
  return sharedNetworkMonitor().get([] { return init(); });
}

std::shared_ptr<Network> Network::init() {
  const SharedPppTime together;
  std::shared_ptr<Network> monitor(new Network(NetworkPorts::installed()));
  monitor->netManage = NetManage::init();
  monitor->netPPP = NetPPP::singleton();
  monitor->setFreshInterval(1);
  monitor->setStayNetHistoryCount(1);
  return monitor;
}

Network::Network(NetworkPorts ports)
    : ports_(std::make_unique<const NetworkPorts>(std::move(ports))),
      history_(std::make_unique<ThroughputHistory>()) {}

Network::~Network() = default;

void Network::updateInfo(const Timer*) {
  const auto self = shared_from_this();  // a delegate may let go of it
  const std::lock_guard lock(sampleLock_);
  guarded("a network sample", [this] { sample(); });
}

void Network::sample() {
  const auto services = takeSample();
  if (!services) return;
  std::size_t place = 0;
  auto told = delegate();
  for (const Value& each : *services) {
    const auto* const held = each.as<std::shared_ptr<Dictionary>>();
    if (!held || !*held || !decorate(**held, place)) continue;
    refreshDelegate(told);
    tell(told, &NetworkDelegate::networkStatus, *services);
  }
}

/// Adds to the history; gives the services. All that the PPP daemon is asked for takes one time.
std::shared_ptr<Array> Network::takeSample() {
  const SharedPppTime together;
  preferredInterfaceInfo = netManage ? netManage->interfaceConfigWithName("en4") : nullptr;
  const double interval = sinceLastSample();
  history_->add(netManage ? netManage->netStatsWithInterval(interval) : nullptr, interval,
                stayNetHistoryCount());
  lastSampleDate = ports_->now();
  return netManage ? netManage->queryInterfaceLists() : nullptr;
}

double Network::sinceLastSample() const {
  if (!lastSampleDate) return freshInterval();
  return std::chrono::duration<double>(ports_->now() - *lastSampleDate).count();
}

/// Whether the entry is a service's, which then says whether that is active and what it moved. PPP
/// over Ethernet is read from the Ethernet device.
bool Network::decorate(Dictionary& entry, std::size_t& place) {
  const Present present(entry);
  if (!present.service) return false;
  const auto *const device = present.device, *const link = present.link;
  const bool overEthernet = link && device && netManage->isEthernet(*device);
  const auto* const name = link && !overEthernet ? link : device;
  const auto& sample = history_->newest();
  const Value* const found = name && sample ? findAt(*sample, place, *name) : nullptr;
  const auto* const details = found ? found->as<Present::Details>() : nullptr;
  const bool active = present.isActive();
  const bool sameActivity = present.active && *present.active == active;
  const bool sameDetails = details && present.details && *present.details == *details;
  const double interval = history_->newestInterval();
  const bool hasInterval = present.interval != nullptr;
  if (details && hasInterval) *present.interval = interval;
  if (!sameActivity) entry.set(keys::is_active_interface, active);
  if (!details) return true;
  if (!sameDetails) entry.set(keys::throughput_details, *details);
  if (!hasInterval) entry.set(keys::sampling_interval, interval);
  return true;
}

}  // namespace vantile
