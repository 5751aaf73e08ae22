#include "vantile/platform/parsers/network_messages.h"

#include <algorithm>
#include <utility>

#include "vantile/platform/parsers/ip_address.h"
#include "vantile/platform/parsers/netlink.h"

namespace vantile {
namespace {

// The sizes of the headers before the attributes, and the attributes' types.
constexpr std::size_t linkHeader = 16, addressHeader = 8, routeHeader = 12, countersHeader = 12;
constexpr std::uint16_t linkName = 3, linkInfo = 18, linkCounters = 23, linkPermanentAddress = 54,
                        linkParentDevice = 56;
constexpr std::uint16_t infoKind = 1;
constexpr std::uint16_t addressAddress = 1, addressLocal = 2;
constexpr std::uint16_t routeLink = 4, routeGateway = 5, routeMetric = 6, routeHops = 9,
                        routeTable = 15;
constexpr std::uint16_t countersOfLink = 1;
constexpr std::uint32_t mainTable = 254;
constexpr std::uint8_t unicast = 1;
constexpr std::uint32_t dead = 1, withoutCarrier = 16;

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

/// One of a route's several next hops.
struct Hop {
  std::uint32_t index = 0;
  std::uint32_t flags = 0;
  std::string gateway;
};

/// Takes the first one off the list; nothing at its end, and where a length lies.
std::optional<Hop> nextHop(AddressFamily family, std::string_view& hops) {
  constexpr std::size_t header = 8, alignment = 4;
  const auto size = numberAt<std::uint16_t>(hops, 0);
  if (!size || *size < header || *size > hops.size()) return std::nullopt;
  const auto bytes = hops.substr(0, *size);
  hops.remove_prefix(std::min(hops.size(), (*size + alignment - 1) / alignment * alignment));
  Hop hop;
  hop.flags = numberAt<std::uint8_t>(bytes, 2).value_or(0);
  hop.index = numberAt<std::uint32_t>(bytes, 4).value_or(0);
  NetlinkAttributes attributes(bytes, header);
  while (const auto attribute = attributes.next())
    if (attribute->type == routeGateway) hop.gateway = addressOf(family, attribute->value);
  return hop;
}

/// The first that leads somewhere: with a carrier where there is such a one.
std::optional<Hop> usedHop(AddressFamily family, std::string_view hops) {
  std::optional<Hop> used;
  while (auto hop = nextHop(family, hops)) {
    if (!(hop->flags & (dead | withoutCarrier))) return hop;
    if (!used || ((used->flags & dead) && !(hop->flags & dead))) used = std::move(hop);
  }
  return used;
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

std::optional<DefaultRoute> parseDefaultRoute(std::string_view payload) {
  const auto family = familyOf(payload);
  const auto flags = numberAt<std::uint32_t>(payload, 8);
  if (family == AddressFamily::none || !flags) return std::nullopt;
  constexpr std::size_t destinationBits = 1, sourceBits = 2, typeOfService = 3;
  for (const auto narrows : {destinationBits, sourceBits, typeOfService})
    if (numberAt<std::uint8_t>(payload, narrows) != 0) return std::nullopt;
  if (numberAt<std::uint8_t>(payload, 7) != unicast) return std::nullopt;
  DefaultRoute route;
  route.family = family;
  std::uint32_t table = numberAt<std::uint8_t>(payload, 4).value_or(0), state = *flags;
  NetlinkAttributes attributes(payload, routeHeader);
  while (const auto attribute = attributes.next()) {
    switch (attribute->type) {
      case routeLink:
        route.index = attribute->uint32().value_or(0);
        break;
      case routeGateway:
        route.gateway = addressOf(family, attribute->value);
        break;
      case routeMetric:
        route.metric = attribute->uint32().value_or(0);
        break;
      case routeTable:
        table = attribute->uint32().value_or(table);
        break;
      case routeHops:
        if (auto hop = usedHop(family, attribute->value)) {
          route.index = hop->index;
          route.gateway = std::move(hop->gateway);
          state = hop->flags;
        }
        break;
      default:
        break;
    }
  }
  route.linkDown = state & withoutCarrier;
  const bool usable = table == mainTable && route.index != 0 && !(state & dead);
  return usable ? std::optional(std::move(route)) : std::nullopt;
}

bool isAboutDefaultRoute(std::string_view payload) {
  return familyOf(payload) != AddressFamily::none && numberAt<std::uint8_t>(payload, 1) == 0;
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
