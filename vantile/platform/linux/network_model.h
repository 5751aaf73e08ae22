#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "vantile/platform/parsers/network_messages.h"

namespace vantile {

/// A link as `LinkMessage` tells it, kept.
struct NetworkLink {
  std::uint32_t index = 0;
  std::uint16_t type = 0;
  bool up = false, loopback = false;
  bool active = false;  ///< it is up and has a carrier
  std::string name, kind, parentDevice, permanentAddress;

  explicit NetworkLink(const LinkMessage& message);
  friend bool operator==(const NetworkLink&, const NetworkLink&) = default;
};

/// What is known of the machine's network. The parts are replaced whole, but for the links.
struct NetworkModel {
  std::vector<NetworkLink> links;         ///< by index
  std::vector<AddressMessage> addresses;  ///< in the kernel's order
  std::vector<DefaultRoute> routes;       ///< by family, those of one in the kernel's order
  std::vector<std::uint32_t> wireless;    ///< links of which nl80211 knows
  std::vector<std::string> servers;       ///< that resolve names for the whole machine

  /// Takes a link in, or lets it go. Whether that changed anything.
  bool keep(const LinkMessage& link);
  bool forget(std::uint32_t index);

  /// The link, or null.
  const NetworkLink* link(std::uint32_t index) const;
  bool isWireless(std::uint32_t index) const;
  /// The route of the family that the kernel takes to lead out: of the least metric, with a carrier
  /// or without. Without one a route is passed over only where `ignore_routes_with_linkdown` is
  /// set, which the kernel shows as dead; whether there is a carrier is the link's to tell. What
  /// leads over a link that is down is no route: the kernel drops it without a word. Over one link
  /// where that is named. Null where there is none.
  const DefaultRoute* bestRoute(AddressFamily family, std::uint32_t over = 0) const;
  /// Whether any route of the family, dead ones too, leads over the link.
  bool leadsOver(AddressFamily family, std::uint32_t index) const;

  friend bool operator==(const NetworkModel&, const NetworkModel&) = default;
};

}  // namespace vantile
