#include "vantile/platform/linux/generic_netlink.h"

#include <linux/ethtool_netlink.h>
#include <linux/genetlink.h>
#include <linux/nl80211.h>

#include <string_view>
#include <utility>

#include "vantile/platform/linux/netlink_lister.h"
#include "vantile/platform/parsers/generic_netlink.h"

namespace vantile {
namespace {

struct GenericRequest : NetlinkRequest {
  GenericRequest(std::uint16_t family, std::uint16_t flags, std::uint8_t command)
      : NetlinkRequest(family, flags) {
    auto& generic = header<genlmsghdr>();
    generic.cmd = command;
    generic.version = 1;
  }
};

/// Asks, and takes what the first message of the answer that says anything says.
template <class Said, class Parse>
NetlinkLister::Outcome ask(NetlinkLister& lister, NetlinkRequest& request, const Parse& parse,
                           std::optional<Said>& found) {
  return lister.list(
      request, [&] { found.reset(); },
      [&](const NetlinkMessage& message) {
        if (!found) found = parse(message.payload);
      });
}

template <class Parse>
auto firstOf(NetlinkLister& lister, NetlinkRequest& request, const Parse& parse) {
  decltype(parse(std::string_view())) found;
  ask(lister, request, parse, found);
  return found;
}

/// Families are numbered as they are loaded.
NetlinkLister::Outcome askForFamily(NetlinkLister& lister, std::string_view family,
                                    std::optional<std::uint16_t>& number) {
  GenericRequest request(GENL_ID_CTRL, NLM_F_ACK, CTRL_CMD_GETFAMILY);
  request.add(CTRL_ATTR_FAMILY_NAME, family);
  return ask(lister, request, parseFamilyNumber, number);
}

std::optional<std::uint16_t> numberOf(NetlinkLister& lister, std::string_view family) {
  std::optional<std::uint16_t> number;
  askForFamily(lister, family, number);
  return number;
}

}  // namespace

std::optional<std::uint64_t> GenericNetlink::linkSpeed(std::uint32_t index) const {
  NetlinkLister lister(NETLINK_GENERIC, open_);
  const auto family = numberOf(lister, ETHTOOL_GENL_NAME);
  if (!family) return std::nullopt;
  GenericRequest request(*family, NLM_F_ACK, ETHTOOL_MSG_LINKMODES_GET);
  auto* const header = request.begin(ETHTOOL_A_LINKMODES_HEADER);
  request.add(ETHTOOL_A_HEADER_DEV_INDEX, index).end(header);
  return firstOf(lister, request, parseLinkSpeed);
}

std::optional<std::uint64_t> GenericNetlink::wirelessRate(std::uint32_t index) const {
  NetlinkLister lister(NETLINK_GENERIC, open_);
  const auto family = numberOf(lister, NL80211_GENL_NAME);
  if (!family) return std::nullopt;
  GenericRequest request(*family, NLM_F_DUMP, NL80211_CMD_GET_STATION);
  request.add(NL80211_ATTR_IFINDEX, index);
  return firstOf(lister, request, parseStationRate);
}

std::optional<std::vector<std::uint32_t>> GenericNetlink::wirelessLinks() const {
  using Outcome = NetlinkLister::Outcome;
  std::vector<std::uint32_t> links;
  NetlinkLister lister(NETLINK_GENERIC, open_);
  std::optional<std::uint16_t> family;
  const auto known = askForFamily(lister, NL80211_GENL_NAME, family);
  if (known == Outcome::missing) return links;
  if (known != Outcome::whole || !family) return std::nullopt;
  GenericRequest request(*family, NLM_F_DUMP, NL80211_CMD_GET_INTERFACE);
  const auto outcome = lister.list(
      request, [&links] { links.clear(); },
      [&links](const NetlinkMessage& message) {
        if (const auto link = parseWirelessInterface(message.payload)) links.push_back(*link);
      });
  // A link that came meanwhile is told, and they are asked for anew.
  const bool answered = outcome == Outcome::whole || outcome == Outcome::interrupted;
  return answered ? std::optional(std::move(links)) : std::nullopt;
}

}  // namespace vantile
