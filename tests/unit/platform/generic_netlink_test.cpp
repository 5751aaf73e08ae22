#include "vantile/platform/parsers/generic_netlink.h"

#include <gtest/gtest.h>

#include <string>

#include "vantile/platform/parsers/netlink.h"

#include "fakes/netlink_bytes.h"
#include "unit/platform/fixture.h"

namespace vantile {
namespace {

using testing::attribute;
using testing::bytesOf;
using testing::fixture;

const std::string header(4, '\0');

std::string_view payloadOf(std::string_view datagram) {
  return NetlinkMessages(datagram).next().value().payload;
}

std::string linkModes(std::uint32_t megabits) {
  return header + attribute(1, "") + attribute(5, bytesOf(megabits));
}

std::string station(std::string_view rate) {
  return header + attribute(3, bytesOf(std::uint32_t{3})) +
         attribute(21, attribute(1, "....") + attribute(8, rate));
}

TEST(GenericNetlink, AFamilysNumberStandsInTheControllersAnswer) {
  const auto recorded = fixture("netlink-family.bin");
  EXPECT_EQ(parseFamilyNumber(payloadOf(recorded)), 21);
  EXPECT_EQ(parseFamilyNumber(header), std::nullopt);
  EXPECT_EQ(parseFamilyNumber(""), std::nullopt);
  EXPECT_EQ(parseFamilyNumber(header + attribute(1, "x")), std::nullopt);
}

TEST(LinkSpeed, IsToldInMegabits) {
  const auto recorded = fixture("netlink-link-modes.bin");
  EXPECT_EQ(parseLinkSpeed(payloadOf(recorded)), 10'000'000'000u);
  EXPECT_EQ(parseLinkSpeed(linkModes(100)), 100'000'000u);
  EXPECT_EQ(parseLinkSpeed(linkModes(400000)), 400'000'000'000u);
}

TEST(LinkSpeed, ThatIsUnknownIsAbsent) {
  EXPECT_EQ(parseLinkSpeed(linkModes(0xffffffff)), std::nullopt);
  EXPECT_EQ(parseLinkSpeed(linkModes(0)), std::nullopt);
  EXPECT_EQ(parseLinkSpeed(header), std::nullopt);
  EXPECT_EQ(parseLinkSpeed(header + attribute(5, "xy")), std::nullopt);
}

TEST(WirelessInterface, IsNamedByItsNumber) {
  EXPECT_EQ(parseWirelessInterface(header + attribute(3, bytesOf(std::uint32_t{7}))), 7u);
  EXPECT_EQ(parseWirelessInterface(header), std::nullopt);
}

TEST(StationRate, CountsHundredsOfKilobits) {
  EXPECT_EQ(parseStationRate(station(attribute(1, bytesOf(std::uint16_t{8667})))), 866'700'000u);
}

TEST(StationRate, TheWiderNumberCounts) {
  const auto both =
      attribute(1, bytesOf(std::uint16_t{1})) + attribute(5, bytesOf(std::uint32_t{96077}));
  EXPECT_EQ(parseStationRate(station(both)), 9'607'700'000u);
}

TEST(StationRate, ThatIsNotToldIsAbsent) {
  EXPECT_EQ(parseStationRate(header), std::nullopt);
  EXPECT_EQ(parseStationRate(header + attribute(21, "")), std::nullopt);
  EXPECT_EQ(parseStationRate(station("")), std::nullopt);
  EXPECT_EQ(parseStationRate(station(attribute(1, bytesOf(std::uint16_t{0})))), std::nullopt);
}

TEST(SpeedText, IsANumberOfMegabitsWhereItIsKnown) {
  EXPECT_EQ(parseSpeedText("1000\n"), 1'000'000'000u);
  EXPECT_EQ(parseSpeedText("-1\n"), std::nullopt);
  EXPECT_EQ(parseSpeedText("0\n"), std::nullopt);
  EXPECT_EQ(parseSpeedText("4294967295\n"), std::nullopt);
  EXPECT_EQ(parseSpeedText("99999999999999999999\n"), std::nullopt);
  EXPECT_EQ(parseSpeedText(""), std::nullopt);
  EXPECT_EQ(parseSpeedText("\xFF"), std::nullopt);
}

}  // namespace
}  // namespace vantile
