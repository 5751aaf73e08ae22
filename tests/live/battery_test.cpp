// Batteries and chargers that umockdev puts before a program of its own, with change events.

#include <gtest/gtest.h>
#include <linux/netlink.h>
#include <sys/socket.h>
#include <unistd.h>

#include <map>
#include <memory>
#include <string>
#include <vector>

#include "vantile/platform/linux/power_sources.h"

#include "fakes/temporary_folder.h"
#include "live/battery_helper.h"
#include "live/command.h"
#include "live/network_namespace.h"
#include "live/sanitized.h"

namespace vantile {
namespace {

using namespace std::chrono_literals;
using testing::run;

struct LiveBattery : ::testing::Test {
  void SetUp() override {
    if (testing::sanitized) GTEST_SKIP() << "what umockdev preloads comes before the sanitizer";
    if (run("umockdev-run --version").status != 0) GTEST_SKIP() << "no umockdev";
  }

  /// What the helper prints of that story.
  static std::string told(const std::string& story) {
    char self[4096] = {};
    EXPECT_GT(::readlink("/proc/self/exe", self, sizeof self - 1), 0);
    return run("umockdev-wrapper " + testing::quoted(self) + " " + testing::tellBattery + " " +
               testing::quoted(story))
        .text;
  }
};

TEST_F(LiveBattery, ADayIsToldInItsStates) {
  EXPECT_EQ(told("day"), R"(full: battery charged charged
unplugged: calculating 100
draining: remaining 4:00
still: remaining 4:00
low: remaining 1:00 left 20%
lower: remaining 0:45 left 15%
750 mAh, -10.00 W, 30.1 degrees, 213 cycles, Good
plugged: charging calculating
charging: charging remaining 1:16
half: charging remaining 1:13 left 51%
2550 mAh, 19.99 W, 30.1 degrees, 213 cycles, Good
full: battery charged charged
still full: battery charged
)");
}

TEST_F(LiveBattery, TwoBatteriesComeAndGo) {
  EXPECT_EQ(told("two"), R"(two: remaining 3:24 left 18% remaining 3:24
one went: remaining 0:54 left 18%
it is back: remaining 0:42 remaining 0:42 left 10%
both went:
no battery
)");
}

TEST_F(LiveBattery, OneThatIsRemovedWhileItIsReadLeavesTheOther) {
  EXPECT_EQ(told("removal"), "one was left\n");
}

TEST_F(LiveBattery, AMousesIsIgnored) {
  EXPECT_EQ(told("mouse"), R"(a mouse:
no battery
a battery, too: remaining 2:30
the mouse's changes are read and not told of: remaining 2:30
)");
}

TEST_F(LiveBattery, DriversTellEnergyOrChargeAndPowerOrCurrent) {
  EXPECT_EQ(told("drivers"), R"(energy without power: calculating 50
energy and current: remaining 2:05
2500 mAh, -12.00 W, 30.1 degrees, 213 cycles, Good
charge and current: remaining 4:00
2000 mAh, -4.00 W, 0.0 degrees, 0 cycles, Poor
charge by USB: charging remaining 2:00 left 60%
a USB supply that is offline: remaining 0:00
a USB supply that is online: charging remaining 2:00
2400 mAh, 6.40 W, 0.0 degrees, 0 cycles, Poor
)");
}

TEST_F(LiveBattery, WhereUdevdRunsItsEventsAreTold) {
  EXPECT_EQ(told("udevd"), "told\n");
}

TEST_F(LiveBattery, ABurstOfEventsIsOneUpdate) {
  EXPECT_EQ(told("burst"), R"(six events: remaining 2:30
one more: remaining 2:30
)");
}

TEST_F(LiveBattery, OneThatAnotherThreadLetsGoOfIsToldNothing) {
  EXPECT_EQ(told("let go"), "told\n");  // the one that stayed
}

/// What uevents the power supplies' subscription listens to: groups of netlink.
class LivePowerEvents : public ::testing::Test {
 protected:
  static constexpr unsigned fromKernel = 1, fromUdevd = 2;

