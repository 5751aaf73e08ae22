#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace vantile {

// The payloads of rtnetlink's messages. Numbers are those of the kernel's interface.

enum class AddressFamily : std::uint8_t { none = 0, ipv4 = 2, ipv6 = 10 };

/// Types of links, ARPHRD_…
enum class LinkType : std::uint16_t { ethernet = 1, fireWire = 24, infiniBand = 32, ppp = 512 };

struct LinkFlags {
  static constexpr std::uint32_t up = 0x1, loopback = 0x8, lowerUp = 0x10000;
};

/// RTM_NEWLINK, RTM_DELLINK. Refers to the message's bytes.
struct LinkMessage {
  std::uint32_t index = 0;
  std::uint16_t type = 0;
  std::uint32_t flags = 0;
  std::string_view name;              ///< never empty, without '/' and zero bytes
  std::string_view kind;              ///< "veth", "bridge"; empty for a link that a driver made
  std::string_view parentDevice;      ///< "0000:00:1f.6"; empty without, and before Linux 5.14
  std::string_view permanentAddress;  ///< of its hardware, bytes; empty without
  std::optional<std::uint64_t> received, sent;  ///< bytes
};

/// Nothing for what is too short or has no name that a link may have, for what a bridge tells of
/// its ports, to leave a bridge is not to go, and for what a wireless driver tells of a scan or an
/// association: that holds little more than the link's name.
std::optional<LinkMessage> parseLinkMessage(std::string_view payload);

/// Whether links of the kind are made by the driver of a device: those without one, and the ports
/// of a switch.
bool isOfADevice(std::string_view kind);

/// RTM_NEWADDR, RTM_DELADDR.
struct AddressMessage {
  std::uint32_t index = 0;  ///< of the link
  AddressFamily family = AddressFamily::none;
  std::uint8_t prefixLength = 0;
  std::string address;  ///< the link's own, where there is a peer; never empty
  friend bool operator==(const AddressMessage&, const AddressMessage&) = default;
};

/// Nothing for another family, and for a message without an address.
std::optional<AddressMessage> parseAddressMessage(std::string_view payload);

/// RTM_NEWROUTE, RTM_DELROUTE, of a route for whatever has no other: one way that it leads.
struct DefaultRoute {
  std::uint32_t index = 0;  ///< of the link that it leads over
  AddressFamily family = AddressFamily::none;
  std::uint32_t metric = 0;  ///< the least is taken
  std::string gateway;       ///< of the route's family; empty where there is none
  bool dead = false;         ///< the kernel passes it over for now
  friend bool operator==(const DefaultRoute&, const DefaultRoute&) = default;
};

/// The ways that the route leads, in the kernel's order. None for a route to somewhere, one of
/// another table than the main one, one for packets from certain addresses or of a certain type of
/// service, and one that leads to no link: it refuses.
std::vector<DefaultRoute> parseDefaultRoutes(std::string_view payload);

/// The family of the main table's route for whatever has no other that the message is about, usable
/// or not; none where it is about another route.
AddressFamily familyOfDefaultRoute(std::string_view payload);

/// Whether the route is one of IPv4's main table to another address than 0.0.0.0, so that, where
/// routes are listed by destination, no default route follows it.
bool isBeyondDefaultRoutes(std::string_view payload);

/// RTM_NEWSTATS.
struct CountersMessage {
  std::uint32_t index = 0;
  std::uint64_t received = 0, sent = 0;  ///< bytes
};

/// Nothing for a message without the link's counters.
std::optional<CountersMessage> parseCountersMessage(std::string_view payload);

}  // namespace vantile
