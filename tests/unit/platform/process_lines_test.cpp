#include "vantile/platform/parsers/process_lines.h"

#include <gtest/gtest.h>

#include <limits>
#include <locale>

namespace vantile {
namespace {

constexpr std::uint64_t second = 1'000'000'000;
constexpr auto most = std::numeric_limits<std::uint64_t>::max();
const ProcessUnits units = {100, 4096, 4096ull * 1000};

using Pids = std::vector<std::int32_t>;

TEST(PidList, IsReadInItsOrder) {
  EXPECT_EQ(parsePidList("41,7,2147483647"), (Pids{41, 7, 2147483647}));
  EXPECT_EQ(parsePidList("41"), Pids{41});
  EXPECT_EQ(parsePidList(""), Pids{});
}

TEST(PidList, WhatIsNoIdentifierIsLeftOut) {
  EXPECT_EQ(parsePidList("0,-1,,x,4x, 5,2147483648,99999999999999999999,41,"), Pids{41});
}

TEST(ProcessorShare, IsWhatWasUsedOfTheTimeBetweenTwoLooks) {
  EXPECT_EQ(processorShare({0, 1000, 10 * second}, {0, 1100, 12 * second}, units), 500u);
  EXPECT_EQ(processorShare({0, 1000, 10 * second}, {0, 1000, 12 * second}, units), 0u);
}

TEST(ProcessorShare, OfSeveralThreadsIsMoreThanAHundredPercent) {
  EXPECT_EQ(processorShare({0, 0, 0}, {0, 500, 2 * second}, units), 2500u);
}

TEST(ProcessorShare, IsRoundedToATenth) {
  EXPECT_EQ(processorShare({0, 0, 0}, {0, 1, 7 * second}, units), 1u);    // 0.14 %
  EXPECT_EQ(processorShare({0, 0, 0}, {0, 11, 7 * second}, units), 16u);  // 1.57 %
}

TEST(ProcessorShare, OverLessThanTenTicksIsNotToBeTold) {
  EXPECT_EQ(processorShare({0, 0, 0}, {0, 1, second / 10 - 1}, units), std::nullopt);
  EXPECT_EQ(processorShare({0, 0, 0}, {0, 1, second / 10}, units), 100u);
  EXPECT_EQ(processorShare({0, 0, 5 * second}, {0, 1, 5 * second}, units), std::nullopt);
}

TEST(ProcessorShare, OfTicksOrTimeThatRanBackwardsIsNothingOdd) {
  EXPECT_EQ(processorShare({0, 1000, 10 * second}, {0, 999, 12 * second}, units), 0u);
  EXPECT_EQ(processorShare({0, 1000, 10 * second}, {0, 2000, 8 * second}, units), std::nullopt);
}

TEST(ProcessorShare, NumbersOfAnySizeGiveSomeShare) {
  EXPECT_TRUE(processorShare({0, 0, 0}, {0, most, second}, units));
  EXPECT_TRUE(processorShare({0, 0, 0}, {0, most, most}, units));
  EXPECT_EQ(processorShare({0, 0, 0}, {0, 1, second}, {0, 0, 0}), std::nullopt);
  EXPECT_EQ(processorShare({0, 0, 0}, {0, 1, 20 * second}, {0, 0, 0}), 0u);
}

TEST(ProcessorShareOfLife, IsOfTheTimeSinceTheStart) {
  EXPECT_EQ(processorShareOfLife({6000, 100, 70 * second}, units), 100u);
  EXPECT_EQ(processorShareOfLife({0, 6000, 60 * second}, units), 1000u);
}

TEST(ProcessorShareOfLife, OfAProcessThatHasJustBegunIsNone) {
  EXPECT_EQ(processorShareOfLife({7000, 0, 70 * second}, units), 0u);
  EXPECT_EQ(processorShareOfLife({7000, 5, 70 * second}, units), 0u);
  EXPECT_EQ(processorShareOfLife({7001, 5, 70 * second}, units), 0u);
  EXPECT_EQ(processorShareOfLife({0, 5, 70 * second}, {0, 0, 0}), 0u);
}

TEST(MemoryShare, IsOfThePhysicalMemory) {
  EXPECT_EQ(memoryShare(125, units), 125u);  // 12.5 %
  EXPECT_EQ(memoryShare(1000, units), 1000u);
  EXPECT_EQ(memoryShare(1, {100, 4096, 4096ull * 16384}), 0u);
  EXPECT_EQ(memoryShare(1, {100, 4096, 4096ull * 2000}), 1u);  // half a tenth
}

TEST(MemoryShare, OfAnUnknownMemoryIsNone) {
  EXPECT_EQ(memoryShare(125, {100, 4096, 0}), 0u);
  EXPECT_GT(memoryShare(most, {100, most, 1}), 0u);
}

PidStat process() {
  PidStat stat;
  stat.pid = 41;
  stat.state = 'S';
  stat.threads = 1;
  stat.virtualBytes = 8126464;
  stat.residentPages = 125;
  return stat;
}
std::string lineOf(const PidStat& stat, Tenths share = 15) {
  std::string lines;
  appendProcessLine(lines, stat, share, units);
  return lines;
}

TEST(ProcessLine, HasSixColumnsUnderTheHeader) {
  EXPECT_EQ(std::string(processLineHeader) + lineOf(process()),
            "    PID  %CPU %MEM      RSS        VSZ STAT\n"
            "     41   1.5 12.5      500       7936 S\n");
}

TEST(ProcessLine, SharesAlwaysHaveOneDecimal) {
  for (const auto& [share, text] : {std::pair<Tenths, const char*>{0, " 0.0 "},
                                    {9, " 0.9 "},
                                    {1000, " 100.0 "},
                                    {12345, " 1234.5 "}})
    EXPECT_NE(lineOf(process(), share).find(text), std::string::npos) << text;
}

TEST(ProcessLine, ColumnsStayApartHoweverWide) {
  auto stat = process();
  stat.pid = std::numeric_limits<std::int32_t>::max();
  stat.virtualBytes = stat.residentPages = most;
  EXPECT_EQ(lineOf(stat, most),
            "2147483647 1844674407370955161.5 100000000000000.0 18014398509481983 "
            "18014398509481983 S\n");
}

TEST(ProcessLine, TellsStatesByLettersAlone) {
  auto stat = process();
  stat.nice = 5;
  EXPECT_TRUE(lineOf(stat).ends_with(" SN\n"));
  stat.session = 41;
  EXPECT_TRUE(lineOf(stat).ends_with(" SNs\n"));
  stat.threads = 2;
  EXPECT_TRUE(lineOf(stat).ends_with(" SNsl\n"));
  stat.nice = -5;  // has no letter
  EXPECT_TRUE(lineOf(stat).ends_with(" Ssl\n"));
}

struct Comma : std::numpunct<char> {
  char do_decimal_point() const override { return ','; }
  std::string do_grouping() const override { return "\1"; }
};

TEST(ProcessLine, GoesByNoLocaleOfTheHosts) {
  const auto before = std::locale::global(std::locale(std::locale::classic(), new Comma));
  const auto line = lineOf(process());
  std::locale::global(before);
  EXPECT_EQ(line, "     41   1.5 12.5      500       7936 S\n");
}

}  // namespace
}  // namespace vantile
