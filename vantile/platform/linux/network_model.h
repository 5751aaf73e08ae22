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
  std::vector<DefaultRoute> routes;       ///< those of a family in the kernel's order
  std::vector<std::uint32_t> wireless;    ///< links of which nl80211 knows
  std::vector<std::string> servers;       ///< that resolve names for the whole machine

  /// Takes a link in, or lets it go. Whether that changed anything.
  bool keep(const LinkMessage& link);
  bool forget(std::uint32_t index);

  /// The link, or null.
  const NetworkLink* link(std::uint32_t index) const;
  bool isWireless(std::uint32_t index) const;
  /// The route of the family that leads out: of the least metric, one without a carrier only where
  /// there is no other, though the kernel may go on to use that one. Over one link where that is
  /// named. Null where there is none.
  const DefaultRoute* bestRoute(AddressFamily family, std::uint32_t over = 0) const;

  friend bool operator==(const NetworkModel&, const NetworkModel&) = default;
};

}  // namespace vantile
