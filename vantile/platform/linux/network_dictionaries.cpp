#include "vantile/platform/linux/network_dictionaries.h"

#include <algorithm>
#include <optional>
#include <string_view>
#include <utility>

#include "vantile/platform/linux/network_services.h"
#include "vantile/platform/parsers/ip_address.h"

namespace vantile {
namespace {

constexpr std::int32_t running = 8;  // a PPP link's status while it is connected

Value array(const std::vector<std::string>& texts) {
  return std::make_shared<Array>(texts.begin(), texts.end());
}

std::optional<std::string> unlessEmpty(std::string_view text) {
  return text.empty() ? std::nullopt : std::optional<std::string>(text);
}

/// What the store calls the type of a link, for those that macOS has as well.
std::optional<std::string> typeOf(const NetworkLink& link) {
  switch (static_cast<LinkType>(link.type)) {
    case LinkType::ethernet:
      return "Ethernet";
    case LinkType::fireWire:
      return "FireWire";
    case LinkType::ppp:
      return "PPP";
    default:
      return std::nullopt;
  }
}

bool isPPP(const NetworkService& service) {
  return service.link && static_cast<LinkType>(service.link->type) == LinkType::ppp;
}

/// Puts the table together.
class Store {
 public:
  Store(const NetworkModel& network, const std::vector<ManagedConnection>& connections)
      : network_(network), services_(networkServices(network, connections)) {}

  ConfigurationTable table() && {
    order();
    primary();
    for (const auto& service : services_) setup(service);
    for (const auto& service : services_) state(service);
    for (const auto& link : network_.links) state(link);
    servers();
    return std::move(table_);
  }

 private:
  void put(const std::string& key, Dictionary dictionary) {
    table_[key] = std::make_shared<const Dictionary>(std::move(dictionary));
  }

  const NetworkService* shownFor(const DefaultRoute* route) const {
    if (!route) return nullptr;
    const auto found =
        std::find_if(services_.begin(), services_.end(), [route](const auto& service) {
          return service.showsState && service.link->index == route->index;
        });
    return found == services_.end() ? nullptr : &*found;
  }

  std::vector<std::string> addresses(const NetworkLink& link, AddressFamily family) const {
    std::vector<std::string> texts;
    for (const auto& each : network_.addresses)
      if (each.index == link.index && each.family == family) texts.push_back(each.address);
    return texts;
  }

  void order() {
    std::vector<std::string> identifiers;
    for (const auto& service : services_) identifiers.push_back(service.id);
    Dictionary global;
    global.set("ServiceOrder", array(identifiers));
    put("Setup:/Network/Global/IPv4", std::move(global));
  }

  void primary() {
    const auto* const service = shownFor(network_.bestRoute(AddressFamily::ipv4));
    if (!service) return;
    Dictionary global;
    global.set("PrimaryInterface", service->device);
    global.set("PrimaryService", service->id);
    put("State:/Network/Global/IPv4", std::move(global));
  }

  void setup(const NetworkService& service) {
    const auto key = "Setup:/Network/Service/" + service.id;
    if (!service.userDefinedName.empty()) {
      Dictionary named;
      named.set("UserDefinedName", service.userDefinedName);
      put(key, std::move(named));
    }
    Dictionary interface;
    interface.set("DeviceName", service.device);
    interface.set("Hardware", unlessEmpty(service.hardware));
    interface.set("SubType", unlessEmpty(service.subType));
    if (service.link) interface.set("Type", typeOf(*service.link));
    put(key + "/Interface", std::move(interface));
    if (isPPP(service)) put(key + "/PPP", {});
  }

  void state(const NetworkService& service) {
    if (!service.showsState) return;
    const auto key = "State:/Network/Service/" + service.id;
    if (auto ipv4 = ipv4State(*service.link); !ipv4.empty()) put(key + "/IPv4", std::move(ipv4));
    if (!isPPP(service)) return;
    Dictionary ppp;
    ppp.set("InterfaceName", service.device);
    if (service.link->up) ppp.set("Status", running);
    put(key + "/PPP", std::move(ppp));
  }

  Dictionary ipv4State(const NetworkLink& link) const {
    Dictionary ipv4;
    std::vector<std::string> texts, masks;
    for (const auto& each : network_.addresses) {
      if (each.index != link.index || each.family != AddressFamily::ipv4) continue;
      texts.push_back(each.address);
      masks.push_back(ipv4MaskText(each.prefixLength));
    }
    if (!texts.empty()) ipv4.set("Addresses", array(texts));
    const auto* const route = network_.bestRoute(AddressFamily::ipv4, link.index);
    if (route) ipv4.set("Router", unlessEmpty(route->gateway));
    if (!masks.empty()) ipv4.set("SubnetMasks", array(masks));
    return ipv4;
  }

  void state(const NetworkLink& link) {
    if (link.loopback) return;
    const auto key = "State:/Network/Interface/" + link.name;
    Dictionary carrier;
    carrier.set("Active", link.active);
    put(key + "/Link", std::move(carrier));
    const auto texts = addresses(link, AddressFamily::ipv6);
    if (texts.empty()) return;
    Dictionary ipv6;
    ipv6.set("Addresses", array(texts));
    put(key + "/IPv6", std::move(ipv6));
  }

  /// The one that leads out of the machine's network, or where none does the first with an address.
  const NetworkService* resolving() const {
    for (const auto family : {AddressFamily::ipv4, AddressFamily::ipv6})
      if (const auto* const service = shownFor(network_.bestRoute(family))) return service;
    for (const auto& service : services_)
      if (service.showsState && !addresses(*service.link, AddressFamily::ipv4).empty())
        return &service;
    return nullptr;
  }

  void servers() {
    const auto* const service = network_.servers.empty() ? nullptr : resolving();
    if (!service) return;
    Dictionary resolver;
    resolver.set("ServerAddresses", array(network_.servers));
    put("State:/Network/Service/" + service->id + "/DNS", std::move(resolver));
  }

  const NetworkModel& network_;
  const std::vector<NetworkService> services_;
  ConfigurationTable table_;
};

}  // namespace

ConfigurationTable networkDictionaries(const NetworkModel& network,
                                       const std::vector<ManagedConnection>& connections) {
  return Store(network, connections).table();
}

}  // namespace vantile
