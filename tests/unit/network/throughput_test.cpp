#include "unit/network/net_manage_fixture.h"

namespace vantile::testing {
namespace {

using Sample = std::shared_ptr<const Dictionary>;

class Throughput : public Manage {
 protected:
  Sample sample(double seconds = 1) { return manage().netStatsWithInterval(seconds); }
  /// An interface's entry; null where it has none.
  static const Dictionary* entry(const Sample& sample, std::string_view name) {
    const Value* const found = sample->find(name);
    return found ? found->as<std::shared_ptr<Dictionary>>()->get() : nullptr;
  }
  static bool isFirst(const Sample& sample, std::string_view name) {
    return !entry(sample, name)->contains("downlink_speed");
  }
  void counts(std::string_view name, std::uint64_t received, std::uint64_t sent) {
    interfaces[name].received = received;
    interfaces[name].sent = sent;
  }
};

TEST_F(Throughput, IsMeasuredFromTheSampleOfTheStart) {
  counts("en0", 100, 50);
  const auto now = (manage(), counts("en0", 400, 60), sample());
  EXPECT_EQ(entry(now, "en0")->uint64("downlink_speed"), 300u);
  EXPECT_EQ(entry(now, "en0")->uint64("uplink_speed"), 10u);
  EXPECT_EQ(entry(now, "en0")->uint64("total_in"), 400u);
  EXPECT_EQ(entry(now, "en0")->number("peak_speek"), 300.0);
}

TEST_F(Throughput, TheStartTakesOneSample) {
  EXPECT_EQ((manage(), interfaces.counterReads), 1);
}

TEST_F(Throughput, ANewInterfaceHasAFirstEntry) {
  manage();
  counts("en0", 100, 50);
  const auto first = sample();
  EXPECT_TRUE(isFirst(first, "en0"));
  EXPECT_EQ(entry(first, "en0")->uint64("total_in"), 100u);
  EXPECT_EQ(entry(first, "en0")->number("peak_speek"), 0.0);
  EXPECT_FALSE(isFirst(sample(), "en0"));
}

TEST_F(Throughput, AnInterfaceThatGoesAndComesBackBeginsAnew) {
  counts("en0", 100, 50);
  manage();
  counts("en0", 900, 50);
  EXPECT_EQ(entry(sample(), "en0")->number("peak_speek"), 800.0);
  interfaces.remove("en0");
  EXPECT_FALSE(entry(sample(), "en0"));
  counts("en0", 950, 50);
  const auto back = sample();
  EXPECT_TRUE(isFirst(back, "en0"));
  EXPECT_EQ(entry(back, "en0")->uint64("total_in"), 950u);
  EXPECT_EQ(entry(back, "en0")->number("peak_speek"), 0.0);
}

TEST_F(Throughput, ACounterThatWrapsGoesOn) {
  counts("en0", 4294967000, 0);
  manage();
  counts("en0", 200, 0);
  const auto now = sample();
  EXPECT_EQ(entry(now, "en0")->uint64("downlink_speed"), 496u);
  EXPECT_EQ(entry(now, "en0")->uint64("total_in"), 4294967496u);
  EXPECT_EQ(*entry(now, "en0")->find("if_in"), Value(200u));
}

TEST_F(Throughput, WithWideCountersMoreThanFourGibibytesAreRight) {
  interfaces.width = CounterWidth::bits64;
  counts("en0", 1000, 0);
  manage();
  counts("en0", 13'000'001'000, 0);
  const auto now = sample(2);
  EXPECT_EQ(entry(now, "en0")->uint64("downlink_speed"), 13'000'000'000u);
  EXPECT_EQ(*entry(now, "en0")->find("if_in"), Value(static_cast<std::uint32_t>(13'000'001'000)));
  EXPECT_EQ(entry(now, "en0")->number("peak_speek"), 6.5e9);
}

TEST_F(Throughput, WithWideCountersAnotherInterfaceOfTheNameBeginsAnew) {
  interfaces.width = CounterWidth::bits64;
  counts("en0", 1000, 0);
  manage();
  interfaces["en0"].index = 77;
  counts("en0", 2000, 0);
  EXPECT_TRUE(isFirst(sample(), "en0"));
  EXPECT_FALSE(isFirst(sample(), "en0"));
  counts("en0", 1999, 0);
  EXPECT_TRUE(isFirst(sample(), "en0")) << "its counter was made anew";
}

TEST_F(Throughput, AnInterfaceThatIsDownHasAFirstEntryEveryTime) {
  counts("en0", 100, 0);
  manage();
  counts("en0", 900, 0);
  sample();
  interfaces["en0"].up = false;
  for (const std::uint64_t received : {1000u, 1500u}) {
    counts("en0", received, 0);
    const auto now = sample();
    EXPECT_TRUE(isFirst(now, "en0"));
    EXPECT_EQ(entry(now, "en0")->uint64("total_in"), received);
    EXPECT_EQ(entry(now, "en0")->number("peak_speek"), 0.0);
  }
  interfaces["en0"].up = true;
  counts("en0", 1700, 0);
  EXPECT_EQ(entry(sample(), "en0")->uint64("downlink_speed"), 200u);
}

TEST_F(Throughput, TheLoopbackIsLeftOut) {
  interfaces["lo0"].loopback = true;
  counts("en0", 1, 1);
  const auto now = (manage(), sample());
  EXPECT_FALSE(now->contains("lo0"));
  EXPECT_EQ(now->size(), 1u);
}

TEST_F(Throughput, AnIntervalOfZeroLeavesThePeak) {
  counts("en0", 0, 0);
  manage();
  counts("en0", 700, 0);
  EXPECT_EQ(entry(sample(), "en0")->number("peak_speek"), 700.0);
  counts("en0", 9000, 0);
  const auto now = sample(0);
  EXPECT_EQ(entry(now, "en0")->number("peak_speek"), 700.0);
  EXPECT_EQ(entry(now, "en0")->uint64("downlink_speed"), 8300u);
}

TEST_F(Throughput, RefusedCountersGiveNothingAndTheNextSampleCoversTheGap) {
  counts("en0", 100, 0);
  manage();
  interfaces.refuses = true;
  counts("en0", 300, 0);
  EXPECT_FALSE(sample());
  interfaces.refuses = false;
  counts("en0", 600, 0);
  EXPECT_EQ(entry(sample(), "en0")->uint64("downlink_speed"), 500u);
}

TEST_F(Throughput, TotalsGoOnWhenTheConfigurationChanges) {
  counts("en0", 100, 0);
  manage();
  change();
  counts("en0", 150, 0);
  EXPECT_EQ(entry(sample(), "en0")->uint64("downlink_speed"), 50u);
}

TEST_F(Throughput, ALaterInterfaceOfTheSameNameTakesThePlaceOfTheEarlier) {
  counts("en0", 100, 0);
  manage();
  interfaces.readings.push_back({.name = "en0", .index = 9, .up = true, .received = 130});
  const auto now = sample();
  EXPECT_EQ(now->size(), 1u);
  EXPECT_EQ(entry(now, "en0")->uint64("downlink_speed"), 30u);
}

TEST_F(Throughput, TheOrderOfTheInterfacesMayChange) {
  counts("en0", 100, 0);
  counts("en1", 200, 0);
  counts("en2", 300, 0);
  manage();
  std::swap(interfaces.readings[0], interfaces.readings[2]);
  counts("en0", 101, 0);
  counts("en1", 202, 0);
  counts("en2", 303, 0);
  const auto now = sample();
  EXPECT_EQ(entry(now, "en0")->uint64("downlink_speed"), 1u);
  EXPECT_EQ(entry(now, "en1")->uint64("downlink_speed"), 2u);
  EXPECT_EQ(entry(now, "en2")->uint64("downlink_speed"), 3u);
}

TEST_F(Throughput, PppInterfacesAreCountedByTheDaemon) {
  daemonAnswers(statusReplies(8, 1000, 500) + statusReplies(8, 1700, 600));
  counts("ppp0", 5, 5);
  interfaces["ppp0"].up = false;  // its status is what counts
  interfaces.width = CounterWidth::bits64;
  const auto now = (manage(), sample());
  EXPECT_EQ(entry(now, "ppp0")->uint64("if_in"), 1700u);
  EXPECT_EQ(entry(now, "ppp0")->uint64("downlink_speed"), 700u);
  EXPECT_EQ(entry(now, "ppp0")->uint64("uplink_speed"), 100u);
  EXPECT_EQ(ports.ppp->requests.at(0), pppHeader(14, 0, 0xFFFFFFFF, 4) + "ppp0");
}

TEST_F(Throughput, ADaemonsFirstEntryIsItsCounters) {
  daemonAnswers(statusReplies(8, 1000, 500));
  manage();
  counts("ppp0", 5, 5);
  const auto now = sample();
  EXPECT_TRUE(isFirst(now, "ppp0"));
  EXPECT_EQ(entry(now, "ppp0")->uint64("if_in"), 1000u);
  EXPECT_EQ(entry(now, "ppp0")->uint64("total_in"), 1000u);
  EXPECT_EQ(entry(now, "ppp0")->uint64("if_out"), 500u);
  EXPECT_EQ(entry(now, "ppp0")->uint64("total_out"), 500u);
}

TEST_F(Throughput, ADaemonsCounterWrapsAt32BitsWhateverTheSource) {
  daemonAnswers(statusReplies(8, 4294967000) + statusReplies(8, 200));
  interfaces.width = CounterWidth::bits64;
  counts("ppp0", 5, 5);
  EXPECT_EQ(entry((manage(), sample()), "ppp0")->uint64("downlink_speed"), 496u);
}

TEST_F(Throughput, PppInterfacesThatAreNotConnectedAreAbsentAndBeginAnew) {
  daemonAnswers(statusReplies(8, 1000) + statusReplies(7, 1100) + statusReplies(8, 1200));
  counts("ppp0", 5, 5);
  manage();
  EXPECT_FALSE(sample()->contains("ppp0"));
  EXPECT_TRUE(isFirst(sample(), "ppp0"));
}

TEST_F(Throughput, PppInterfacesThatTheDaemonDoesNotKnowAreAbsent) {
  daemonAnswers(pppReply("") + pppReply(""));
  counts("ppp0", 5, 5);
  EXPECT_FALSE((manage(), sample())->contains("ppp0"));
}

TEST_F(Throughput, WithoutADaemonPppInterfacesAreCountedLikeAnyOther) {
  counts("ppp0", 100, 0);
  manage();
  counts("ppp0", 180, 0);
  EXPECT_EQ(entry(sample(), "ppp0")->uint64("downlink_speed"), 80u);
  interfaces["ppp0"].up = false;
  EXPECT_TRUE(isFirst(sample(), "ppp0"));
}

// What is held does not change.

TEST_F(Throughput, ASampleStaysAsItIsWhileItIsHeld) {
  counts("en0", 100, 0);
  manage();
  std::vector<Sample> held;
  for (std::uint64_t i = 1; i <= 20; ++i) {
    counts("en0", 100 + 10 * i, 0);
    held.push_back(sample());
  }
  for (std::uint64_t i = 1; i <= 20; ++i)
    EXPECT_EQ(entry(held[i - 1], "en0")->uint64("total_in"), 100 + 10 * i);
}

TEST_F(Throughput, AnEntryStaysAsItIsWhileItIsHeld) {
  counts("en0", 100, 0);
  manage();
  counts("en0", 110, 0);
  const Value held = *sample()->find("en0");
  for (std::uint64_t received = 120; received < 200; received += 10) {
    counts("en0", received, 0);
    sample();
  }
  EXPECT_EQ((*held.as<std::shared_ptr<Dictionary>>())->uint64("total_in"), 110u);
}

TEST_F(Throughput, SamplesThatNobodyHoldsLendTheirStorage) {
  counts("en0", 100, 0);
  counts("en1", 100, 0);
  manage();
  std::vector<const void*> samples, entries;
  for (std::uint64_t received = 110; received < 200; received += 10) {
    counts("en0", received, 0);
    const auto now = sample();
    samples.push_back(now.get());
    entries.push_back(entry(now, "en0"));
  }
  for (std::size_t i = 4; i < samples.size(); ++i) {
    EXPECT_EQ(samples[i], samples[i - 2]);
    EXPECT_EQ(entries[i], entries[i - 2]);
  }
}

TEST_F(Throughput, AnEntryThatSaysTheSameIsTheSame) {
  counts("en0", 100, 0);
  manage();
  const auto* const idle = (sample(), entry(sample(), "en0"));
  EXPECT_EQ(entry(sample(), "en0"), idle);
  EXPECT_EQ(entry(sample(), "en0"), idle);
  counts("en0", 101, 0);
  EXPECT_EQ(entry(sample(), "en0")->uint64("downlink_speed"), 1u);
  EXPECT_EQ(entry(sample(), "en0")->uint64("downlink_speed"), 0u);
}

TEST_F(Throughput, EntriesAreRightThroughEveryTurnOfBusyIdleAndDown) {
  for (int i = 0; i < 6; ++i) counts("en" + std::to_string(i), 1000, 500);
  manage();
  std::map<std::string, std::uint64_t> last;
  std::vector<std::pair<Sample, Dictionary>> held;
  std::uint32_t turn = 1;
  for (int i = 0; i < 400; ++i) {
    const auto next = [&turn](std::uint32_t below) {
      turn = turn * 1664525u + 1013904223u;
      return (turn >> 8) % below;
    };
    for (auto& reading : interfaces.readings) {
      last[reading.name] = reading.received;
      if (next(3) == 0) reading.received += next(100);
      if (next(10) == 0) reading.up = !reading.up;
    }
    const auto now = sample();
    for (const auto& reading : interfaces.readings) {
      const auto* const found = entry(now, reading.name);
      ASSERT_EQ(found->size(), reading.up ? 7u : 5u);
      ASSERT_EQ(found->uint64("if_in"), reading.received);
      const auto moved = reading.received - last[reading.name];
      ASSERT_EQ(found->uint64("downlink_speed"), reading.up ? std::optional(moved) : std::nullopt);
    }
    if (next(4) == 0) {
      Dictionary copy;
      for (const auto& each : *now)
        copy.set(std::string(each.key()),
                 std::make_shared<Dictionary>(**each.value.as<std::shared_ptr<Dictionary>>()));
      held.emplace_back(now, std::move(copy));
    }
    if (held.size() > 3) held.erase(held.begin());
    for (const auto& [kept, copy] : held) ASSERT_EQ(*kept, copy);
  }
}

}  // namespace
}  // namespace vantile::testing
