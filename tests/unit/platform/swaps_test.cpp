#include "vantile/platform/parsers/swaps.h"

#include <gtest/gtest.h>

#include "unit/platform/fixture.h"

namespace vantile {
namespace {

using testing::fixture;

TEST(Swaps, AreReadInTheKernelsOrderWithoutTheHeading) {
  const auto lines = parseSwaps(fixture("swaps.txt"));
  ASSERT_EQ(lines.size(), 5u);
  EXPECT_EQ(lines[0].area.path, "/swapfile");
  EXPECT_EQ(lines[3].area.path, "/dev/sda2");
  EXPECT_EQ(lines[4].area.path, "/dev/zram0");
}

TEST(Swaps, CountBytesNotKibibytes) {
  const auto lines = parseSwaps(fixture("swaps.txt"));
  EXPECT_EQ(lines[0].area.bytes, 2097148ull * 1024);
  EXPECT_EQ(lines[0].usedBytes, 524288ull * 1024);
}

TEST(Swaps, TellFilesFromDevices) {
  const auto lines = parseSwaps(fixture("swaps.txt"));
  EXPECT_TRUE(lines[0].area.isFile);
  EXPECT_FALSE(lines[3].area.isFile);
  EXPECT_FALSE(lines[4].area.isFile);
}

TEST(Swaps, NamesMayHoldSpacesAndTabs) {
  EXPECT_EQ(parseSwaps(fixture("swaps.txt"))[1].area.path, "/var/swap area\tone");
}

TEST(Swaps, TheMarkOnADeletedFileIsNoPartOfItsPath) {
  EXPECT_EQ(parseSwaps(fixture("swaps.txt"))[2].area.path, "/var/swap/old");
}

TEST(Swaps, ALastLineWithoutItsNewlineIsReadWhenItsFieldsAreThere) {
  EXPECT_EQ(parseSwaps("/s file 8 4 -2").size(), 1u);
  EXPECT_TRUE(parseSwaps("/s file 8").empty());
}

TEST(Swaps, LinesThatCantBeReadAreLeftOut) {
  EXPECT_TRUE(parseSwaps("").empty());
  EXPECT_TRUE(parseSwaps("\n\nswap file 8 4 -2\n").empty());
  EXPECT_TRUE(parseSwaps("/s file x 4 -2\n/s file 8 \xFF -2\n").empty());
}

TEST(Swaps, ASizeWhoseBytesAreTooManyIsUnreadable) {
  EXPECT_TRUE(parseSwaps("/s file 18446744073709551615 0 -2\n").empty());
  EXPECT_TRUE(parseSwaps("/s file 8 18014398509481984 -2\n").empty());
  const auto lines = parseSwaps("/s file 18014398509481983 0 -2\n");
  ASSERT_EQ(lines.size(), 1u);
  EXPECT_EQ(lines[0].area.bytes, 18446744073709550592u);
}

TEST(Swaps, NamesOfAnyBytesPassThrough) {
  const auto lines = parseSwaps("/\xFF\xC3 file 8 0 -2\n/a\\012b file 8 0 -2\n");
  ASSERT_EQ(lines.size(), 2u);
  EXPECT_EQ(lines[0].area.path, "/\xFF\xC3");
  EXPECT_EQ(lines[1].area.path, "/a\nb");
}

}  // namespace
}  // namespace vantile
