#include "vantile/network/traffic.h"

#include <gtest/gtest.h>

#include "vantile/network/network_keys.h"

namespace vantile {
namespace {

CounterReading narrow(std::uint64_t received, std::uint64_t sent, std::uint32_t index = 1) {
  return {.width = CounterWidth::bits32, .index = index, .received = received, .sent = sent};
}

CounterReading wide(std::uint64_t received, std::uint64_t sent, std::uint32_t index = 1) {
  return {.width = CounterWidth::bits64, .index = index, .received = received, .sent = sent};
}

constexpr std::uint64_t gibibyte = std::uint64_t{1} << 30;

TEST(Traffic, FirstTotalsAreTheCounters) {
  const auto traffic = firstTraffic(narrow(700, 300));
  EXPECT_TRUE(traffic.first);
  EXPECT_EQ(traffic.totalIn, 700u);
  EXPECT_EQ(traffic.totalOut, 300u);
  EXPECT_EQ(traffic.peak, 0.0);
}

TEST(Traffic, TotalsGrowByWhatTheCountersDid) {
  const auto traffic = nextTraffic(firstTraffic(narrow(700, 300)), narrow(750, 310), 1);
  EXPECT_FALSE(traffic.first);
  EXPECT_EQ(traffic.totalIn, 750u);
  EXPECT_EQ(traffic.totalOut, 310u);
  EXPECT_EQ(traffic.movedIn, 50u);
  EXPECT_EQ(traffic.movedOut, 10u);
}

TEST(Traffic, AReceivingCounterThatWrappedAddsWhatItMoved) {
  const auto traffic = nextTraffic(firstTraffic(narrow(4294967000, 0)), narrow(200, 0), 1);
  EXPECT_EQ(traffic.movedIn, 496u);
  EXPECT_EQ(traffic.totalIn, 4294967496u);
}

TEST(Traffic, ASendingCounterThatWrappedAddsWhatItMoved) {
  const auto traffic = nextTraffic(firstTraffic(narrow(0, 4294967000)), narrow(0, 200), 1);
  EXPECT_EQ(traffic.movedOut, 496u);
  EXPECT_EQ(traffic.totalOut, 4294967496u);
}

TEST(Traffic, ThePeakIsTheHighestRateOfEitherDirection) {
  const auto received = nextTraffic(firstTraffic(narrow(0, 0)), narrow(300, 100), 2);
  EXPECT_EQ(received.peak, 150.0);
  const auto sent = nextTraffic(received, narrow(300, 500), 2);
  EXPECT_EQ(sent.peak, 200.0);
  EXPECT_EQ(nextTraffic(sent, narrow(310, 510), 2).peak, 200.0);
}

TEST(Traffic, EqualCountersMoveNothingAndLeaveThePeak) {
  const auto before = nextTraffic(firstTraffic(narrow(0, 0)), narrow(300, 100), 1);
  const auto traffic = nextTraffic(before, narrow(300, 100), 1);
  EXPECT_EQ(traffic.movedIn, 0u);
  EXPECT_EQ(traffic.movedOut, 0u);
  EXPECT_EQ(traffic.peak, 300.0);
}

TEST(Traffic, AnIntervalOfZeroOrLessLeavesThePeak) {
  const auto before = nextTraffic(firstTraffic(narrow(0, 0)), narrow(300, 100), 1);
  EXPECT_EQ(nextTraffic(before, narrow(9000, 100), 0).peak, 300.0);
  EXPECT_EQ(nextTraffic(before, narrow(9000, 100), -1).peak, 300.0);
  EXPECT_EQ(nextTraffic(before, narrow(9000, 100), 0).movedIn, 8700u);
}

TEST(Traffic, ATotalThatGoesRoundMovedNothing) {
  auto before = firstTraffic(narrow(0, 0));
  before.totalIn = ~std::uint64_t{0};
  const auto traffic = nextTraffic(before, narrow(5, 0), 1);
  EXPECT_EQ(traffic.movedIn, 0u);
  EXPECT_EQ(traffic.totalIn, 4u);
}

TEST(Traffic, AWideCounterMovesMoreThanFourGibibytesAtOnce) {
  const auto before = firstTraffic(wide(gibibyte, 0));
  const auto traffic = nextTraffic(before, wide(20 * gibibyte + 7, 0), 1);
  EXPECT_EQ(traffic.movedIn, 19 * gibibyte + 7);
  EXPECT_EQ(traffic.totalIn, 20 * gibibyte + 7);
}

TEST(Traffic, AWideCounterThatIsLowerIsAFirstOne) {
  const auto before = nextTraffic(firstTraffic(wide(0, 0)), wide(900, 800), 1);
  EXPECT_EQ(nextTraffic(before, wide(899, 800), 1), firstTraffic(wide(899, 800)));
  EXPECT_EQ(nextTraffic(before, wide(900, 799), 1), firstTraffic(wide(900, 799)));
  EXPECT_FALSE(nextTraffic(before, wide(900, 800), 1).first);
}

TEST(Traffic, AnotherIndexUnderTheNameIsAFirstOneWithWideCounters) {
  EXPECT_TRUE(nextTraffic(firstTraffic(wide(5, 5, 1)), wide(9, 9, 2), 1).first);
  EXPECT_FALSE(nextTraffic(firstTraffic(narrow(5, 5, 1)), narrow(9, 9, 2), 1).first);
}

TEST(Traffic, ASourceOfAnotherWidthBeginsAnew) {
  EXPECT_TRUE(nextTraffic(firstTraffic(narrow(5, 5)), wide(9, 9), 1).first);
  EXPECT_TRUE(nextTraffic(firstTraffic(wide(5, 5)), narrow(9, 9), 1).first);
}

TEST(Traffic, AFirstEntryHasNoSpeeds) {
  Dictionary entry, expected;
  writeEntry(entry, firstTraffic(narrow(700, 300)));
  expected.set(keys::if_in, std::uint32_t{700});
  expected.set(keys::if_out, std::uint32_t{300});
  expected.set(keys::total_in, std::uint64_t{700});
  expected.set(keys::total_out, std::uint64_t{300});
  expected.set(keys::peak_speek, 0.0);
  EXPECT_EQ(entry, expected);
}

TEST(Traffic, AFullEntryHasAllSeven) {
  Dictionary entry, expected;
  writeEntry(entry, nextTraffic(firstTraffic(narrow(700, 300)), narrow(800, 350), 1));
  expected.set(keys::if_in, std::uint32_t{800});
  expected.set(keys::if_out, std::uint32_t{350});
  expected.set(keys::downlink_speed, std::uint64_t{100});
  expected.set(keys::uplink_speed, std::uint64_t{50});
  expected.set(keys::total_in, std::uint64_t{800});
  expected.set(keys::total_out, std::uint64_t{350});
  expected.set(keys::peak_speek, 100.0);
  EXPECT_EQ(entry, expected);
}

TEST(Traffic, AWideCountersEntryHasItsLowHalfAndWholeTotals) {
  Dictionary entry;
  writeEntry(entry, firstTraffic(wide(5 * gibibyte, 6 * gibibyte)));
  EXPECT_EQ(*entry.find("if_in"), Value(static_cast<std::uint32_t>(gibibyte)));
  EXPECT_EQ(*entry.find("if_out"), Value(static_cast<std::uint32_t>(2 * gibibyte)));
  EXPECT_EQ(*entry.find("total_in"), Value(5 * gibibyte));
  EXPECT_EQ(*entry.find("total_out"), Value(6 * gibibyte));
}

}  // namespace
}  // namespace vantile
