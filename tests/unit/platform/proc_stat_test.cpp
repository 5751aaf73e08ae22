#include "vantile/platform/parsers/proc_stat.h"

#include <gtest/gtest.h>

#include <fstream>
#include <string>

#include "vantile/platform/parsers/text.h"

#include "unit/platform/fixture.h"

namespace vantile {
namespace {

using testing::fixture;

TEST(ProcStat, ReadsTheProcessorsOfARecordedFile) {
  const auto stat = parseProcStat(fixture("proc-stat.txt"));
  EXPECT_TRUE(stat.complete);
  ASSERT_EQ(stat.processors.size(), 2u);
  EXPECT_EQ(stat.processors[0], (ProcessorLine{.number = 0,
                                               .user = 1041061,
                                               .system = 243948 + 210 + 2147,
                                               .idle = 837974 + 1158,
                                               .nice = 333614}));
  EXPECT_EQ(stat.processors[1].number, 1u);
}

TEST(ProcStat, EveryColumnHasItsKind) {
  const auto stat = parseProcStat("cpu3 1 20 300 4000 50000 600000 7000000 80000000 9 9\nintr 1\n");
  ASSERT_EQ(stat.processors.size(), 1u);
  EXPECT_EQ(stat.processors[0],
            (ProcessorLine{.number = 3, .user = 1, .system = 87600300, .idle = 54000, .nice = 20}));
}

TEST(ProcStat, AnOldKernelHasFourColumns) {
  const auto stat = parseProcStat("cpu0 1 2 3 4\nintr 1\n");
  ASSERT_EQ(stat.processors.size(), 1u);
  EXPECT_EQ(stat.processors[0],
            (ProcessorLine{.number = 0, .user = 1, .system = 3, .idle = 4, .nice = 2}));
}

TEST(ProcStat, TheSumOfAllAndLinesThatCantBeReadAreLeftOut) {
  EXPECT_TRUE(parseProcStat("cpu  1 2 3 4 5 6 7 8 9 10\n").processors.empty());
  EXPECT_TRUE(parseProcStat("cpu0 1 2 3\n").processors.empty());
  EXPECT_TRUE(parseProcStat("cpu0 1 2 3 x\n").processors.empty());
  EXPECT_TRUE(parseProcStat("cpu0x 1 2 3 4\n").processors.empty());
  EXPECT_TRUE(parseProcStat("cpu-1 1 2 3 4\n").processors.empty());
  EXPECT_TRUE(parseProcStat("cpu65536 1 2 3 4\ncpu99999999999 1 2 3 4\n").processors.empty());
  EXPECT_TRUE(parseProcStat("cpu0 1 2 3 99999999999999999999\n").processors.empty());
  EXPECT_TRUE(parseProcStat("cpu0 \xFF\xFF 2 3 4\n").processors.empty());
  EXPECT_EQ(parseProcStat("cpux\ncpu1 1 2 3 4\n").processors.size(), 1u);
}

TEST(ProcStat, ALineThatWasCutOffIsLeftOutAndTheRestWanted) {
  const auto stat = parseProcStat("cpu0 1 2 3 4\ncpu1 1 2 3 4");
  EXPECT_EQ(stat.processors.size(), 1u);
  EXPECT_FALSE(stat.complete);
  EXPECT_FALSE(parseProcStat("cpu0 1 2 3 4\nin").complete);
  EXPECT_TRUE(parseProcStat("cpu0 1 2 3 4\nint").complete);
  EXPECT_FALSE(parseProcStat("").complete);
}

/// Counters over readings of a single processor, whose number a test chooses.
struct ProcessorCountersTest : ::testing::Test {
  ProcessorTicks read(const ProcessorLine& line) {
    return counters.advance({.processors = {line}, .complete = true}).at(line.number);
  }
  std::vector<ProcessorTicks> readAll(const std::vector<ProcessorLine>& lines) {
    return counters.advance({.processors = lines, .complete = true});
  }

