#include "vantile/platform/parsers/network_messages.h"

#include <algorithm>
#include <utility>

#include "vantile/platform/parsers/ip_address.h"
#include "vantile/platform/parsers/netlink.h"

namespace vantile {
namespace {

// The sizes of the headers before the attributes, and the attributes' types.
constexpr std::size_t linkHeader = 16, addressHeader = 8, routeHeader = 12, countersHeader = 12;
constexpr std::uint16_t linkName = 3, linkWireless = 11, linkInfo = 18, linkCounters = 23,
                        linkPermanentAddress = 54, linkParentDevice = 56;
constexpr std::uint16_t infoKind = 1;
constexpr std::uint16_t addressAddress = 1, addressLocal = 2;
constexpr std::uint16_t routeDestination = 1, routeLink = 4, routeGateway = 5, routeMetric = 6,
                        routeHops = 9, routeTable = 15;
constexpr std::uint16_t countersOfLink = 1;
constexpr std::uint32_t mainTable = 254;
constexpr std::uint8_t unicast = 1;
constexpr std::uint32_t dead = 1;

struct Counters {
  std::optional<std::uint64_t> received, sent;
};

/// rtnl_link_stats64: packets in, packets out, bytes in, bytes out, and much more.
Counters countersIn(std::string_view bytes) {
  return {numberAt<std::uint64_t>(bytes, 16), numberAt<std::uint64_t>(bytes, 24)};
}

std::string_view kindIn(std::string_view info) {
  NetlinkAttributes attributes(info);
  while (const auto attribute = attributes.next())
    if (attribute->type == infoKind) return attribute->text();
  return {};
}

AddressFamily familyOf(std::string_view payload) {
  const auto family = static_cast<AddressFamily>(numberAt<std::uint8_t>(payload, 0).value_or(0));
  const bool known = family == AddressFamily::ipv4 || family == AddressFamily::ipv6;
  return known ? family : AddressFamily::none;
}

/// The address as text where it is one of the family.
std::string addressOf(AddressFamily family, std::string_view bytes) {
  const std::size_t size = family == AddressFamily::ipv4 ? 4 : 16;
  return bytes.size() == size ? ipAddressText(bytes) : std::string();
}

/// A way that a route leads.
struct Hop {
  std::uint32_t index = 0, flags = 0;
  std::string gateway;
};

/// The several ways of a route. A length that lies ends them.
std::vector<Hop> hopsIn(AddressFamily family, std::string_view rest) {
  constexpr std::size_t header = 8;
  std::vector<Hop> hops;
  while (true) {
    const auto size = numberAt<std::uint16_t>(rest, 0);
    if (!size || *size < header || *size > rest.size()) return hops;
    const auto bytes = rest.substr(0, *size);
    auto& hop = hops.emplace_back();
    hop.flags = numberAt<std::uint8_t>(bytes, 2).value_or(0);
    hop.index = numberAt<std::uint32_t>(bytes, 4).value_or(0);
    NetlinkAttributes attributes(bytes, header);
    while (const auto attribute = attributes.next())
      if (attribute->type == routeGateway) hop.gateway = addressOf(family, attribute->value);
    rest.remove_prefix(std::min<std::size_t>((*size + 3u) & ~3u, rest.size()));
  }
}

/// What is wanted of a route's attributes.
struct RouteAttributes {
  std::uint32_t table = 0, metric = 0;
  bool toZero = true;  // the destination's address
  std::vector<Hop> hops;
};

RouteAttributes routeAttributes(AddressFamily family, std::string_view payload) {
  RouteAttributes route;
  route.table = numberAt<std::uint8_t>(payload, 4).value_or(0);
  Hop only;
  only.flags = numberAt<std::uint32_t>(payload, 8).value_or(0);
  NetlinkAttributes attributes(payload, routeHeader);
  while (const auto attribute = attributes.next()) {
    switch (attribute->type) {
      case routeDestination:
        route.toZero = attribute->value.find_first_not_of('\0') == std::string_view::npos;
        break;
      case routeLink:
        only.index = attribute->uint32().value_or(0);
        break;
      case routeGateway:
        only.gateway = addressOf(family, attribute->value);
        break;
      case routeMetric:
        route.metric = attribute->uint32().value_or(0);
        break;
      case routeTable:
        route.table = attribute->uint32().value_or(route.table);
        break;
      case routeHops:
        route.hops = hopsIn(family, attribute->value);
        break;
      default:
        break;
    }
  }
  if (route.hops.empty()) route.hops.push_back(std::move(only));
  return route;
}

}  // namespace

std::optional<LinkMessage> parseLinkMessage(std::string_view payload) {
  const auto index = numberAt<std::uint32_t>(payload, 4);
  const auto flags = numberAt<std::uint32_t>(payload, 8);
  if (payload.size() < linkHeader || !index || !flags) return std::nullopt;
  LinkMessage link;
  link.index = *index;
  link.type = numberAt<std::uint16_t>(payload, 2).value_or(0);
  link.flags = *flags;
  NetlinkAttributes attributes(payload, linkHeader);
  while (const auto attribute = attributes.next()) {
    switch (attribute->type) {
      case linkName:
        link.name = attribute->text();
        break;
      case linkWireless:
        return std::nullopt;
      case linkInfo:
        link.kind = kindIn(attribute->value);
        break;
      case linkParentDevice:
        link.parentDevice = attribute->text();
        break;
      case linkPermanentAddress:
        link.permanentAddress = attribute->value;
        break;
      case linkCounters: {
        const auto counters = countersIn(attribute->value);
        link.received = counters.received;
        link.sent = counters.sent;
        break;
      }
      default:
        break;
    }
  }
  const bool usable = !link.name.empty() && link.name.find('/') == link.name.npos;
  const auto family = numberAt<std::uint8_t>(payload, 0);
  return usable && family == 0 ? std::optional(link) : std::nullopt;
}

bool isOfADevice(std::string_view kind) {
  return kind.empty() || kind == "dsa";
}

std::optional<AddressMessage> parseAddressMessage(std::string_view payload) {
  const auto family = familyOf(payload);
  const auto index = numberAt<std::uint32_t>(payload, 4);
  if (family == AddressFamily::none || !index) return std::nullopt;
  AddressMessage message;
  message.index = *index;
  message.family = family;
  message.prefixLength = numberAt<std::uint8_t>(payload, 1).value_or(0);
  std::string_view address, local;
  NetlinkAttributes attributes(payload, addressHeader);
  while (const auto attribute = attributes.next()) {
    if (attribute->type == addressAddress) address = attribute->value;
    if (attribute->type == addressLocal) local = attribute->value;
  }
  message.address = addressOf(family, local.empty() ? address : local);
  return message.address.empty() ? std::nullopt : std::optional(std::move(message));
}

std::vector<DefaultRoute> parseDefaultRoutes(std::string_view payload) {
  std::vector<DefaultRoute> routes;
  const auto family = familyOfDefaultRoute(payload);
  const auto sourceBits = numberAt<std::uint8_t>(payload, 2),
             service = numberAt<std::uint8_t>(payload, 3),
             type = numberAt<std::uint8_t>(payload, 7);
  const bool isForAll = sourceBits == 0 && service == 0;
  if (family == AddressFamily::none || !isForAll || type != unicast) return routes;
  auto attributes = routeAttributes(family, payload);
  for (auto& hop : attributes.hops) {
    if (hop.index == 0) continue;
    routes.push_back(
        {hop.index, family, attributes.metric, std::move(hop.gateway), (hop.flags & dead) != 0});
  }
  return routes;
}

AddressFamily familyOfDefaultRoute(std::string_view payload) {
  const auto family = familyOf(payload);
  const bool isDefault = payload.size() >= routeHeader && numberAt<std::uint8_t>(payload, 1) == 0;
  if (family == AddressFamily::none || !isDefault) return AddressFamily::none;
  return routeAttributes(family, payload).table == mainTable ? family : AddressFamily::none;
}

bool isBeyondDefaultRoutes(std::string_view payload) {
  if (familyOf(payload) != AddressFamily::ipv4) return false;
  const auto route = routeAttributes(AddressFamily::ipv4, payload);
  return route.table == mainTable && !route.toZero;
}

std::optional<CountersMessage> parseCountersMessage(std::string_view payload) {
  const auto index = numberAt<std::uint32_t>(payload, 4);
  if (!index) return std::nullopt;
  NetlinkAttributes attributes(payload, countersHeader);
  while (const auto attribute = attributes.next()) {
    if (attribute->type != countersOfLink) continue;
    const auto counters = countersIn(attribute->value);
    if (counters.received && counters.sent)
      return CountersMessage{*index, *counters.received, *counters.sent};
  }
  return std::nullopt;
}

}  // namespace vantile
