#include "vantile/platform/linux/network_lists.h"

#include <linux/rtnetlink.h>

#include "vantile/platform/linux/link_requests.h"

namespace vantile {
namespace {

bool isUsable(NetlinkLister::Outcome outcome) {
  return outcome == NetlinkLister::Outcome::whole || outcome == NetlinkLister::Outcome::interrupted;
}

}  // namespace

std::optional<std::vector<NetworkLink>> NetworkLists::links() {
  NetworkModel now;
  LinkListRequest request;
  const auto outcome = lister_.list(
      request, [&now] { now.links.clear(); },
      [&now](const NetlinkMessage& message) {
        const auto link = parseLinkMessage(message.payload);
        if (message.type == RTM_NEWLINK && link) now.keep(*link);
      });
  return isUsable(outcome) ? std::optional(std::move(now.links)) : std::nullopt;
}

std::optional<std::vector<AddressMessage>> NetworkLists::addresses() {
  std::vector<AddressMessage> now;
  NetlinkRequest request(RTM_GETADDR, NLM_F_DUMP);
  request.header<ifaddrmsg>();
  const auto outcome = lister_.list(
      request, [&now] { now.clear(); },
      [&now](const NetlinkMessage& message) {
        auto address = parseAddressMessage(message.payload);
        if (message.type == RTM_NEWADDR && address) now.push_back(std::move(*address));
      });
  return isUsable(outcome) ? std::optional(std::move(now)) : std::nullopt;
}

std::optional<std::vector<DefaultRoute>> NetworkLists::defaultRoutes(AddressFamily family) {
  std::vector<DefaultRoute> now;
  NetlinkRequest request(RTM_GETROUTE, NLM_F_DUMP);
  auto& route = request.header<rtmsg>();
  route.rtm_family = static_cast<unsigned char>(family);
  route.rtm_table = RT_TABLE_MAIN;
  const auto outcome = lister_.list(
      request, [&now] { now.clear(); },
      [&now, family](const NetlinkMessage& message) {
        if (message.type != RTM_NEWROUTE) return NetlinkLister::Wanted::more;
        for (auto& each : parseDefaultRoutes(message.payload))
          if (each.family == family) now.push_back(std::move(each));
        return isBeyondDefaultRoutes(message.payload) ? NetlinkLister::Wanted::noMore
                                                      : NetlinkLister::Wanted::more;
      });
  // A new network has no table yet.
  const bool known = isUsable(outcome) || outcome == NetlinkLister::Outcome::missing;
  return known ? std::optional(std::move(now)) : std::nullopt;
}

}  // namespace vantile
