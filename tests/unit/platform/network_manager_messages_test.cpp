// Messages are made on a connection whose other end never answers: a bus is not needed for them.

#include "vantile/platform/linux/network_manager_messages.h"

#include <gtest/gtest.h>
#include <sys/socket.h>
#include <unistd.h>

#include <memory>
#include <stdexcept>

namespace vantile {
namespace {

struct NetworkManagerMessages : ::testing::Test {
  struct Release {
    void operator()(sd_bus* bus) const { sd_bus_close_unref(bus); }
    void operator()(sd_bus_message* message) const { sd_bus_message_unref(message); }
  };
  using Message = std::unique_ptr<sd_bus_message, Release>;

  NetworkManagerMessages() {
    sd_bus* made = nullptr;
    int ends[2] = {-1, -1};
    if (sd_bus_new(&made) < 0 ||
        ::socketpair(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC | SOCK_NONBLOCK, 0, ends) != 0)
      throw std::runtime_error("no connection");
    bus.reset(made);
    otherEnd = ends[1];
    if (sd_bus_set_fd(made, ends[0], ends[0]) < 0 || sd_bus_start(made) < 0)
      throw std::runtime_error("no connection");
  }
  ~NetworkManagerMessages() override { ::close(otherEnd); }

  /// A message of those contents, as it arrives.
  template <class... Contents>
  Message message(const char* types, Contents... contents) const {
    sd_bus_message* made = nullptr;
    EXPECT_GE(sd_bus_message_new_signal(bus.get(), &made, "/a", "a.b", "C"), 0);
    Message owned(made);
    EXPECT_GE(sd_bus_message_append(made, types, contents...), 0);
    EXPECT_GE(sd_bus_message_seal(made, 1, 0), 0);
    EXPECT_GE(sd_bus_message_rewind(made, 1), 0);
    return owned;
  }