  static std::vector<unsigned> groups(const LinuxRoots& roots) {
    const auto before = listeners();
    LinuxPowerSources sources(roots);
    const auto subscription = sources.subscribe([](void*) {}, nullptr);
    auto after = listeners();
    for (const auto& each : before) after.erase(each.first);
    std::vector<unsigned> found;
    for (const auto& [descriptor, heard] : after) found.push_back(heard);
    return found;
  }

  /// More events than the subscription's socket holds, none of a power supply.
  static void overflow() {
    constexpr int least = 1;  // byte, which the kernel makes a few thousand
    for (const auto& each : listeners())
      ::setsockopt(each.first, SOL_SOCKET, SO_RCVBUFFORCE, &least, sizeof least);
    for (int number = 0; number < 40; ++number)
      testing::addPair("a" + std::to_string(number), "b" + std::to_string(number));
  }

  const testing::TemporaryFolder folder;

  static std::map<int, unsigned> listeners() {
    std::map<int, unsigned> found;
    for (int descriptor = 0; descriptor < 1024; ++descriptor) {
      int protocol = 0;
      socklen_t size = sizeof protocol;
      sockaddr_nl address = {};
      socklen_t length = sizeof address;
      if (::getsockname(descriptor, reinterpret_cast<sockaddr*>(&address), &length) == 0 &&
          address.nl_family == AF_NETLINK &&
          ::getsockopt(descriptor, SOL_SOCKET, SO_PROTOCOL, &protocol, &size) == 0 &&
          protocol == NETLINK_KOBJECT_UEVENT)
        found[descriptor] = address.nl_groups;
    }
    return found;
  }
};

TEST_F(LivePowerEvents, OfWhichThereWereTooManyAreAChange) {
  testing::inNetworkNamespace([this] {
    LinuxPowerSources sources({.run = folder.path("run")});
    int told = 0;
    const auto subscription =
        sources.subscribe([](void* count) { ++*static_cast<int*>(count); }, &told);
    const auto isTold = [&told] { return told > 0; };
    testing::addPair("few", "fewer");  // no power supply
    EXPECT_FALSE(testing::comesToHold(isTold, 300ms));
    overflow();
    EXPECT_TRUE(testing::comesToHold(isTold));
    EXPECT_FALSE(testing::comesToHold([&told] { return told > 1; }, 300ms));
  });
}

TEST_F(LivePowerEvents, MayEndTheirSubscriptionAsTheyAreTold) {
  testing::inNetworkNamespace([this] {
    LinuxPowerSources sources({.run = folder.path("run")});
    std::unique_ptr<PowerSourceSubscription> subscription;
    subscription = sources.subscribe(
        [](void* its) { static_cast<std::unique_ptr<PowerSourceSubscription>*>(its)->reset(); },
        &subscription);
    overflow();
    EXPECT_TRUE(testing::comesToHold([&subscription] { return !subscription; }));
    EXPECT_TRUE(listeners().empty());
  });
}

TEST_F(LivePowerEvents, AreTheKernelsWhereUdevdDoesNotRun) {
  const auto heard = groups({.run = folder.path("run")});
  ASSERT_FALSE(heard.empty());
  for (const auto group : heard) EXPECT_EQ(group, fromKernel);
}

TEST_F(LivePowerEvents, AreUdevdsWhereItRuns) {
  folder.file("run/udev/control");
  const auto heard = groups({.run = folder.path("run")});
  ASSERT_FALSE(heard.empty());
  // libudev itself may find that there is no udevd, and then listens to nobody.
  const bool runs = ::access("/run/udev/control", F_OK) == 0;
  for (const auto group : heard) EXPECT_TRUE(group == fromUdevd || (!runs && group == 0)) << group;
}

}  // namespace
}  // namespace vantile
