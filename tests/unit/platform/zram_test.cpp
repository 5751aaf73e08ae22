#include "vantile/platform/parsers/zram.h"

#include <gtest/gtest.h>

#include "unit/platform/fixture.h"

namespace vantile {
namespace {

using testing::fixture;

TEST(ZramMemory, IsWhatItHoldsAndWhatItOccupiesWithItsOverhead) {
  const auto memory = parseZramMemory(fixture("zram-mm_stat.txt"));
  ASSERT_TRUE(memory);
  EXPECT_EQ(memory->heldBytes, 316145664u);
  EXPECT_EQ(memory->occupiedBytes, 105381888u);
}

TEST(ZramMemory, NeedsItsFirstThreeFields) {
  EXPECT_TRUE(parseZramMemory("1 2 3"));
  EXPECT_FALSE(parseZramMemory("1 2"));
  EXPECT_FALSE(parseZramMemory(""));
  EXPECT_FALSE(parseZramMemory("\n1 2 3\n"));
}

TEST(ZramMemory, AFieldThatIsNoNumberMakesItUnreadable) {
  EXPECT_FALSE(parseZramMemory("x 2 3\n"));
  EXPECT_FALSE(parseZramMemory("1 2 99999999999999999999\n"));
  EXPECT_TRUE(parseZramMemory("1 x 3\n"));
}

TEST(BlockTraffic, IsTheSectorsReadAndWritten) {
  const auto traffic = parseBlockTraffic(fixture("zram-stat.txt"));
  ASSERT_TRUE(traffic);
  EXPECT_EQ(traffic->readSectors, 100352u);
  EXPECT_EQ(traffic->writtenSectors, 1234944u);
}

TEST(BlockTraffic, OfAnOldKernelHasElevenFields) {
  const auto traffic = parseBlockTraffic("1 2 3 4 5 6 7 8 9 10 11\n");
  ASSERT_TRUE(traffic);
  EXPECT_EQ(traffic->readSectors, 3u);
  EXPECT_EQ(traffic->writtenSectors, 7u);
}

TEST(BlockTraffic, NeedsItsFirstSevenFields) {
  EXPECT_TRUE(parseBlockTraffic("1 2 3 4 5 6 7"));
  EXPECT_FALSE(parseBlockTraffic("1 2 3 4 5 6"));
  EXPECT_FALSE(parseBlockTraffic(""));
}

TEST(BlockTraffic, AFieldThatIsNoNumberMakesItUnreadable) {
  EXPECT_FALSE(parseBlockTraffic("1 2 \xFF 4 5 6 7\n"));
  EXPECT_FALSE(parseBlockTraffic("1 2 3 4 5 6 99999999999999999999\n"));
}

}  // namespace
}  // namespace vantile
