#include "vantile/platform/parsers/network_messages.h"

#include <gtest/gtest.h>

#include <string>
#include <utility>
#include <vector>

#include "vantile/platform/parsers/netlink.h"

#include "fakes/netlink_bytes.h"
#include "unit/platform/fixture.h"

namespace vantile {
namespace {

using namespace std::string_literals;
using testing::addressPayload;
using testing::attribute;
using testing::bytesOf;
using testing::countersPayload;
using testing::defaultRoutePayload;
using testing::fixture;
using testing::linkPayload;
using testing::RouteHeader;
using testing::routePayload;

const auto gateway = "\x0A\x01\x02\x01"s;

/// A way of a route that has several: flags and the rest of rtnexthop.
std::string hop(std::uint32_t link, std::uint8_t flags, std::string_view to) {
  const auto more = attribute(5, to);
  return bytesOf(static_cast<std::uint16_t>(8 + more.size())) + bytesOf(flags) + "\0"s +
         bytesOf(link) + more;
}

/// The default routes of the recorded messages.
std::vector<DefaultRoute> recordedRoutes(const std::string& datagrams) {
  std::vector<DefaultRoute> all;
  NetlinkMessages messages(datagrams);
  while (const auto message = messages.next())
    for (auto& route : parseDefaultRoutes(message->payload)) all.push_back(std::move(route));
  return all;
}

/// What `parse` makes of the recorded messages that it takes.
template <class Parse>
auto recorded(const std::string& datagrams, Parse parse) {
  std::vector<typename decltype(parse(std::string_view()))::value_type> all;
  NetlinkMessages messages(datagrams);
  while (const auto message = messages.next())
    if (auto parsed = parse(message->payload)) all.push_back(*parsed);
  return all;
}

TEST(Links, AreReadAsRecorded) {
  const auto bytes = fixture("netlink-links.bin");
  const auto links = recorded(bytes, parseLinkMessage);
  ASSERT_EQ(links.size(), 6u);
  EXPECT_EQ(links[0].name, "lo");
  EXPECT_TRUE(links[0].flags & LinkFlags::loopback);
  EXPECT_EQ(links[2].index, 3u);
  EXPECT_EQ(links[2].name, "veth0");
  EXPECT_EQ(links[2].kind, "veth");
  EXPECT_EQ(static_cast<LinkType>(links[2].type), LinkType::ethernet);
  EXPECT_TRUE(links[2].flags & LinkFlags::up);
  EXPECT_TRUE(links[2].flags & LinkFlags::lowerUp);
  EXPECT_EQ(links[3].name, "br0");
  EXPECT_TRUE(links[3].flags & LinkFlags::up);
  EXPECT_FALSE(links[3].flags & LinkFlags::lowerUp);
  EXPECT_EQ(links[5].name, "tun0");
  EXPECT_EQ(links[5].kind, "tun");
  EXPECT_FALSE(links[5].flags & LinkFlags::up);
  EXPECT_EQ(links[5].parentDevice, "");
}

TEST(Links, CountersAreTheBytesOfTheLink) {
  const auto links = fixture("netlink-links.bin"), counters = fixture("netlink-counters.bin");
  const auto ofLinks = recorded(links, parseLinkMessage);
  const auto alone = recorded(counters, parseCountersMessage);
  ASSERT_EQ(ofLinks.size(), 6u);
  ASSERT_EQ(alone.size(), 6u);
  EXPECT_GT(alone[2].sent, 0u);
  for (std::size_t at = 0; at < 6; ++at) {
    EXPECT_EQ(alone[at].index, ofLinks[at].index);
    EXPECT_EQ(alone[at].received, ofLinks[at].received);
    EXPECT_EQ(alone[at].sent, ofLinks[at].sent);
  }
}

TEST(Links, HardwareTellsItsParentAndItsPermanentAddress) {
  const auto payload =
      linkPayload(2, "eth0", 1, 1,
                  attribute(54, "\x52\x54\x00\xA1\xB2\xC3"s) + attribute(56, "0000:00:1f.6\0"s));
  const auto link = parseLinkMessage(payload);
  ASSERT_TRUE(link);
  EXPECT_EQ(link->permanentAddress, "\x52\x54\x00\xA1\xB2\xC3"s);
  EXPECT_EQ(link->parentDevice, "0000:00:1f.6");
}

TEST(Links, WithoutAUsableNameAreNone) {
  EXPECT_FALSE(parseLinkMessage(linkPayload(2, "", 1)));
  EXPECT_FALSE(parseLinkMessage(linkPayload(2, "a/b", 1)));
  EXPECT_FALSE(parseLinkMessage(linkPayload(2, "eth0", 1).substr(0, 16)));
  EXPECT_TRUE(parseLinkMessage(linkPayload(2, "\xFF\xFE", 1)));
}

TEST(Links, ThatAreCutOffAreNone) {
  EXPECT_FALSE(parseLinkMessage(""));
  EXPECT_FALSE(parseLinkMessage(linkPayload(2, "eth0", 1).substr(0, 15)));
}

TEST(Links, WhatABridgeTellsOfItsPortsIsNotAboutTheLink) {
  auto payload = linkPayload(2, "eth0", 1);
  payload[0] = 7;  // AF_BRIDGE
  EXPECT_FALSE(parseLinkMessage(payload));
}

TEST(Links, WhatAWirelessDriverTellsOfAScanIsNotAboutTheLink) {
  const auto event = attribute(11, std::string(12, '\x19'));
  EXPECT_FALSE(parseLinkMessage(linkPayload(2, "wlan0", 1, 1, event)));
}

TEST(Links, OnlyPortsOfASwitchAreOfAKindAndYetADevices) {
  EXPECT_TRUE(isOfADevice(""));
  EXPECT_TRUE(isOfADevice("dsa"));
  EXPECT_FALSE(isOfADevice("veth"));
}

TEST(Links, CountersThatAreCutOffAreAbsent) {
  const auto link = parseLinkMessage(
      linkPayload(2, "eth0", 1, 1, attribute(23, testing::counterBytes(5, 6).substr(0, 31))));
  ASSERT_TRUE(link);
  EXPECT_EQ(link->received, 5u);
  EXPECT_EQ(link->sent, std::nullopt);
}

TEST(Addresses, AreReadAsRecorded) {
  const auto addresses = recorded(fixture("netlink-addresses.bin"), parseAddressMessage);
  const std::vector<AddressMessage> expected = {
      {1, AddressFamily::ipv4, 8, "127.0.0.1"},  {3, AddressFamily::ipv4, 24, "10.1.2.3"},
      {3, AddressFamily::ipv4, 24, "10.1.2.4"},  {4, AddressFamily::ipv4, 32, "10.9.0.1"},
      {1, AddressFamily::ipv6, 128, "::1"},      {2, AddressFamily::ipv6, 64, "fe80::ff:fe00:11"},
      {3, AddressFamily::ipv6, 64, "fd00:1::5"}, {3, AddressFamily::ipv6, 64, "fe80::ff:fe00:10"}};
  EXPECT_EQ(addresses, expected);
}

TEST(Addresses, WithAPeerAreTheLinksOwn) {
  const auto address = parseAddressMessage(addressPayload(4, 32, "\x0A\x09\x00\x02"s) +
                                           attribute(2, "\x0A\x09\x00\x01"s));
  EXPECT_EQ(address.value().address, "10.9.0.1");
}

TEST(Addresses, OfAnotherSizeOrFamilyAreNone) {
  EXPECT_FALSE(parseAddressMessage(""));
  EXPECT_FALSE(parseAddressMessage(addressPayload(4, 32, "abcde")));
  auto payload = addressPayload(4, 32, gateway);
  payload[0] = 10;
  EXPECT_FALSE(parseAddressMessage(payload));
  payload[0] = 9;
  EXPECT_FALSE(parseAddressMessage(payload));
  EXPECT_FALSE(parseAddressMessage(addressPayload(4, 32, gateway).substr(0, 8)));
}

TEST(DefaultRoutes, AreReadAsRecorded) {
  const std::vector<DefaultRoute> expected = {{4, AddressFamily::ipv4, 50, "10.9.0.2", false},
                                              {3, AddressFamily::ipv4, 100, "10.1.2.1", false},
                                              {3, AddressFamily::ipv4, 300, "10.1.2.7", false},
                                              {4, AddressFamily::ipv4, 300, "10.9.0.2", false}};
  EXPECT_EQ(recordedRoutes(fixture("netlink-routes.bin")), expected);
  const std::vector<DefaultRoute> expected6 = {{3, AddressFamily::ipv6, 512, "fd00:1::1", false}};
  EXPECT_EQ(recordedRoutes(fixture("netlink-routes-ipv6.bin")), expected6);
}

TEST(DefaultRoutes, WithoutAGatewayOrMetricAreRoutes) {
  const auto routes = parseDefaultRoutes(routePayload({}, attribute(4, bytesOf(std::uint32_t{9}))));
  EXPECT_EQ(routes, (std::vector<DefaultRoute>{{9, AddressFamily::ipv4, 0, "", false}}));
}

TEST(DefaultRoutes, RoutesToSomewhereAreNone) {
  RouteHeader header;
  header.destinationBits = 16;
  const auto payload = routePayload(header, attribute(4, bytesOf(std::uint32_t{9})));
  EXPECT_TRUE(parseDefaultRoutes(payload).empty());
  EXPECT_EQ(familyOfDefaultRoute(payload), AddressFamily::none);
}

TEST(DefaultRoutes, OfOtherTablesAreNone) {
  RouteHeader header;
  header.table = 77;
  const auto link = attribute(4, bytesOf(std::uint32_t{9}));
  const auto wide = link + attribute(15, bytesOf(std::uint32_t{1000}));
  for (const auto& payload : {routePayload(header, link), routePayload({}, wide)}) {
    EXPECT_TRUE(parseDefaultRoutes(payload).empty());
    EXPECT_EQ(familyOfDefaultRoute(payload), AddressFamily::none);
  }
}

TEST(DefaultRoutes, ForSomeSourcesOrATypeOfServiceAreNoneButNews) {
  for (const std::size_t place : {2u, 3u}) {  // rtm_src_len, rtm_tos
    auto payload = defaultRoutePayload(9, 0, gateway);
    payload[place] = 0x10;
    EXPECT_TRUE(parseDefaultRoutes(payload).empty()) << place;
    EXPECT_EQ(familyOfDefaultRoute(payload), AddressFamily::ipv4) << place;
  }
}

TEST(DefaultRoutes, ThatRefuseAreNoneButNews) {
  RouteHeader blackhole;
  blackhole.type = 6;
  const auto payload = routePayload(blackhole, attribute(4, bytesOf(std::uint32_t{9})));
  EXPECT_TRUE(parseDefaultRoutes(payload).empty());
  EXPECT_EQ(familyOfDefaultRoute(payload), AddressFamily::ipv4);
  EXPECT_TRUE(parseDefaultRoutes(routePayload({}, "")).empty());
}

TEST(DefaultRoutes, ThatTheKernelPassesOverAreDead) {
  // RTNH_F_DEAD, as where `ignore_routes_with_linkdown` is set too, and RTNH_F_LINKDOWN.
  for (const auto& [flags, dead] : {std::pair{1u, true}, {17u, true}, {16u, false}, {0u, false}}) {
    const auto routes = parseDefaultRoutes(defaultRoutePayload(9, 0, gateway, flags));
    ASSERT_EQ(routes.size(), 1u);
    EXPECT_EQ(routes[0].dead, dead) << flags;
  }
}

TEST(DefaultRoutes, OfSeveralWaysEachIsOne) {
  const auto ways = hop(5, 17, gateway) + hop(0, 0, gateway) + hop(6, 0, "\x0A\x01\x02\x02"s);
  const auto routes = parseDefaultRoutes(
      routePayload({}, attribute(6, bytesOf(std::uint32_t{7})) + attribute(9, ways)));
  const std::vector<DefaultRoute> expected = {{5, AddressFamily::ipv4, 7, "10.1.2.1", true},
                                              {6, AddressFamily::ipv4, 7, "10.1.2.2", false}};
  EXPECT_EQ(routes, expected);
}

TEST(DefaultRoutes, AWayWhoseLengthLiesEndsThem) {
  const auto ways = [](const std::string& bytes) {
    return parseDefaultRoutes(routePayload({}, attribute(9, bytes))).size();
  };
  for (const int length : {200, 7, 4, 0}) {
    const auto lying = bytesOf(static_cast<std::uint16_t>(length)) + std::string(6, '\1');
    EXPECT_EQ(ways(lying), 0u);
    EXPECT_EQ(ways(hop(5, 0, gateway) + lying + hop(6, 0, gateway)), 1u);
  }
  EXPECT_EQ(ways(hop(5, 0, gateway) + "\x08"), 1u);
}

TEST(DefaultRoutes, ThatAreCutOffAreNone) {
  const auto cut = defaultRoutePayload(9, 0, gateway).substr(0, 11);
  EXPECT_TRUE(parseDefaultRoutes("").empty());
  EXPECT_TRUE(parseDefaultRoutes(cut).empty());
  EXPECT_EQ(familyOfDefaultRoute(cut), AddressFamily::none);
  EXPECT_EQ(familyOfDefaultRoute(""), AddressFamily::none);
  EXPECT_EQ(familyOfDefaultRoute("\x02"), AddressFamily::none);
}

TEST(DefaultRoutes, EndWithTheFirstDestinationThatIsNotZero) {
  RouteHeader header;
  header.destinationBits = 24;
  const auto elsewhere = attribute(1, "\0\0\1\0"s), zero = attribute(1, "\0\0\0\0"s);
  EXPECT_TRUE(isBeyondDefaultRoutes(routePayload(header, elsewhere)));
  EXPECT_FALSE(isBeyondDefaultRoutes(routePayload(header, zero)));
  EXPECT_FALSE(isBeyondDefaultRoutes(routePayload(header, "")));
  EXPECT_FALSE(isBeyondDefaultRoutes(""));
  // Before Linux 4.20 other tables are listed before the main one.
  header.table = 77;
  EXPECT_FALSE(isBeyondDefaultRoutes(routePayload(header, elsewhere)));
  // IPv6's default routes are the last of their table.
  header = {};
  header.family = 10;
  EXPECT_FALSE(isBeyondDefaultRoutes(routePayload(header, attribute(1, std::string(16, '\2')))));
}

TEST(Counters, AreWiderThan32Bits) {
  const auto counters = parseCountersMessage(countersPayload(3, 1ull << 40, 1ull << 63));
  ASSERT_TRUE(counters);
  EXPECT_EQ(counters->index, 3u);
  EXPECT_EQ(counters->received, 1ull << 40);
  EXPECT_EQ(counters->sent, 1ull << 63);
}

TEST(Counters, ThatAreMissingOrCutOffAreNone) {
  EXPECT_FALSE(parseCountersMessage(""));
  EXPECT_FALSE(parseCountersMessage(countersPayload(3, 1, 2).substr(0, 12)));
  EXPECT_FALSE(parseCountersMessage(std::string(12, '\0') + attribute(1, std::string(31, 'x'))));
  EXPECT_FALSE(parseCountersMessage(std::string(12, '\0') + attribute(2, std::string(64, 'x'))));
}

}  // namespace
}  // namespace vantile
