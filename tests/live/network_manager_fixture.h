#pragma once

#include <gtest/gtest.h>

#include <algorithm>
#include <chrono>
#include <functional>
#include <memory>
#include <string>

#include "vantile/foundation/run_loop.h"
#include "vantile/platform/linux/network_manager.h"

#include "live/private_bus.h"

namespace vantile::testing {

using namespace std::chrono_literals;

/// A client of a NetworkManager of the test's own, on a bus of its own.
struct FollowedNetworkManager : ::testing::Test {
  void SetUp() override {
    if (!PrivateBus::isPossible()) GTEST_SKIP() << "no dbus-daemon, gdbus or python3-dbusmock";
  }
  void startAll() {
    bus.start();
    bus.startManager();
  }
  void follow() {
    client = followNetworkManager(bus.address(), [this] { ++changes; });
    ASSERT_TRUE(client);
  }

  using Clock = std::chrono::steady_clock;

  /// The connections in their order: each one's name, "@" and its device where it has one, "*"
  /// where it is active.
  std::string told() const {
    std::string all;
    for (const auto& each : client->connections()) {
      all += (&each == &client->connections().front() ? "" : " ") + each.name;
      if (!each.device.empty()) all += "@" + each.device;
      if (each.active) all += "*";
    }
    return all;
  }

  /// Serves the loop until that holds, for so long at most.
  static bool until(const std::function<bool()>& holds, std::chrono::seconds atMost = 20s) {
    auto& loop = RunLoop::current();
    bool held = false;
    const auto look = loop.every(5ms, [&] {
      held = holds();
      if (held) loop.stop();
    });
    const auto end = loop.after(atMost, [&] { loop.stop(); });
    loop.run();
    return held;
  }
  static void serve(std::chrono::milliseconds time) {
    const auto end = RunLoop::current().after(time, [] { RunLoop::current().stop(); });
    RunLoop::current().run();
  }
  /// The longest that a timer of 10 ms had to wait while the loop was served for that time.
  static std::chrono::milliseconds longestWait(std::chrono::milliseconds time) {
    auto last = Clock::now();
    Clock::duration longest{};
    const auto tick = RunLoop::current().every(10ms, [&] {
      longest = std::max(longest, Clock::now() - last);
      last = Clock::now();
    });
    serve(time);
    longest = std::max(longest, Clock::now() - last);
    return std::chrono::duration_cast<std::chrono::milliseconds>(longest);
  }
  ::testing::AssertionResult becomes(const std::string& expected) const {
    if (until([&] { return told() == expected; })) return ::testing::AssertionSuccess();
    return ::testing::AssertionFailure() << "it stayed: " << told();
  }

  PrivateBus bus;
  int changes = 0;
  std::unique_ptr<NetworkManagerClient> client;
};

inline constexpr const char* home =
    "'id': <'Home'>, 'uuid': <'u-home'>, 'type': <'802-11-wireless'>";
inline constexpr const char* wired =
    "'id': <'Wired'>, 'uuid': <'u-wired'>, 'type': <'802-3-ethernet'>";
inline constexpr const char* modem = "'id': <'Modem'>, 'uuid': <'u-modem'>, 'type': <'ppp'>";

}  // namespace vantile::testing
