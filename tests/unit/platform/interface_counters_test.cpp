#include "vantile/platform/linux/interface_counters.h"

#include <gtest/gtest.h>
#include <linux/rtnetlink.h>

#include <algorithm>

#include "fakes/fake_netlink.h"
#include "unit/platform/fixture.h"

namespace vantile {
namespace {

using testing::countersPayload;
using testing::FakeNetlink;
using testing::fixture;
using testing::linkPayload;
using testing::message;

constexpr std::uint32_t up = 1, loopback = 8;

struct CountersOfAFake : ::testing::Test {
  CountersOfAFake() {
    links({linkPayload(1, "lo", up | loopback, 772), linkPayload(2, "eth0", up)});
    counters({countersPayload(1, 10, 11), countersPayload(2, 1ull << 33, 21)});
  }

  void links(std::vector<std::string> payloads) {
    kernel.answers[RTM_GETLINK] = FakeNetlink::list(RTM_NEWLINK, std::move(payloads));
  }
  void counters(std::vector<std::string> payloads, std::uint16_t endFlags = 0) {
    kernel.answers[RTM_GETSTATS] = FakeNetlink::list(RTM_NEWSTATS, std::move(payloads), endFlags);
  }
  std::vector<InterfaceReading> read() {
    const bool succeeded = reader.read(into);
    EXPECT_TRUE(succeeded);
    if (!succeeded) return {};
    return {into.readings.begin(), into.readings.begin() + static_cast<std::ptrdiff_t>(into.count)};
  }
  std::vector<std::string> names() {
    std::vector<std::string> all;
    for (const auto& each : read()) all.push_back(each.name);
    return all;
  }
  auto asked(std::uint16_t type) const {
    return std::count(kernel.requests.begin(), kernel.requests.end(), type);
  }

