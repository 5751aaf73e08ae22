#include "vantile/platform/parsers/netlink.h"

#include <arpa/inet.h>

#include <algorithm>
#include <cstdint>
#include <string>

#include "vantile/platform/linux/network_dictionaries.h"
#include "vantile/platform/parsers/generic_netlink.h"
#include "vantile/platform/parsers/ip_address.h"
#include "vantile/platform/parsers/network_messages.h"

#include "fuzz/fuzzer.h"

namespace vantile::fuzz {
namespace {

bool isPieceOf(std::string_view piece, std::string_view whole) {
  return piece.empty() || (piece.data() >= whole.data() &&
                           piece.data() + piece.size() <= whole.data() + whole.size());
}

/// A hand at putting messages together that shares no code with the parsers.
std::string number(std::uint64_t value, std::size_t size) {
  std::string bytes;
  for (std::size_t at = 0; at < size; ++at) bytes.push_back(static_cast<char>(value >> (8 * at)));
  return bytes;
}

std::string written(std::uint16_t type, std::string_view value) {
  std::string bytes = number(value.size() + 4, 2) + number(type, 2) + std::string(value);
  bytes.resize((bytes.size() + 3) / 4 * 4, '\0');
  return bytes;
}

void checkAddresses(std::string_view input) {
  char expected[INET6_ADDRSTRLEN];
  for (const std::size_t size : {std::size_t{4}, std::size_t{16}}) {
    for (std::size_t at = 0; at + size <= input.size() && at < 256; ++at) {
      const auto bytes = input.substr(at, size);
      ::inet_ntop(size == 4 ? AF_INET : AF_INET6, bytes.data(), expected, sizeof expected);
      require(ipAddressText(bytes) == expected, "an address is written as inet_ntop does it");
    }
  }
}

/// A link as the kernel writes it comes back, whatever its name.
void checkLink(std::string_view input) {
  const auto name = input.substr(0, std::min<std::size_t>(input.find('\0'), 15));
  const auto payload = number(0, 2) + number(1, 2) + number(7, 4) + number(0x10001, 4) +
                       number(0, 4) + written(3, std::string(name) + '\0') +
                       written(18, written(1, "veth")) + written(54, input.substr(0, 20));
  const auto link = parseLinkMessage(payload);
  const bool usable = !name.empty() && name.find('/') == name.npos;
  require(link.has_value() == usable, "a link has a name");
  if (!link) return;
  require(link->name == name && link->index == 7 && link->flags == 0x10001 &&
              link->kind == "veth" && link->permanentAddress == input.substr(0, 20),
          "a link comes back as it was");
}

/// What a session would make of the messages.
void takeIn(NetworkModel& network, std::string_view payload) {
  if (const auto link = parseLinkMessage(payload)) {
    require(!link->name.empty() &&
                link->name.find_first_of(std::string_view("/\0", 2)) == link->name.npos,
            "a name is usable");
    network.keep(*link);
    require(network.link(link->index), "a link that is kept is there");
  }
  if (auto address = parseAddressMessage(payload)) {
    char bytes[16];
    const int family = address->family == AddressFamily::ipv4 ? AF_INET : AF_INET6;
    require(::inet_pton(family, address->address.c_str(), bytes) == 1, "an address is one");
    network.addresses.push_back(std::move(*address));
  }
  for (auto& route : parseDefaultRoutes(payload)) {
    require(familyOfDefaultRoute(payload) == route.family && route.index != 0,
            "a route leads somewhere");
    network.routes.push_back(std::move(route));
  }
  isBeyondDefaultRoutes(payload);
  if (const auto index = parseWirelessInterface(payload)) network.wireless.push_back(*index);
}

void checkMessages(std::string_view input) {
  NetworkModel network;
  std::size_t bytes = 0;
  NetlinkMessages messages(input);
  while (const auto message = messages.next()) {
    require(isPieceOf(message->payload, input), "a payload is a piece of the datagram");
    bytes += 16 + message->payload.size();
    require(message->error() <= 0x7fffffff, "an error is a number of the kernel's");
    takeIn(network, message->payload);
    parseCountersMessage(message->payload);
    parseFamilyNumber(message->payload);
    require(parseLinkSpeed(message->payload).value_or(1) != 0, "no speed is absent");
    require(parseStationRate(message->payload).value_or(1) != 0, "no rate is absent");
    std::size_t size = 0;
    NetlinkAttributes attributes(message->payload);
    while (const auto attribute = attributes.next()) {
      require(isPieceOf(attribute->value, message->payload), "an attribute is a piece of it");
      size += 4 + attribute->value.size();
    }
    require(size <= message->payload.size(), "attributes do not overlap");
  }
  require(bytes <= input.size(), "messages do not overlap");
  network.servers = {"10.0.0.1"};
  const auto table = networkDictionaries(
      network, {{"uuid", "name", "eth0", "vpn", true}, {"uuid2", "name", "lo", "ppp", false}});
  require(table.contains("Setup:/Network/Global/IPv4"), "there is an order");
}

}  // namespace

void consume(std::string_view input) {
  checkMessages(input);
  checkAddresses(input);
  checkLink(input);
}

}  // namespace vantile::fuzz