  std::unique_ptr<sd_bus, Release> bus;
  int otherEnd = -1;
};

TEST_F(NetworkManagerMessages, SettingsAreThoseOfTheSectionConnection) {
  const auto settings = readSettings(
      message("a{sa{sv}}", 3, "ipv4", 2, "id", "s", "not this", "dns", "au", 1, 17,  //
              "connection", 7, "id", "s", "Home", "uuid", "s", "u-1", "type", "s", "ppp",
              "permissions", "as", 2, "user:a:", "user:b:", "interface-name", "s", "eth0",
              "autoconnect-priority", "i", -3, "timestamp", "t", std::uint64_t{1'700'000'000},  //
              "proxy", 1, "id", "s", "nor this")
          .get());
  ASSERT_TRUE(settings);
  EXPECT_EQ(settings->name, "Home");
  EXPECT_EQ(settings->uuid, "u-1");
  EXPECT_EQ(settings->type, "ppp");
  EXPECT_EQ(settings->interfaceName, "eth0");
  EXPECT_EQ(settings->autoconnectPriority, -3);
  EXPECT_EQ(settings->timestamp, 1'700'000'000u);
}

TEST_F(NetworkManagerMessages, AValueOfAnotherTypeIsAbsentAndTheRestIsRead) {
  const auto settings =
      readSettings(message("a{sa{sv}}", 1, "connection", 6, "id", "u", 7, "type", "(si)", "a", 1,
                           "interface-name", "as", 1, "eth0", "autoconnect-priority", "u", 9,
                           "timestamp", "x", std::int64_t{5}, "uuid", "s", "u-1")
                       .get());
  ASSERT_TRUE(settings);
  EXPECT_EQ(settings->uuid, "u-1");
  EXPECT_EQ(settings->name + settings->type + settings->interfaceName, "");
  EXPECT_EQ(settings->autoconnectPriority, 0);
  EXPECT_EQ(settings->timestamp, 0u);
}

TEST_F(NetworkManagerMessages, ATextBeyondTheBoundIsAbsentAndOneWithinIsWhole) {
  const std::string longest(4096, 'x'), tooLong(4097, 'x');
  const auto settings = readSettings(message("a{sa{sv}}", 1, "connection", 2, "id", "s",
                                             longest.c_str(), "type", "s", tooLong.c_str())
                                         .get());
  ASSERT_TRUE(settings);
  EXPECT_EQ(settings->name, longest);
  EXPECT_EQ(settings->type, "");
}

TEST_F(NetworkManagerMessages, EmptyTextsAndNoSectionAreRead) {
  EXPECT_EQ(readSettings(message("a{sa{sv}}", 1, "connection", 1, "id", "s", "").get())->name, "");
  EXPECT_EQ(readSettings(message("a{sa{sv}}", 0).get())->uuid, "");
}

TEST_F(NetworkManagerMessages, WhatIsOfAnotherShapeIsNothing) {
  EXPECT_FALSE(readSettings(message("s", "hello").get()));
  EXPECT_FALSE(readSettings(message("").get()));
  EXPECT_FALSE(readSettings(message("a{sv}", 1, "connection", "s", "x").get()));
  EXPECT_FALSE(readActive(message("a{ss}", 1, "State", "x").get()));
  EXPECT_FALSE(readDeviceName(message("u", 1).get()));
  EXPECT_FALSE(readPaths(message("as", 1, "/a").get()));
  EXPECT_FALSE(readPathsProperty(message("v", "as", 1, "/a").get()));
  EXPECT_FALSE(readPathsProperty(message("ao", 1, "/a").get()));
  EXPECT_FALSE(readPath(message("s", "/a").get()));
  EXPECT_FALSE(tellsOf(message("a{sv}", 0).get(), {"A"}));
}

TEST_F(NetworkManagerMessages, AnErrorIsNothing) {
  sd_bus_message* call = nullptr;
  ASSERT_GE(sd_bus_message_new_method_call(bus.get(), &call, "a.b", "/a", "a.b", "C"), 0);
  const Message asked(call);
  ASSERT_GE(sd_bus_message_seal(call, 1, 0), 0);
  sd_bus_message* made = nullptr;
  ASSERT_GE(sd_bus_message_new_method_errorf(call, &made, "a.b.Failed", "no"), 0);
  const Message error(made);
  ASSERT_GE(sd_bus_message_seal(made, 2, 0), 0);
  EXPECT_FALSE(readPaths(made));
  EXPECT_FALSE(readPathsProperty(made));
  EXPECT_FALSE(readSettings(made));
  EXPECT_FALSE(readActive(made));
  EXPECT_FALSE(readDeviceName(made));
}

TEST_F(NetworkManagerMessages, PathsAreReadInTheirOrder) {
  using Paths = std::vector<std::string>;
  EXPECT_EQ(readPath(message("o", "/a/1").get()), "/a/1");
  EXPECT_EQ(readPaths(message("ao", 2, "/b", "/a").get()), (Paths{"/b", "/a"}));
  EXPECT_EQ(readPaths(message("ao", 0).get()), Paths());
  EXPECT_EQ(readPathsProperty(message("v", "ao", 2, "/b", "/a").get()), (Paths{"/b", "/a"}));
}

TEST_F(NetworkManagerMessages, AnActiveConnectionIsOnItsFirstDevice) {
  const auto active = readActive(message("a{sv}", 4, "Vpn", "b", 0, "Devices", "ao", 2, "/d/2",
                                         "/d/1", "State", "u", 2, "Connection", "o", "/c/1")
                                     .get());
  ASSERT_TRUE(active);
  EXPECT_EQ(active->connection, "/c/1");
  EXPECT_EQ(active->device, "/d/2");
  EXPECT_EQ(active->state, ActiveState::activated);
}

TEST_F(NetworkManagerMessages, AnActiveConnectionWithoutDeviceOrStateHasNone) {
  const auto active = readActive(
      message("a{sv}", 3, "Devices", "ao", 0, "State", "s", "2", "Connection", "s", "/c/1").get());
  ASSERT_TRUE(active);
  EXPECT_EQ(active->connection + active->device, "");
  EXPECT_EQ(active->state, ActiveState::unknown);
}

TEST_F(NetworkManagerMessages, ADeviceIsNamedAfterItsInterface) {
  EXPECT_EQ(readDeviceName(
                message("a{sv}", 2, "Interface", "s", "ttyUSB0", "IpInterface", "s", "ppp0").get()),
            "ppp0");
  EXPECT_EQ(readDeviceName(message("a{sv}", 1, "Interface", "s", "eth0").get()), "eth0");
}

TEST_F(NetworkManagerMessages, AChangeTellsOfPropertiesWithAndWithoutTheirValue) {
  const std::vector<std::string_view> both = {"A", "B"};
  EXPECT_TRUE(
      tellsOf(message("sa{sv}as", "i.f", 2, "X", "u", 1, "B", "ao", 1, "/a", 0).get(), both));
  EXPECT_TRUE(tellsOf(message("sa{sv}as", "i.f", 1, "X", "(ii)", 1, 2, 2, "Y", "A").get(), both));
  EXPECT_FALSE(tellsOf(message("sa{sv}as", "A", 1, "X", "s", "A", 1, "Y").get(), both));
}

}  // namespace
}  // namespace vantile