  ProcessorCounters counters;
};

TEST_F(ProcessorCountersTest, BeginAtZero) {
  EXPECT_EQ(read({.user = 1u << 31, .system = 7, .idle = 1ull << 40, .nice = 3}), ProcessorTicks{});
}

TEST_F(ProcessorCountersTest, CountWhatIsNew) {
  read({.user = 10, .system = 20, .idle = 30, .nice = 40});
  EXPECT_EQ(read({.user = 11, .system = 22, .idle = 33, .nice = 44}),
            (ProcessorTicks{.user = 1, .system = 2, .idle = 3, .nice = 4}));
  EXPECT_EQ(read({.user = 12, .system = 22, .idle = 34, .nice = 44}),
            (ProcessorTicks{.user = 2, .system = 2, .idle = 4, .nice = 4}));
}

TEST_F(ProcessorCountersTest, ThatAreALittleLessCatchUp) {
  read({.idle = 5000});
  EXPECT_EQ(read({.idle = 5100}).idle, 100u);
  EXPECT_EQ(read({.idle = 5090}).idle, 100u);
  EXPECT_EQ(read({.idle = 5100}).idle, 100u);
  EXPECT_EQ(read({.idle = 5101}).idle, 101u);
  EXPECT_EQ(read({.idle = 4101}).idle, 101u);
  EXPECT_EQ(read({.idle = 5102}).idle, 102u);
}

TEST_F(ProcessorCountersTest, ThatBeganAnewGoOnFromThere) {
  read({.user = 50000, .idle = 5000});
  EXPECT_EQ(read({.user = 50000, .idle = 3999}).idle, 0u);
  EXPECT_EQ(read({.user = 50000, .idle = 4009}).idle, 10u);
  EXPECT_EQ(read({.user = 3, .idle = 4009}).user, 0u);
  EXPECT_EQ(read({.user = 5, .idle = 4009}).user, 2u);
}

TEST_F(ProcessorCountersTest, GoOnBeyondThirtyTwoBits) {
  read({.idle = 0});
  EXPECT_EQ(read({.idle = (1ull << 32) - 1}).idle, (1ull << 32) - 1);
  EXPECT_EQ(read({.idle = (1ull << 32) + 1}).idle, (1ull << 32) + 1);
}

TEST_F(ProcessorCountersTest, OfAProcessorThatIsOfflineRepeat) {
  readAll({{.number = 0, .idle = 100}, {.number = 1, .idle = 100}});
  readAll({{.number = 0, .idle = 110}, {.number = 1, .idle = 110}});
  const auto ticks = readAll({{.number = 0, .idle = 120}});
  ASSERT_EQ(ticks.size(), 2u);
  EXPECT_EQ(ticks[0].idle, 20u);
  EXPECT_EQ(ticks[1].idle, 10u);
}

TEST_F(ProcessorCountersTest, OfAProcessorThatComesBackGoOnWithoutAJump) {
  readAll({{.number = 0}, {.number = 1, .user = 5, .idle = 100000}});
  readAll({{.number = 0}});
  EXPECT_EQ(readAll({{.number = 0}, {.number = 1, .user = 7, .idle = 900000}})[1],
            ProcessorTicks{});
  EXPECT_EQ(readAll({{.number = 0}, {.number = 1, .user = 8, .idle = 900003}})[1],
            (ProcessorTicks{.user = 1, .idle = 3}));
}

TEST_F(ProcessorCountersTest, AreAsManyAsTheHighestNumberAtTheStart) {
  EXPECT_EQ(readAll({{.number = 0}, {.number = 3}}).size(), 4u);
  EXPECT_EQ(readAll({{.number = 0}, {.number = 3}, {.number = 4, .idle = 5}}).size(), 4u);
  EXPECT_EQ(readAll({{.number = 65535}}).size(), 4u);
  EXPECT_EQ(readAll({}).size(), 4u);
}

TEST_F(ProcessorCountersTest, OfAProcessorThatComesLaterBeginAtZero) {
  readAll({{.number = 0}, {.number = 2}});
  EXPECT_EQ(readAll({{.number = 0}, {.number = 1, .idle = 700}, {.number = 2}})[1],
            ProcessorTicks{});
  EXPECT_EQ(readAll({{.number = 0}, {.number = 1, .idle = 703}, {.number = 2}})[1].idle, 3u);
}

TEST_F(ProcessorCountersTest, OfARecordedProcessorThatGoesOfflineAndComesBackNeverJump) {
  const auto recorded = fixture("proc-stat-offline.txt");
  std::string_view text = recorded;
  std::vector<ProcessorTicks> last;
  std::size_t readings = 0, missing = 0;
  while (!text.empty()) {
    const auto end = std::min(text.find("--\n"), text.size());  // between readings
    const auto stat = parseProcStat(text.substr(0, end));
    text.remove_prefix(std::min(end + 3, text.size()));
    const auto ticks = counters.advance(stat);
    ASSERT_EQ(ticks.size(), 4u);
    if (stat.processors.size() == 3) {
      ++missing;
      EXPECT_EQ(ticks[2], last.at(2));
    }
    for (std::size_t core = 0; readings > 0 && core < 4; ++core) {
      // The readings are a second apart: 100 ticks, and a few for when exactly they were taken.
      EXPECT_LE(ticks[core].idle - last[core].idle, 105u) << readings;
      EXPECT_LE(ticks[core].user - last[core].user, 105u) << readings;
      EXPECT_LE(ticks[core].system - last[core].system, 105u) << readings;
    }
    last = ticks;
    ++readings;
  }
  EXPECT_EQ(readings, 9u);
  EXPECT_EQ(missing, 3u);
}

}  // namespace
}  // namespace vantile
