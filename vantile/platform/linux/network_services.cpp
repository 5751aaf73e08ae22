#include "vantile/platform/linux/network_services.h"

#include <algorithm>
#include <array>
#include <cstdint>
#include <limits>
#include <string_view>
#include <tuple>
#include <utility>

#include "vantile/platform/parsers/ip_address.h"

namespace vantile {
namespace {

using Words = std::pair<std::string_view, std::string_view>;

/// Kinds of links. One that is not here has no words: that it is of Ethernet type says nothing of
/// what it is.
constexpr std::array linkKinds{Words{"dsa", "Ethernet"},
                               Words{"bridge", "Bridge"},
                               Words{"bond", "Bond"},
                               Words{"team", "Bond"},
                               Words{"vlan", "VLAN"},
                               Words{"vrf", "VRF"},
                               Words{"macsec", "MACsec"},
                               Words{"batadv", "Mesh"},
                               Words{"can", "CAN"},
                               Words{"vcan", "CAN"},
                               Words{"vxcan", "CAN"},
                               Words{"dummy", "Virtual Ethernet"},
                               Words{"ifb", "Virtual Ethernet"},
                               Words{"netdevsim", "Virtual Ethernet"},
                               Words{"netkit", "Virtual Ethernet"},
                               Words{"veth", "Virtual Ethernet"},
                               Words{"macvlan", "Virtual Ethernet"},
                               Words{"macvtap", "Virtual Ethernet"},
                               Words{"ipvlan", "Virtual Ethernet"},
                               Words{"ipvtap", "Virtual Ethernet"},
                               Words{"tun", "Tunnel"},
                               Words{"gre", "Tunnel"},
                               Words{"gretap", "Tunnel"},
                               Words{"ip6gre", "Tunnel"},
                               Words{"ip6gretap", "Tunnel"},
                               Words{"erspan", "Tunnel"},
                               Words{"ip6erspan", "Tunnel"},
                               Words{"l2tp", "Tunnel"},
                               Words{"gtp", "Tunnel"},
                               Words{"bareudp", "Tunnel"},
                               Words{"amt", "Tunnel"},
                               Words{"ovpn", "Tunnel"},
                               Words{"sit", "Tunnel"},
                               Words{"ipip", "Tunnel"},
                               Words{"ip6tnl", "Tunnel"},
                               Words{"vti", "Tunnel"},
                               Words{"vti6", "Tunnel"},
                               Words{"xfrm", "Tunnel"},
                               Words{"vxlan", "Tunnel"},
                               Words{"geneve", "Tunnel"},
                               Words{"wireguard", "WireGuard"},
                               Words{"wwan", "Mobile Broadband"},
                               Words{"rmnet", "Mobile Broadband"},
                               Words{"ppp", "PPP"},
                               Words{"ipoib", "InfiniBand"}};

/// Types of NetworkManager's connections, for devices that are not there.
constexpr std::array connectionTypes{Words{"802-3-ethernet", "Ethernet"},
                                     Words{"802-11-wireless", "Wi-Fi"},
                                     Words{"bridge", "Bridge"},
                                     Words{"bond", "Bond"},
                                     Words{"team", "Bond"},
                                     Words{"vlan", "VLAN"},
                                     Words{"ppp", "PPP"},
                                     Words{"pppoe", "PPP"},
                                     Words{"tun", "Tunnel"},
                                     Words{"ip-tunnel", "Tunnel"},
                                     Words{"wireguard", "WireGuard"},
                                     Words{"gsm", "Mobile Broadband"},
                                     Words{"cdma", "Mobile Broadband"},
                                     Words{"infiniband", "InfiniBand"},
                                     Words{"bluetooth", "Bluetooth"},
                                     Words{"veth", "Virtual Ethernet"}};

template <std::size_t Size>
std::string_view wordsFor(const std::array<Words, Size>& table, std::string_view name) {
  const auto found = std::find_if(table.begin(), table.end(),
                                  [name](const Words& words) { return words.first == name; });
  return found == table.end() ? std::string_view() : found->second;
}

std::string_view hardwareOf(const NetworkLink& link, bool wireless) {
  const auto type = static_cast<LinkType>(link.type);
  if (type == LinkType::ppp) return "PPP";
  if (wireless) return "Wi-Fi";
  if (!link.kind.empty()) return wordsFor(linkKinds, link.kind);
  switch (type) {
    case LinkType::ethernet:
      return "Ethernet";
    case LinkType::fireWire:
      return "FireWire";
    case LinkType::infiniBand:
      return "InfiniBand";
    default:
      return {};
  }
}

/// A connection that stands beside the link which it uses is not that link's.
bool isForALink(const ManagedConnection& connection) {
  return !connection.device.empty() && connection.type != "vpn" && connection.type != "loopback";
}

const NetworkLink* linkCalled(const NetworkModel& network, std::string_view name) {
  const auto found = std::find_if(network.links.begin(), network.links.end(),
                                  [name](const auto& link) { return link.name == name; });
  return found == network.links.end() ? nullptr : &*found;
}

/// The device itself comes before what else has its address: the ports of a switch, a second link
/// of a radio. So its identifier stays when these come.
bool isFirstWithItsAddress(const NetworkModel& network, const NetworkLink& link) {
  const auto first = std::find_if(
      network.links.begin(), network.links.end(),
      [&link](const auto& each) { return each.permanentAddress == link.permanentAddress; });
  return &*first == &link;
}

std::string ownIdentifier(const NetworkModel& network, const NetworkLink& link) {
  const auto& address = link.permanentAddress;
  const bool identifies = !address.empty() && isFirstWithItsAddress(network, link);
  return identifies ? "hardware-" + hexadecimal(address) : "interface-" + link.name;
}

NetworkService serviceOf(const NetworkModel& network, const ManagedConnection& connection) {
  NetworkService service;
  service.id = connection.uuid;
  service.userDefinedName = connection.name;
  service.device = connection.device;
  if (connection.type == "pppoe") service.subType = "PPPoE";
  service.link = linkCalled(network, connection.device);
  const bool wireless = connection.type == "802-11-wireless" ||
                        (service.link && network.isWireless(service.link->index));
  service.hardware = service.link ? hardwareOf(*service.link, wireless)
                                  : wordsFor(connectionTypes, connection.type);
  return service;
}

NetworkService serviceOf(const NetworkModel& network, const NetworkLink& link) {
  NetworkService service;
  service.id = ownIdentifier(network, link);
  service.device = link.name;
  service.hardware = hardwareOf(link, network.isWireless(link.index));
  service.link = &link;
  return service;
}

/// What leads out comes first, by IPv4 before what does so by IPv6 alone, by metric.
std::pair<int, std::uint32_t> waysOut(const NetworkModel& network, const NetworkLink& link) {
  int place = 0;
  for (const auto family : {AddressFamily::ipv4, AddressFamily::ipv6}) {
    if (const auto* const route = network.bestRoute(family, link.index))
      return {place, route->metric};
    ++place;
  }
  return {place, 0};
}

/// The links that no connection is for, in their order.
std::vector<const NetworkLink*> others(const NetworkModel& network,
                                       const std::vector<NetworkService>& services) {
  using Rank = std::tuple<std::pair<int, std::uint32_t>, bool, std::uint32_t>;
  std::vector<std::pair<Rank, const NetworkLink*>> ranked;
  for (const auto& link : network.links) {
    const bool taken = std::any_of(services.begin(), services.end(),
                                   [&link](const auto& service) { return service.link == &link; });
    if (link.loopback || taken) continue;
    const bool isVirtual = !isOfADevice(link.kind) || link.parentDevice.empty();
    ranked.emplace_back(Rank(waysOut(network, link), isVirtual, link.index), &link);
  }
  std::sort(ranked.begin(), ranked.end());
  std::vector<const NetworkLink*> links;
  links.reserve(ranked.size());
  for (const auto& [rank, link] : ranked) links.push_back(link);
  return links;
}

}  // namespace

std::vector<NetworkService> networkServices(const NetworkModel& network,
                                            const std::vector<ManagedConnection>& connections) {
  std::vector<NetworkService> services;
  std::vector<bool> active;
  for (const auto& connection : connections) {
    if (!isForALink(connection)) continue;
    auto service = serviceOf(network, connection);
    if (service.link && service.link->loopback) continue;
    services.push_back(std::move(service));
    active.push_back(connection.active);
  }
  for (std::size_t at = 0; at < services.size(); ++at) {
    auto& service = services[at];
    // The first active one of the link, or the first at all.
    std::size_t shown = at;
    for (std::size_t other = 0; other < services.size(); ++other) {
      if (services[other].link != service.link) continue;
      if (std::pair(!active[other], other) < std::pair(!active[shown], shown)) shown = other;
    }
    service.showsState = service.link && shown == at;
  }
  for (const auto* const link : others(network, services)) {
    services.push_back(serviceOf(network, *link));
    services.back().showsState = true;
  }
  return services;
}

}  // namespace vantile
