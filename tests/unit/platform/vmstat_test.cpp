#include "vantile/platform/parsers/vmstat.h"

#include <gtest/gtest.h>

#include "unit/platform/fixture.h"

namespace vantile {
namespace {

using testing::fixture;

TEST(Vmstat, ARecordedOneIsRead) {
  const auto counters = parseVmstat(fixture("vmstat.txt"));
  EXPECT_EQ(counters.pgpgin, 4777761u);
  EXPECT_EQ(counters.pgpgout, 2340308u);
  EXPECT_EQ(counters.pgfault, 18146893u);
  EXPECT_EQ(counters.pglazyfreed, 0u);
}

TEST(Vmstat, TheFirstPartOfARecordedOneHoldsTheCommonCounters) {
  const auto counters = parseVmstat(fixture("vmstat.txt").substr(0, 2304));
  EXPECT_TRUE(counters.pgpgin && counters.pgpgout && counters.pgfault && counters.pglazyfreed);
}

TEST(Vmstat, ZswapIsReadFromTheWholeAlone) {
  const std::string text = "pgpgin 1\nzswpin 12\nzswpout 34\n";
  EXPECT_EQ(parseVmstat(text).zswpin, std::nullopt);
  EXPECT_EQ(parseWholeVmstat(text).zswpin, 12u);
  EXPECT_EQ(parseWholeVmstat(text).zswpout, 34u);
  EXPECT_EQ(parseWholeVmstat(text).pgpgin, 1u);
}

TEST(Vmstat, NamesThatOnlyBeginAlikeAreOthers) {
  const auto counters = parseVmstat("pgfaulty 1\npgpginner 2\npglazyfree 3\n");
  EXPECT_FALSE(counters.pgfault || counters.pgpgin || counters.pglazyfreed);
}

TEST(Vmstat, ALineCutOffAtTheEndIsAbsent) {
  const auto counters = parseVmstat("pgpgin 12\npgpgout 345");
  EXPECT_EQ(counters.pgpgin, 12u);
  EXPECT_EQ(counters.pgpgout, std::nullopt);
}

TEST(Vmstat, EveryBeginningOfOneSaysLessAndNothingElse) {
  const auto text = fixture("vmstat.txt");
  const auto whole = parseWholeVmstat(text);
  for (std::size_t size = 0; size < text.size(); ++size) {
    const auto part = parseWholeVmstat(text.substr(0, size));
    for (auto number : {&Vmstat::pgpgin, &Vmstat::pgpgout, &Vmstat::pgfault, &Vmstat::zswpout})
      EXPECT_TRUE(!(part.*number) || part.*number == whole.*number) << size;
  }
}

TEST(Vmstat, ANumberTooLargeIsAbsent) {
  const auto counters = parseVmstat("pgpgin 18446744073709551616\npgpgout 18446744073709551615\n");
  EXPECT_EQ(counters.pgpgin, std::nullopt);
  EXPECT_EQ(counters.pgpgout, 18446744073709551615u);
}

TEST(Vmstat, StrayBytesHarmNoOtherLine) {
  using namespace std::string_view_literals;
  const auto counters = parseVmstat("pgpgin \0 1\npgpgout 2\r\n\xFF\npgfault 3\n"sv);
  EXPECT_EQ(counters.pgpgin, std::nullopt);
  EXPECT_EQ(counters.pgpgout, 2u);
  EXPECT_EQ(counters.pgfault, 3u);
}

TEST(Vmstat, AnEmptyOneSaysNothing) {
  EXPECT_FALSE(parseVmstat("").pgfault);
  EXPECT_FALSE(parseWholeVmstat("").zswpin);
}

}  // namespace
}  // namespace vantile
