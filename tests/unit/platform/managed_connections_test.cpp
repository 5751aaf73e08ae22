#include "vantile/platform/linux/managed_connections.h"

#include <gtest/gtest.h>

#include "vantile/platform/linux/retry_pace.h"

namespace vantile {
namespace {

using namespace std::chrono_literals;

struct ManagedConnections : ::testing::Test {
  ConnectionSettings& keep(const std::string& path, const std::string& uuid) {
    auto& settings = objects.connections[path];
    settings.uuid = uuid;
    settings.name = "The " + uuid;
    settings.type = "802-3-ethernet";
    return settings;
  }
  void use(const std::string& path, const std::string& connection, const std::string& device,
           ActiveState state = ActiveState::activated) {
    objects.activePaths.push_back(path);
    objects.active[path] = {connection, device, state};
  }
  std::string uuids() const {
    std::string all;
    for (const auto& each : managedConnections(objects)) all += each.uuid + " ";
    return all;
  }
  ManagedConnection only() const {
    const auto all = managedConnections(objects);
    EXPECT_EQ(all.size(), 1u);
    return all.empty() ? ManagedConnection() : all.front();
  }

  NetworkManagerObjects objects;
};

TEST_F(ManagedConnections, TheHighestAutoconnectPriorityComesFirst) {
  keep("/1", "low").autoconnectPriority = -5;
  keep("/2", "none");
  keep("/3", "high").autoconnectPriority = 7;
  EXPECT_EQ(uuids(), "high none low ");
}

TEST_F(ManagedConnections, OfOnePriorityTheLatestUsedComesFirst) {
  keep("/1", "never");
  keep("/2", "long ago").timestamp = 1'000;
  keep("/3", "lately").timestamp = 1'700'000'000;
  EXPECT_EQ(uuids(), "lately long ago never ");
}

TEST_F(ManagedConnections, APriorityGoesBeforeALaterUse) {
  keep("/1", "later").timestamp = 2;
  auto& prior = keep("/2", "prior");
  prior.autoconnectPriority = 1;
  prior.timestamp = 1;
  EXPECT_EQ(uuids(), "prior later ");
}

TEST_F(ManagedConnections, WhereNothingElseTellsThemApartTheUuidDoes) {
  keep("/1", "b");
  keep("/2", "a");
  EXPECT_EQ(uuids(), "a b ");
}

TEST_F(ManagedConnections, ExtremesOfPriorityAndTimeAreOrderedToo) {
  keep("/1", "lowest").autoconnectPriority = INT32_MIN;
  keep("/2", "highest").autoconnectPriority = INT32_MAX;
  keep("/3", "latest").timestamp = UINT64_MAX;
  EXPECT_EQ(uuids(), "highest latest lowest ");
}

TEST_F(ManagedConnections, OneWithoutAUuidHasNotBeenToldYet) {
  objects.connections["/1"].name = "Nobody's";
  EXPECT_TRUE(managedConnections(objects).empty());
}

TEST_F(ManagedConnections, OfSeveralWithOneUuidTheFirstStays) {
  keep("/1", "same").name = "older";
  auto& other = keep("/2", "same");
  other.name = "newer";
  other.timestamp = 1;
  EXPECT_EQ(only().name, "newer");
}

TEST_F(ManagedConnections, AnEmptyNameStaysEmpty) {
  keep("/1", "a").name.clear();
  EXPECT_EQ(only().name, "");
}

TEST_F(ManagedConnections, OneInUseIsActiveOnItsDevice) {
  keep("/1", "a").interfaceName = "eth0";
  use("/active/1", "/1", "/device/1");
  objects.deviceNames["/device/1"] = "eth7";
  EXPECT_EQ(only(), (ManagedConnection{"a", "The a", "eth7", "802-3-ethernet", true}));
}

TEST_F(ManagedConnections, OneThatIsNotInUseIsOnTheInterfaceThatItIsBoundTo) {
  keep("/1", "a").interfaceName = "eth0";
  EXPECT_EQ(only(), (ManagedConnection{"a", "The a", "eth0", "802-3-ethernet", false}));
}

TEST_F(ManagedConnections, OneThatIsBoundToNothingHasNoDevice) {
  keep("/1", "a");
  EXPECT_EQ(only().device, "");
}

TEST_F(ManagedConnections, WhileItComesUpOrGoesDownItHasItsDeviceButIsNotActive) {
  keep("/1", "a");
  objects.deviceNames["/device/1"] = "eth7";
  use("/active/1", "/1", "/device/1");
  for (const auto state : {ActiveState::activating, ActiveState::deactivating}) {
    objects.active["/active/1"].state = state;
    EXPECT_EQ(only().device, "eth7");
    EXPECT_FALSE(only().active);
  }
}

TEST_F(ManagedConnections, AUseThatIsOverOrUnknownIsNone) {
  keep("/1", "a");
  objects.deviceNames["/device/1"] = "eth7";
  use("/active/1", "/1", "/device/1");
  for (const auto state :
       {ActiveState::unknown, ActiveState::deactivated, static_cast<ActiveState>(77)}) {
    objects.active["/active/1"].state = state;
    EXPECT_EQ(only().device, "");
    EXPECT_FALSE(only().active);
  }
}

TEST_F(ManagedConnections, ADeviceWithoutANameLeavesTheInterfaceThatItIsBoundTo) {
  keep("/1", "a").interfaceName = "eth0";
  use("/active/1", "/1", "/device/1");
  EXPECT_EQ(only().device, "eth0");
  objects.deviceNames["/device/1"] = "";
  EXPECT_EQ(only().device, "eth0");
  EXPECT_TRUE(only().active);
}

TEST_F(ManagedConnections, OfSeveralUsesTheActivatedOneCountsElseTheFirst) {
  keep("/1", "a");
  objects.deviceNames = {{"/d1", "one"}, {"/d2", "two"}, {"/d3", "three"}};
  use("/z", "/1", "/d1", ActiveState::activating);
  use("/y", "/1", "/d2", ActiveState::activating);
  EXPECT_EQ(only().device, "one");
  use("/x", "/1", "/d3");
  use("/w", "/1", "/d2");
  EXPECT_EQ(only().device, "three");
}

TEST_F(ManagedConnections, AUseOfAConnectionThatIsNotKnownMakesNone) {
  use("/active/1", "/elsewhere", "/device/1");
  objects.activePaths.push_back("/active/unknown");
  EXPECT_TRUE(managedConnections(objects).empty());
}

TEST(DeviceName, IsThatOfTheInterfaceThatCarriesIpWhereThereIsOne) {
  EXPECT_EQ(deviceName("ttyUSB0", "ppp0"), "ppp0");
  EXPECT_EQ(deviceName("eth0", ""), "eth0");
}

TEST(RetryPaceOf, ASecondTwiceAsLongEachTimeAndAMinuteAtMost) {
  RetryPace pace;
  for (const auto wait : {1s, 2s, 4s, 8s, 16s, 32s, 60s, 60s}) EXPECT_EQ(pace.next(), wait);
  pace.restart();
  EXPECT_EQ(pace.next(), 1s);
}

}  // namespace
}  // namespace vantile
