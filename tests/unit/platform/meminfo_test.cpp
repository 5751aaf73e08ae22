#include "vantile/platform/parsers/meminfo.h"

#include <gtest/gtest.h>

#include "unit/platform/fixture.h"

namespace vantile {
namespace {

using testing::fixture;

TEST(Meminfo, ARecordedOneIsRead) {
  const auto info = parseMeminfo(fixture("meminfo.txt"));
  EXPECT_EQ(info.memTotal, 24684084u);
  EXPECT_TRUE(info.memFree && info.memAvailable && info.kReclaimable);
  EXPECT_GT(*info.memAvailable, *info.memFree);
  EXPECT_EQ(info.swapTotal, 0u);
  EXPECT_EQ(info.zswap, 0u);
}

TEST(Meminfo, ActiveIsNotOneOfItsParts) {
  const auto info = parseMeminfo(fixture("meminfo-zswap.txt"));
  EXPECT_EQ(info.active, 3801088u);
  EXPECT_EQ(info.inactive, 2310144u);
}

TEST(Meminfo, TellsWhatZswapOccupiesFromWhatItHolds) {
  const auto info = parseMeminfo(fixture("meminfo-zswap.txt"));
  EXPECT_EQ(info.zswap, 402944u);
  EXPECT_EQ(info.zswapped, 1208832u);
  EXPECT_EQ(info.swapTotal, 4194300u);
}

TEST(Meminfo, ALineCutOffAtTheEndIsAbsent) {
  const auto info = parseMeminfo("MemTotal:  100 kB\nMemFree:   12");
  EXPECT_EQ(info.memTotal, 100u);
  EXPECT_EQ(info.memFree, std::nullopt);
}

TEST(Meminfo, EveryBeginningOfOneSaysLessAndNothingElse) {
  const auto text = fixture("meminfo-zswap.txt");
  const auto whole = parseMeminfo(text);
  for (std::size_t size = 0; size < text.size(); ++size) {
    const auto part = parseMeminfo(text.substr(0, size));
    for (auto number : {&Meminfo::memTotal, &Meminfo::active, &Meminfo::zswap, &Meminfo::zswapped,
                        &Meminfo::kReclaimable})
      EXPECT_TRUE(!(part.*number) || part.*number == whole.*number) << size;
  }
}

TEST(Meminfo, MissingNamesAreAbsent) {
  const auto info = parseMeminfo("MemTotal: 100 kB\nInactive: 7 kB\n");
  EXPECT_EQ(info.memTotal, 100u);
  EXPECT_EQ(info.inactive, 7u);
  EXPECT_FALSE(info.memFree || info.memAvailable || info.active || info.swapTotal);
  EXPECT_FALSE(info.zswap || info.zswapped || info.kReclaimable);
}

TEST(Meminfo, LinesMayComeInAnyOrder) {
  const auto info =
      parseMeminfo("KReclaimable: 1 kB\nActive: 2 kB\nMemFree: 3 kB\nMemTotal: 4 kB\n");
  EXPECT_EQ(info.kReclaimable, 1u);
  EXPECT_EQ(info.active, 2u);
  EXPECT_EQ(info.memFree, 3u);
  EXPECT_EQ(info.memTotal, 4u);
}

TEST(Meminfo, ANumberTooLargeIsAbsent) {
  const auto info = parseMeminfo("MemTotal: 99999999999999999999 kB\nMemFree: 3 kB\n");
  EXPECT_EQ(info.memTotal, std::nullopt);
  EXPECT_EQ(info.memFree, 3u);
}

TEST(Meminfo, LineEndsOfAnotherSystemAreNoPartOfTheNumber) {
  EXPECT_EQ(parseMeminfo("MemTotal: 100\r\nMemFree: 3 kB\r\n").memTotal, 100u);
}

TEST(Meminfo, StrayBytesHarmNoOtherLine) {
  using namespace std::string_view_literals;
  const auto info = parseMeminfo("\0\xFF\nMemTotal:\xFF 5 kB\nMemFree: 3\0 kB\n"sv);
  EXPECT_EQ(info.memTotal, std::nullopt);
  EXPECT_EQ(info.memFree, 3u);
}

TEST(Meminfo, AnEmptyOneSaysNothing) {
  EXPECT_EQ(parseMeminfo("").memTotal, std::nullopt);
}

}  // namespace
}  // namespace vantile
