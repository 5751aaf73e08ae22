#include <cmath>
#include <limits>

#include "unit/network/queries_fixture.h"

namespace vantile::testing {
namespace {

TEST_F(Queries, NoServiceHasTheUsualSpeed) {
  EXPECT_EQ(manage().querySpeedWithServiceID(std::nullopt), 10'000'000u);
  EXPECT_TRUE(store.reads.empty());
}

TEST_F(Queries, AnEthernetServiceHasItsLinksSpeed) {
  interfaces.speeds["en0"] = 2'500'000'000;
  EXPECT_EQ(manage().querySpeedWithServiceID("A"), 2'500'000'000u);
  EXPECT_EQ(reads([this] { return manage_->querySpeedWithServiceID("A"); }), Reads(4, 0));
}

TEST_F(Queries, AnEthernetServiceWithoutATellingLinkKeepsTheUsualSpeed) {
  EXPECT_EQ(manage().querySpeedWithServiceID("A"), 10'000'000u);
  interfaces.speeds["en0"] = 5;
  EXPECT_EQ(manage().querySpeedWithServiceID("A"), 10'000'000u);
}

TEST_F(Queries, WhatCountsAsEthernetHasItsLinksSpeed) {
  interfaces.ethernet = {"fw0"};
  interfaces.speeds["fw0"] = 400'000'000;
  EXPECT_EQ(manage().querySpeedWithServiceID("B"), 400'000'000u);
}

TEST_F(Queries, PppOverEthernetHasTheUsualSpeedByItsPppInterface) {
  state("A", "PPP").set("InterfaceName", "ppp0");
  interfaces.speeds["en0"] = 1'000'000'000;
  EXPECT_EQ(manage().querySpeedWithServiceID("A"), 10'000'000u);
}

TEST_F(Queries, AnyOtherServiceHasTheUsualSpeedAndIsAskedForAgain) {
  interfaces.speeds["fw0"] = 400'000'000;
  EXPECT_EQ(manage().querySpeedWithServiceID("B"), 10'000'000u);
  EXPECT_EQ(reads([this] { return manage_->querySpeedWithServiceID("B"); }), Reads(4, 2));
}

TEST_F(Queries, AConnectedModemHasTheSpeedItConnectedAt) {
  state("B", "Modem").set("ConnectSpeed", 48'000);
  state("B", "PPP").set("Status", 8);
  EXPECT_EQ(manage().querySpeedWithServiceID("B"), 48'000u);
  EXPECT_EQ(reads([this] { return manage_->querySpeedWithServiceID("B"); }), Reads(2, 0));
}

TEST_F(Queries, AModemThatIsNotConnectedHasItsHighestSpeedWhichIsNotKept) {
  state("B", "Modem").set("ConnectSpeed", 48'000);
  EXPECT_EQ(manage().querySpeedWithServiceID("B"), 56'000u);
  state("B", "PPP").set("Status", 7);
  EXPECT_EQ(manage().querySpeedWithServiceID("B"), 56'000u);
  state("B", "PPP").set("Status", 8);
  EXPECT_EQ(manage().querySpeedWithServiceID("B"), 48'000u);
}

TEST_F(Queries, AModemWithoutASpeedHasItsHighestOneWhichIsNotKept) {
  state("B", "Modem");
  state("B", "PPP").set("Status", 8);
  EXPECT_EQ(manage().querySpeedWithServiceID("B"), 56'000u);
  state("B", "Modem").set("ConnectSpeed", 48'000);
  EXPECT_EQ(manage().querySpeedWithServiceID("B"), 48'000u);
}

TEST_F(Queries, AModemsSpeedMayBeAnyNumber) {
  state("B", "PPP").set("Status", 8);
  const std::vector<std::pair<Value, std::uint64_t>> speeds = {
      {48'000.9, 48'000},
      {1e300, std::numeric_limits<std::uint64_t>::max()},
      {-1.5, 0},
      {std::int64_t{-7}, 0},
      {std::nan(""), 0},
      {0, 0},
      {std::uint64_t{1} << 40, std::uint64_t{1} << 40}};
  for (const auto& [held, speed] : speeds) {
    state("B", "Modem").set("ConnectSpeed", held);
    EXPECT_EQ(manage().querySpeedWithServiceID("B"), speed);
    change();
  }
  state("B", "Modem").set("ConnectSpeed", "48000");
  EXPECT_EQ(manage().querySpeedWithServiceID("B"), 56'000u) << "no number";
}

TEST_F(Queries, AnInterfacesSpeedIsTheLinksOrTheUsual) {
  interfaces.speeds["en7"] = 1'000'000'000;
  EXPECT_EQ(manage().speedForInterfaceName("en7"), 1'000'000'000u);
  EXPECT_EQ(manage().speedForInterfaceName("en8"), 10'000'000u);
  EXPECT_EQ(manage().speedForInterfaceName(std::nullopt), 10'000'000u);
}

}  // namespace
}  // namespace vantile::testing
