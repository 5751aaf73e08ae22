#include "vantile/network/network.h"

#include <utility>

#include "vantile/foundation/guard.h"
#include "vantile/network/net_manage.h"
#include "vantile/network/net_ppp.h"
#include "vantile/network/network_ports.h"
#include "vantile/network/shared_network.h"
#include "vantile/network/store_values.h"
#include "vantile/network/throughput_history.h"

namespace vantile {
namespace {

/// Whether the service counts as active: unless its link is not, or its PPP link's status is 0.
bool isActive(const Dictionary& entry) {
  if (const Value* const status = entry.find(keys::ppp_status_info)) {
    const auto* const held = status->as<std::shared_ptr<Dictionary>>();
    if (held && *held && (*held)->uint64(keys::status).value_or(0) == 0) return false;
  }
  return truthOf(entry.find(keys::linkactive_status)).value_or(true);
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
  guarded("a network sample", [this] { sample(); });
}

void Network::sample() {
  preferredInterfaceInfo = netManage ? netManage->interfaceConfigWithName("en4") : nullptr;
  const double interval = sinceLastSample();
  history_->add(netManage ? netManage->netStatsWithInterval(interval) : nullptr, interval,
                stayNetHistoryCount());
  lastSampleDate = ports_->now();
  const auto services = netManage ? netManage->queryInterfaceLists() : nullptr;
  if (!services) return;
  for (const Value& each : *services) {
    const auto* const held = each.as<std::shared_ptr<Dictionary>>();
    if (!held || !*held || !(*held)->contains(keys::service_id)) continue;
    (*held)->set(keys::is_active_interface, isActive(**held));
    addThroughput(**held);
    tell(delegate(), &NetworkDelegate::networkStatus, *services);
  }
}

double Network::sinceLastSample() const {
  if (!lastSampleDate) return freshInterval();
  return std::chrono::duration<double>(ports_->now() - *lastSampleDate).count();
}

/// PPP over Ethernet is read from the Ethernet device.
void Network::addThroughput(Dictionary& entry) const {
  const auto* const device = entry.text(keys::device_name);
  const auto* const link = entry.text(keys::device_ppp_name);
  const bool overEthernet = device && isEthernetName(*ports_->facts, *device);
  const auto* const name = link && !overEthernet ? link : device;
  const auto& sample = history_->newest();
  const Value* const details = name && sample ? sample->find(*name) : nullptr;
  if (!details) return;
  entry.set(keys::throughput_details, *details);
  entry.set(keys::sampling_interval, history_->newestInterval());
}

}  // namespace vantile
