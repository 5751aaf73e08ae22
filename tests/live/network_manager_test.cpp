// NetworkManager's connections as a NetworkManager of the test's own tells them.

#include <gtest/gtest.h>

#include <string>

#include "live/network_manager_fixture.h"

namespace vantile {
namespace {

using namespace testing;

using LiveNetworkManager = FollowedNetworkManager;

TEST_F(LiveNetworkManager, ConnectionsComeWithTheirNamesInNetworkManagersOrder) {
  startAll();
  bus.add(home + std::string(", 'timestamp': <uint64 20>"));
  bus.add(wired + std::string(", 'timestamp': <uint64 30>, 'interface-name': <'eth0'>"));
  bus.add(modem + std::string(", 'timestamp': <uint64 10>, 'autoconnect-priority': <1>"));
  follow();
  EXPECT_TRUE(client->connections().empty());
  ASSERT_TRUE(becomes("Modem Wired@eth0 Home"));
  EXPECT_EQ(client->connections()[0], (ManagedConnection{"u-modem", "Modem", "", "ppp", false}));
  EXPECT_EQ(changes, 1);
}

TEST_F(LiveNetworkManager, AChangedConnectionIsTold) {
  startAll();
  const auto path = bus.add(home + std::string(", 'timestamp': <uint64 20>"));
  bus.add(wired + std::string(", 'timestamp': <uint64 30>"));
  follow();
  ASSERT_TRUE(becomes("Wired Home"));
  bus.update(path, "'id': <'Cottage'>, 'timestamp': <uint64 40>");
  EXPECT_TRUE(becomes("Cottage Wired"));
  EXPECT_EQ(changes, 2);
}

TEST_F(LiveNetworkManager, AnUpdateThatChangesNothingToldIsNotTold) {
  startAll();
  const auto path = bus.add(home);
  follow();
  ASSERT_TRUE(becomes("Home"));
  bus.update(path, "'id': <'Home'>, 'autoconnect': <false>");
  serve(500ms);
  EXPECT_EQ(changes, 1);
}

TEST_F(LiveNetworkManager, AnAddedAndARemovedConnectionAreTold) {
  startAll();
  const auto path = bus.add(home + std::string(", 'timestamp': <uint64 20>"));
  follow();
  ASSERT_TRUE(becomes("Home"));
  bus.add(wired + std::string(", 'timestamp': <uint64 10>"));
  ASSERT_TRUE(becomes("Home Wired"));
  bus.remove(path);
  EXPECT_TRUE(becomes("Wired"));
}

TEST_F(LiveNetworkManager, AConnectionIsFollowedIntoUseAndOutOfIt) {
  startAll();
  const auto device = bus.addDevice("ttyUSB0");
  const auto path = bus.add(modem + std::string(", 'interface-name': <'ppp9'>"));
  follow();
  ASSERT_TRUE(becomes("Modem@ppp9"));
  const auto active = bus.activate(path, device);
  ASSERT_TRUE(becomes("Modem@ttyUSB0*"));
  bus.set(device, "Device", "{'IpInterface': <'ppp0'>}");
  ASSERT_TRUE(becomes("Modem@ppp0*"));
  bus.set(active, "Connection.Active", "{'State': <uint32 3>}");
  ASSERT_TRUE(becomes("Modem@ppp0"));
  bus.deactivate(active);
  EXPECT_TRUE(becomes("Modem@ppp9"));
}

TEST_F(LiveNetworkManager, OneThatIsInUseFromTheStartIsActive) {
  startAll();
  const auto device = bus.addDevice("eth7");
  bus.activate(bus.add(wired + std::string(", 'timestamp': <uint64 5>")), device);
  follow();
  EXPECT_TRUE(becomes("Wired@eth7*"));
}

TEST_F(LiveNetworkManager, ComingIntoUseCountsAsTheLatestUse) {
  startAll();
  const auto device = bus.addDevice("eth7");
  const auto path = bus.add(wired + std::string(", 'timestamp': <uint64 20>"));
  bus.add(home + std::string(", 'timestamp': <uint64 30>"));
  // NetworkManager notes a use without telling of it.
  bus.define("NoteUse", "''",
             "objects['" + path + "'].settings['connection']['timestamp'] = dbus.UInt64(40)");
  follow();
  ASSERT_TRUE(becomes("Home Wired"));
  ASSERT_EQ(bus.settings("NoteUse").status, 0);
  bus.activate(path, device);
  EXPECT_TRUE(becomes("Wired@eth7* Home"));
}

TEST_F(LiveNetworkManager, ABurstOfChangesIsToldTogether) {
  startAll();
  const auto path = bus.add(home);
  bus.define("Shake", "''",
             R"(
from gi.repository import GLib
def shake(one=objects[')" +
                 path + R"('], names=['Home %d' % i for i in range(10)]):
  one.settings['connection']['id'] = names.pop(0)
  one.EmitSignal('org.freedesktop.NetworkManager.Settings.Connection', 'Updated', '', [])
  return len(names) > 0
GLib.timeout_add(5, shake))");
  follow();
  ASSERT_TRUE(becomes("Home"));
  ASSERT_EQ(bus.settings("Shake").status, 0);
  EXPECT_TRUE(becomes("Home 9"));
  serve(200ms);
  EXPECT_LE(changes, 1 + 4);  // one or two, but a busy machine draws them out
}

TEST_F(LiveNetworkManager, WhatIsNotNetworkManagersIsNotBelieved) {
  startAll();
  const auto path = bus.add(home);
  follow();
  ASSERT_TRUE(becomes("Home"));
  const auto names = bus.call("org.freedesktop.DBus", "/", "org.freedesktop.DBus.ListNames").text;
  int told = 0;
  for (int number = 0; number < 30; ++number) {
    const auto name = ":1." + std::to_string(number);
    if (names.find("'" + name + "'") == std::string::npos) continue;
    told += run("gdbus emit --address " + bus.address() + " --dest " + name +
                " --object-path /org/freedesktop/NetworkManager/Settings --signal "
                "org.freedesktop.NetworkManager.Settings.ConnectionRemoved " +
                quoted("objectpath '" + path + "'"))
                .status == 0;
  }
  EXPECT_GE(told, 2);  // NetworkManager and the client at least
  serve(500ms);
  EXPECT_EQ(changes, 1);
}

TEST_F(LiveNetworkManager, HostileSettingsLeaveTheOthersAlone) {
  startAll();
  bus.add(home);
  bus.add("'id': <uint32 7>, 'uuid': <'u-1'>, 'type': <['a']>, 'timestamp': <'later'>");
  bus.add("'id': <'nobody'>, 'uuid': <(1, 2)>");
  bus.add("'id': <'nobody'>, 'uuid': <''>");
  bus.add("'uuid': <'u-0'>, 'id': <'" + std::string(60'000, 'x') + "'>");
  follow();
  ASSERT_TRUE(until([this] { return client->connections().size() == 3; }));
  EXPECT_EQ(told(), "  Home");
  serve(200ms);
  EXPECT_EQ(changes, 1);
}

TEST_F(LiveNetworkManager, MoreConnectionsThanAnybodyHasAreBounded) {
  startAll();
  bus.keepMany(4200);
  follow();
  EXPECT_LT(longestWait(3000ms), 2000ms);
  EXPECT_TRUE(until([this] { return !client->connections().empty(); }, 60s));
  EXPECT_EQ(client->connections().size(), 4096u);
}

}  // namespace
}  // namespace vantile