  FakeNetlink kernel;
  LinuxInterfaceCounters reader{kernel.opener()};
  InterfaceReadings into;
};

using Names = std::vector<std::string>;

TEST_F(CountersOfAFake, HaveTheNamesAndFlagsOfTheirLinks) {
  const auto all = read();
  EXPECT_EQ(into.width, CounterWidth::bits64);
  ASSERT_EQ(all.size(), 2u);
  EXPECT_EQ(all[0], (InterfaceReading{"lo", 1, true, true, 10, 11}));
  EXPECT_EQ(all[1], (InterfaceReading{"eth0", 2, false, true, 1ull << 33, 21}));
}

TEST_F(CountersOfAFake, ASteadyReadIsOneListAndOneEmptyLookAtTheEvents) {
  read();
  kernel.requests.clear();
  kernel.receives = 0;
  read();
  EXPECT_EQ(kernel.requests, std::vector<std::uint16_t>{RTM_GETSTATS});
  EXPECT_EQ(kernel.receives, 1 + 2);  // the fake ends its lists in a datagram of its own
  EXPECT_EQ(kernel.opened, 2);
}

TEST_F(CountersOfAFake, TheStorageIsUsedAgain) {
  read();
  const auto* const storage = into.readings.data();
  counters({countersPayload(2, 5, 6)});
  EXPECT_EQ(names(), Names{"eth0"});
  EXPECT_EQ(into.readings.size(), 2u);
  EXPECT_EQ(into.readings.data(), storage);
}

TEST_F(CountersOfAFake, ARenamedLinkHasItsNewName) {
  read();
  kernel.tell(message(RTM_NEWLINK, linkPayload(2, "lan0", up)));
  EXPECT_EQ(names(), (Names{"lo", "lan0"}));
  EXPECT_EQ(asked(RTM_GETLINK), 1);
}

TEST_F(CountersOfAFake, ALinkThatGoesDownIsNotUp) {
  read();
  kernel.tell(message(RTM_NEWLINK, linkPayload(2, "eth0", 0)));
  EXPECT_FALSE(read().at(1).up);
}

TEST_F(CountersOfAFake, ALinkThatIsMadeAnewHasItsOwnIndex) {
  read();
  kernel.tell(message(RTM_DELLINK, linkPayload(2, "eth0", 0)) +
              message(RTM_NEWLINK, linkPayload(7, "eth0", up)));
  counters({countersPayload(1, 10, 11), countersPayload(7, 1, 2)});
  EXPECT_EQ(read().at(1), (InterfaceReading{"eth0", 7, false, true, 1, 2}));
}

TEST_F(CountersOfAFake, APortThatLeavesItsBridgeStays) {
  read();
  auto port = linkPayload(2, "eth0", up);
  port[0] = 7;  // AF_BRIDGE
  kernel.tell(message(RTM_DELLINK, port));
  EXPECT_EQ(names(), (Names{"lo", "eth0"}));
}

TEST_F(CountersOfAFake, AfterAnOverrunTheLinksAreListedAnew) {
  read();
  links({linkPayload(1, "lo", up | loopback, 772), linkPayload(2, "renamed", up)});
  kernel.events.emplace_back(NetlinkChannel::Outcome::overrun, "");
  kernel.tell(message(RTM_NEWLINK, linkPayload(2, "between", up)));  // older than the loss
  EXPECT_EQ(names(), (Names{"lo", "renamed"}));
  EXPECT_EQ(asked(RTM_GETLINK), 2);
}

TEST_F(CountersOfAFake, ALinkThatCameMeanwhileIsLookedAtOnceMore) {
  read();
  counters({countersPayload(1, 10, 11), countersPayload(2, 20, 21), countersPayload(3, 30, 31)});
  kernel.onRequest = [this](std::uint16_t) {
    kernel.onRequest = nullptr;
    kernel.tell(message(RTM_NEWLINK, linkPayload(3, "wlan0", up)));
  };
  EXPECT_EQ(names(), (Names{"lo", "eth0", "wlan0"}));
}

TEST_F(CountersOfAFake, ALinkThatStaysUnknownIsLeftOut) {
  counters({countersPayload(9, 1, 1), countersPayload(2, 20, 21)});
  EXPECT_EQ(names(), Names{"eth0"});
  EXPECT_EQ(asked(RTM_GETSTATS), 2);
}

TEST_F(CountersOfAFake, AListThatChangedMeanwhileIsAskedForAgainButNotForEver) {
  counters({countersPayload(2, 20, 21)}, NLM_F_DUMP_INTR);
  EXPECT_EQ(names(), Names{"eth0"});
  EXPECT_EQ(asked(RTM_GETSTATS), NetlinkLister::attempts);
}

TEST_F(CountersOfAFake, AnOldKernelHasThemWithItsLinks) {
  kernel.answers[RTM_GETSTATS] = FakeNetlink::refusal(EOPNOTSUPP);
  const auto bytes = [](std::uint64_t in, std::uint64_t out) {
    return testing::attribute(23, testing::counterBytes(in, out));
  };
  links({linkPayload(1, "lo", up | loopback, 772, bytes(10, 11)),
         linkPayload(2, "eth0", 0, 1, bytes(1ull << 33, 21)), linkPayload(3, "odd", up)});
  const auto all = read();
  ASSERT_EQ(all.size(), 2u);
  EXPECT_EQ(all[0], (InterfaceReading{"lo", 1, true, true, 10, 11}));
  EXPECT_EQ(all[1], (InterfaceReading{"eth0", 2, false, false, 1ull << 33, 21}));
  kernel.requests.clear();
  read();
  EXPECT_EQ(kernel.requests, std::vector<std::uint16_t>{RTM_GETLINK});
}

TEST_F(CountersOfAFake, WhatIsLeftOfAnotherAnswerIsPassedOver) {
  kernel.answers[RTM_GETSTATS] = [](std::uint32_t sequence, std::string_view) {
    return std::vector{message(RTM_NEWSTATS, countersPayload(1, 1, 1), 2, sequence - 1),
                       testing::endOfList(sequence - 1),
                       message(RTM_NEWSTATS, countersPayload(2, 20, 21), 2, sequence),
                       testing::endOfList(sequence)};
  };
  EXPECT_EQ(names(), Names{"eth0"});
}

TEST_F(CountersOfAFake, AreRefusedWhereTheKernelDoesNotAnswer) {
  kernel.answers.erase(RTM_GETSTATS);
  EXPECT_FALSE(reader.read(into));
  kernel.answers[RTM_GETSTATS] = FakeNetlink::refusal(EPERM);
  EXPECT_FALSE(reader.read(into));
  kernel.answers[RTM_GETSTATS] = [](std::uint32_t, std::string_view) {
    return std::vector<std::string>();
  };
  EXPECT_FALSE(reader.read(into));
}

TEST_F(CountersOfAFake, AreAskedForAnewAfterARefusal) {
  kernel.opens = false;
  EXPECT_FALSE(reader.read(into));
  kernel.opens = true;
  EXPECT_EQ(names(), (Names{"lo", "eth0"}));
  kernel.events.emplace_back(NetlinkChannel::Outcome::failed, "");
  EXPECT_FALSE(reader.read(into));
  links({linkPayload(2, "renamed", up)});
  EXPECT_EQ(names(), Names{"renamed"});
  EXPECT_EQ(kernel.openNow, 2);
}

TEST_F(CountersOfAFake, RecordedAnswersOfTheKernelAgree) {
  const auto whole = [](const std::string& name) {
    return [name](std::uint32_t sequence, std::string_view) {
      auto bytes = fixture(name);
      for (std::size_t at = 0; at + 16 <= bytes.size();) {
        std::uint32_t size = 0;
        std::memcpy(&size, bytes.data() + at, sizeof size);
        std::memcpy(bytes.data() + at + 8, &sequence, sizeof sequence);
        at += (size + 3) / 4 * 4;
      }
      return std::vector{bytes};
    };
  };
  kernel.answers[RTM_GETLINK] = whole("netlink-links.bin");
  kernel.answers[RTM_GETSTATS] = whole("netlink-counters.bin");
  const auto byCounters = read();
  EXPECT_EQ(byCounters.size(), 6u);
  kernel.answers[RTM_GETSTATS] = FakeNetlink::refusal(EOPNOTSUPP);
  EXPECT_EQ(read(), byCounters);
}

}  // namespace
}  // namespace vantile
