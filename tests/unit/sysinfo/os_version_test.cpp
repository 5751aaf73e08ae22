#include <gtest/gtest.h>

#include "vantile/sysinfo/system_info.h"

#include "fakes/fake_system_info_ports.h"

namespace vantile {
namespace {

struct OsVersion : ::testing::Test {
  KVDSystemInfo::Text of(const std::string& release, const std::string& build = "13E28") {
    ports.entries->texts = {{"kern.osrelease", release}, {"kern.osversion", build}};
    return info->getOSVersionInfo();
  }

  testing::FakeSystemInfoPorts ports;
  const std::shared_ptr<KVDSystemInfo> info = KVDSystemInfo::init();
};

TEST_F(OsVersion, FollowsFromTheKernelsReleaseAndBuild) {
  EXPECT_EQ(of("13.4.0"), "10.9.4 (13E28)");
}

TEST_F(OsVersion, IsFourLessThanTheKernelsReleaseAndTenAlwaysAlsoOnLaterSystems) {
  EXPECT_EQ(of("20.1.0", "20B29"), "10.16.1 (20B29)");
  EXPECT_EQ(of("3.1.0"), "10.-1.1 (13E28)");
}

TEST_F(OsVersion, IsNilWithoutAReleaseOrABuild) {
  ports.entries->texts = {{"kern.osrelease", "13.4.0"}};
  EXPECT_EQ(info->getOSVersionInfo(), std::nullopt);
  ports.entries->texts = {{"kern.osversion", "13E28"}};
  EXPECT_EQ(info->getOSVersionInfo(), std::nullopt);
}

TEST_F(OsVersion, IsNilOfAReleaseOfOnePiece) {
  EXPECT_EQ(of("13"), std::nullopt);
  EXPECT_EQ(of(""), std::nullopt);
}

TEST_F(OsVersion, IsNilWithoutPieces) {
  ports.pieces->givesNoPieces = true;
  EXPECT_EQ(of("13.4.0"), std::nullopt);
}

TEST_F(OsVersion, TakesTheSecondPieceAsItIs) {
  EXPECT_EQ(of("13-x y.0"), "10.9.x y (13E28)");
  EXPECT_EQ(of("13..4"), "10.9. (13E28)");
  EXPECT_EQ(of("13.\xFF"), "10.9.\xFF (13E28)");
}

TEST_F(OsVersion, ReadsTheNumberThatTheReleaseBeginsWith) {
  EXPECT_EQ(of(" \t\n13x.4"), "10.9.4 (13E28)");
  EXPECT_EQ(of("+13.4"), "10.9.4 (13E28)");
  EXPECT_EQ(of("+ 13.4"), "10.-4.4 (13E28)");
}

TEST_F(OsVersion, CountsWhatIsNoNumberAsZero) {
  EXPECT_EQ(of(".4"), "10.-4.4 (13E28)");
  EXPECT_EQ(of("x13.4"), "10.-4.4 (13E28)");
  EXPECT_EQ(of("\xFF.4"), "10.-4.4 (13E28)");
}

TEST_F(OsVersion, OfAReleaseThatThirtyTwoBitsCantHoldGoesByTheLargestNumber) {
  EXPECT_EQ(of("2147483647.4"), "10.2147483643.4 (13E28)");
  EXPECT_EQ(of("2147483648.4"), "10.2147483643.4 (13E28)");
  EXPECT_EQ(of(std::string(400, '9') + ".4"), "10.2147483643.4 (13E28)");
}

TEST_F(OsVersion, AnEmptyBuildLeavesEmptyBrackets) {
  EXPECT_EQ(of("13.4.0", ""), "10.9.4 ()");
}

TEST_F(OsVersion, IsTheSystemsOwnTextWhereItHasOne) {
  ports.facts->version = "Debian GNU/Linux 12 (bookworm)";
  ports.log.clear();
  EXPECT_EQ(of("13.4.0"), "Debian GNU/Linux 12 (bookworm)");
  EXPECT_EQ(ports.log, std::vector<std::string>{"versionText"});
}

}  // namespace
}  // namespace vantile
