#include "text.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <cstdlib>
#include <ctime>
#include <limits>
#include <string>

namespace vantile::host {
namespace {

TEST(HostText, BytesKeepThreeDigitsInTheLargestFittingUnit) {
  EXPECT_EQ(formatBytes(0), "0 B");
  EXPECT_EQ(formatBytes(1023), "1023 B");
  EXPECT_EQ(formatBytes(1024), "1.00 KiB");
  EXPECT_EQ(formatBytes(1536 * 1024), "1.50 MiB");
  EXPECT_EQ(formatBytes(243u << 20), "243 MiB");
  EXPECT_EQ(formatBytes(25276502016), "23.5 GiB");
  EXPECT_EQ(formatBytes(std::numeric_limits<std::uint64_t>::max()), "16.0 EiB");
}

TEST(HostText, BytesThatWouldRoundToAThousandTakeTheNextUnit) {
  EXPECT_EQ(formatBytes((1u << 20) - 1), "1.00 MiB");
  EXPECT_EQ(formatBytes(999u * 1024), "999 KiB");
}

TEST(HostText, AChangeHasItsSign) {
  EXPECT_EQ(formatChange(0, 1024), "+1.00 KiB");
  EXPECT_EQ(formatChange(2048, 1024), "-1.00 KiB");
  EXPECT_EQ(formatChange(7, 7), "+0 B");
}

TEST(HostText, CountsStayWholeUntilTheyGrowLong) {
  EXPECT_EQ(formatCount(0), "0");
  EXPECT_EQ(formatCount(-3), "0");
  EXPECT_EQ(formatCount(std::numeric_limits<double>::quiet_NaN()), "0");
  EXPECT_EQ(formatCount(9999), "9999");
  EXPECT_EQ(formatCount(12345), "12.3k");
  EXPECT_EQ(formatCount(999999), "1.00M");
}

TEST(HostText, SpansAreInTheUnitThatReadsWell) {
  EXPECT_EQ(formatSpan(45), "45 s");
  EXPECT_EQ(formatSpan(150), "3 min");
  EXPECT_EQ(formatSpan(7200), "2 h");
  EXPECT_EQ(formatSpan(86400 + 1800), "24 h 30 min");
}

TEST(HostText, WhatIsNotUtf8IsReplacedByteForByte) {
  EXPECT_EQ(decodeUtf8("a\xff\xc3\xa9"), U"a\uFFFDé");
  EXPECT_EQ(decodeUtf8("\xe2\x82"), U"\uFFFD\uFFFD");
  EXPECT_EQ(decodeUtf8("\xc0\xaf"), U"\uFFFD\uFFFD");
  EXPECT_EQ(decodeUtf8("\xed\xa0\x80"), U"\uFFFD\uFFFD\uFFFD");
}

TEST(HostText, EncodingUndoesDecoding) {
  const std::string text = "aé€😀";
  std::string again;
  for (const auto character : decodeUtf8(text)) appendUtf8(again, character);
  EXPECT_EQ(again, text);
}

TEST(HostText, PrintableTextIsOneLineWithoutControls) {
  EXPECT_EQ(printable("a\nb\x1b[2J"), "a\uFFFDb\uFFFD[2J");
}

TEST(HostText, TheTimeOfDayIsTheLocalOne) {
  setenv("TZ", "<+0530>-05:30", 1);
  tzset();
  EXPECT_EQ(formatClock(0), "05:30:00");
  setenv("TZ", "UTC", 1);
  tzset();
  EXPECT_EQ(formatClock(86399), "23:59:59");
}

TEST(HostText, WhatIsTooLongEndsInAnEllipsis) {
  EXPECT_EQ(clipped("abc", 3), "abc");
  EXPECT_EQ(clipped("abcd", 3), "ab…");
  EXPECT_EQ(clipped("ab", 1), "…");
  EXPECT_EQ(clipped("ab", 0), "");
  EXPECT_EQ(clipped("ab", -1), "");
}

TEST(HostText, AWideCharacterIsNotCutInHalf) {
  EXPECT_EQ(clipped("日本", 4), "日本");
  EXPECT_EQ(clipped("日本語", 4), "日…");
}

TEST(HostText, WhatIsClippedIsPrintable) {
  EXPECT_EQ(clipped("a\x1b[2J", 4), "a\uFFFD[…");
  EXPECT_EQ(clipped("\xff\n", 2), "\uFFFD\uFFFD");
}

TEST(HostText, WideCharactersTakeTwoCellsAndCombiningOnesNone) {
  EXPECT_EQ(cellsOf("日本"), 4);
  EXPECT_EQ(cellsOf("😀🚀🪐"), 6);
  EXPECT_EQ(cellsOf("e\u0301"), 1);
  EXPECT_EQ(cellsOf("■ 75 %"), 6);
  EXPECT_EQ(cellsOf("⌚\uFE0F✅"), 4);
  EXPECT_EQ(cellsOf("✓⌘"), 2);
  EXPECT_EQ(cellsOf("a\uFEFF\u2060\U000E0041"), 1);
}

}  // namespace
}  // namespace vantile::host
