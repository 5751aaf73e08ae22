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

/// What the first message of an answer that says anything says.
template <class Parse>
auto firstOf(NetlinkLister& lister, NetlinkRequest& request, const Parse& parse) {
  decltype(parse(std::string_view())) found;
  lister.list(
      request, [&] { found.reset(); },
      [&](const NetlinkMessage& message) {
        if (!found) found = parse(message.payload);
      });
  return found;
}

/// Families are numbered as they are loaded.
std::optional<std::uint16_t> numberOf(NetlinkLister& lister, std::string_view family) {
  GenericRequest request(GENL_ID_CTRL, NLM_F_ACK, CTRL_CMD_GETFAMILY);
  request.add(CTRL_ATTR_FAMILY_NAME, family);
  return firstOf(lister, request, parseFamilyNumber);
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

std::vector<std::uint32_t> GenericNetlink::wirelessLinks() const {
  std::vector<std::uint32_t> links;
  NetlinkLister lister(NETLINK_GENERIC, open_);
  const auto family = numberOf(lister, NL80211_GENL_NAME);
  if (!family) return links;
  GenericRequest request(*family, NLM_F_DUMP, NL80211_CMD_GET_INTERFACE);
  lister.list(
      request, [&links] { links.clear(); },
      [&links](const NetlinkMessage& message) {
        if (const auto link = parseWirelessInterface(message.payload)) links.push_back(*link);
      });
  return links;
}

}  // namespace vantile
