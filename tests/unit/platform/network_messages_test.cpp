#include "vantile/platform/parsers/network_messages.h"

#include <gtest/gtest.h>

#include <string>
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
  const auto ipv4 = recorded(fixture("netlink-routes.bin"), parseDefaultRoute);
  const std::vector<DefaultRoute> expected = {{4, AddressFamily::ipv4, 50, "10.9.0.2", true},
                                              {3, AddressFamily::ipv4, 100, "10.1.2.1", false},
                                              {3, AddressFamily::ipv4, 300, "10.1.2.7", false}};
  EXPECT_EQ(ipv4, expected);
  const auto ipv6 = recorded(fixture("netlink-routes-ipv6.bin"), parseDefaultRoute);
  const std::vector<DefaultRoute> expected6 = {{3, AddressFamily::ipv6, 512, "fd00:1::1", false}};
  EXPECT_EQ(ipv6, expected6);
}

TEST(DefaultRoutes, WithoutAGatewayOrMetricAreRoutes) {
  const auto route = parseDefaultRoute(routePayload({}, attribute(4, bytesOf(std::uint32_t{9}))));
  ASSERT_TRUE(route);
  EXPECT_EQ(route->index, 9u);
  EXPECT_EQ(route->metric, 0u);
  EXPECT_EQ(route->gateway, "");
}

TEST(DefaultRoutes, RoutesToSomewhereAreNone) {
  RouteHeader header;
  header.destinationBits = 16;
  const auto payload = routePayload(header, attribute(4, bytesOf(std::uint32_t{9})));
  EXPECT_FALSE(parseDefaultRoute(payload));
  EXPECT_FALSE(isAboutDefaultRoute(payload));
}

TEST(DefaultRoutes, OfOtherTablesAreNone) {
  RouteHeader header;
  header.table = 77;
  EXPECT_FALSE(parseDefaultRoute(routePayload(header, attribute(4, bytesOf(std::uint32_t{9})))));
  const auto wide =
      attribute(4, bytesOf(std::uint32_t{9})) + attribute(15, bytesOf(std::uint32_t{1000}));
  EXPECT_FALSE(parseDefaultRoute(routePayload({}, wide)));
}

TEST(DefaultRoutes, ThatRefuseOrAreDeadAreNoneButNews) {
  RouteHeader blackhole;
  blackhole.type = 6;
  const auto link = attribute(4, bytesOf(std::uint32_t{9}));
  EXPECT_FALSE(parseDefaultRoute(routePayload(blackhole, link)));
  EXPECT_TRUE(isAboutDefaultRoute(routePayload(blackhole, link)));
  EXPECT_FALSE(parseDefaultRoute(defaultRoutePayload(9, 0, gateway, 1)));
  EXPECT_TRUE(isAboutDefaultRoute(defaultRoutePayload(9, 0, gateway, 1)));
  EXPECT_FALSE(parseDefaultRoute(routePayload({}, "")));
}

TEST(DefaultRoutes, ForSomeSourcesOrServicesAloneAreNone) {
  const auto link = attribute(4, bytesOf(std::uint32_t{9}));
  for (const std::size_t place : {2u, 3u}) {  // rtm_src_len, rtm_tos
    auto payload = routePayload({}, link);
    payload[place] = 8;
    EXPECT_FALSE(parseDefaultRoute(payload)) << place;
    EXPECT_TRUE(isAboutDefaultRoute(payload)) << place;
  }
}

constexpr std::uint8_t dead = 1, withoutCarrier = 16;

std::string hop(std::uint32_t link, std::uint8_t flags, std::string_view to = gateway) {
  const auto more = attribute(5, to);
  return bytesOf(static_cast<std::uint16_t>(8 + more.size())) + bytesOf(flags) + "\0"s +
         bytesOf(link) + more;
}

std::optional<DefaultRoute> routeOver(const std::string& hops) {
  return parseDefaultRoute(routePayload({}, attribute(9, hops)));
}

TEST(DefaultRoutes, OfSeveralHopsTheFirstWithACarrierCounts) {
  const auto other = "\x0A\x01\x02\x02"s;
  const auto route =
      routeOver(hop(4, dead) + hop(5, withoutCarrier) + hop(6, 0, other) + hop(7, 0));
  ASSERT_TRUE(route);
  EXPECT_EQ(route->index, 6u);
  EXPECT_EQ(route->gateway, "10.1.2.2");
  EXPECT_FALSE(route->linkDown);
}

TEST(DefaultRoutes, AHopWithoutACarrierCountsWhereTheOthersAreDead) {
  const auto route = routeOver(hop(4, dead) + hop(5, withoutCarrier) + hop(6, withoutCarrier));
  ASSERT_TRUE(route);
  EXPECT_EQ(route->index, 5u);
  EXPECT_TRUE(route->linkDown);
  EXPECT_FALSE(routeOver(hop(4, dead) + hop(5, dead | withoutCarrier)));
}

TEST(DefaultRoutes, AHopBehindOneWhoseLengthLiesIsNotReached) {
  const auto lying = bytesOf(std::uint16_t{4}) + std::string(6, '\1');
  EXPECT_FALSE(routeOver(hop(4, dead) + lying + hop(6, 0)));
}

TEST(DefaultRoutes, HopsWhoseLengthLiesAreNone) {
  const auto lying = bytesOf(std::uint16_t{200}) + std::string(6, '\1');
  EXPECT_FALSE(parseDefaultRoute(routePayload({}, attribute(9, lying))));
  EXPECT_FALSE(parseDefaultRoute(routePayload({}, attribute(9, bytesOf(std::uint16_t{4})))));
}

TEST(DefaultRoutes, ThatAreCutOffAreNone) {
  EXPECT_FALSE(parseDefaultRoute(""));
  EXPECT_FALSE(parseDefaultRoute(defaultRoutePayload(9, 0, gateway).substr(0, 11)));
  EXPECT_FALSE(isAboutDefaultRoute(""));
  EXPECT_FALSE(isAboutDefaultRoute("\x02"));
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
