#pragma once

#include <linux/if_link.h>
#include <linux/rtnetlink.h>

#include <string_view>

#include "vantile/platform/linux/netlink_request.h"

namespace vantile {

/// Asks for all links, without what is not wanted of them.
struct LinkListRequest : NetlinkRequest {
  LinkListRequest() : NetlinkRequest(RTM_GETLINK, NLM_F_DUMP) {
    header<ifinfomsg>();
    // IPv6's own counters, which take up to half of the time.
    add(IFLA_EXT_MASK, std::uint32_t{RTEXT_FILTER_SKIP_STATS});
  }
};

/// Asks for the link of a name, which may be anything.
struct LinkRequest : NetlinkRequest {
  explicit LinkRequest(std::string_view name) : NetlinkRequest(RTM_GETLINK, NLM_F_ACK) {
    header<ifinfomsg>();
    add(IFLA_IFNAME, name);
  }
};

}  // namespace vantile
