// How the lines of the process list are read.

#include <limits>

#include "unit/process/process_fixture.h"

namespace vantile {
namespace {

class ProcessLine : public testing::ProcessSample {};

TEST_F(ProcessLine, FillsTheRecordFromItsSixColumns) {
  const auto info = read("   41  12.5  3.2  40960  8123456 Ss\n");
  EXPECT_EQ(info->cpu(), 12.5);
  EXPECT_EQ(info->memory(), 3.2);
  EXPECT_EQ(info->phyMemoryPages(), 40960);
  EXPECT_EQ(info->virtMemoryPages(), 8123456);
  EXPECT_EQ(info->stats(), "Ss");
}

/// Whether the line was left out: the record is as it began.
bool isUntouched(const ProcessInfo& info) {
  return info.cpu() == 0 && info.memory() == 0 && info.phyMemoryPages() == 0 &&
         info.virtMemoryPages() == 0 && !info.stats();
}

TEST_F(ProcessLine, FillsEachRecordFromItsOwn) {
  launch({{"Mail", "/Mail.app", 41}, {"Chess", "/Chess.app", 7}, {"Gone", "/Gone.app", 8}});
  ports.lister->output = "41 1.5 0.1 100 200 S\n 7 2.5 0.2 300 400 R\n";
  monitor->updateInfo();
  const auto records = reports.at(0).value();
  EXPECT_EQ(records.at(41)->cpu(), 1.5);
  EXPECT_EQ(records.at(7)->virtMemoryPages(), 400);
  EXPECT_TRUE(isUntouched(*records.at(8)));
}

TEST_F(ProcessLine, ThatComesLaterCounts) {
  EXPECT_EQ(read("41 1.5 0.1 100 200 S\n41 2.5 0.1 100 200 R\n")->cpu(), 2.5);
}

TEST_F(ProcessLine, TheHeaderIsNone) {
  launch({{"None", "/None.app", 0}});  // what a word is as a number
  ports.lister->output = "  PID 10.5 20.5 100 200 STAT\n";
  monitor->updateInfo();
  EXPECT_TRUE(isUntouched(*reports.back().value().at(0)));
}

TEST_F(ProcessLine, WithAMarkerBehindTheStateIsLeftOut) {
  launch({{"Mail", "/Mail.app", 41}, {"Chess", "/Chess.app", 7}});
  for (const auto* state : {"S+", "S<", "Ss+", "+S", "?"}) {
    ports.lister->output = "41 1.5 0.1 100 200 " + std::string(state) + "\n 7 2.5 0.2 300 400 R\n";
    monitor->updateInfo();
    EXPECT_TRUE(isUntouched(*reports.back().value().at(41))) << state;
    EXPECT_EQ(reports.back().value().at(7)->cpu(), 2.5) << state;
  }
}

TEST_F(ProcessLine, OfAnUnknownProcessIsIgnored) {
  EXPECT_TRUE(isUntouched(*read("42 1.5 0.1 100 200 S\n")));
  EXPECT_EQ(reports.at(0).value().size(), 1u);
  EXPECT_EQ(read("42 1.5 0.1 100 200 S\n41 2.5 0.2 300 400 R\n")->cpu(), 2.5);
}

TEST_F(ProcessLine, SharesOfAHundredAndMoreAreRead) {
  EXPECT_EQ(read("41 100.0 0.1 100 200 S\n")->cpu(), 100.0);
  EXPECT_EQ(read("41 1600.7 100.0 100 200 S\n")->cpu(), 1600.7);
  EXPECT_EQ(reports.back().value().at(41)->memory(), 100.0);
}

TEST_F(ProcessLine, AShareWithoutADecimalIsLeftOut) {
  EXPECT_TRUE(isUntouched(*read("41 1 0.1 100 200 S\n")));
  EXPECT_TRUE(isUntouched(*read("41 1.5 0 100 200 S\n")));
  EXPECT_TRUE(isUntouched(*read("41 1. 0.1 100 200 S\n")));
  EXPECT_TRUE(isUntouched(*read("41 .5 0.1 100 200 S\n")));
}

TEST_F(ProcessLine, AnyCharacterSeparatesDecimalsAndTheShareEndsThere) {
  const auto info = read("41 1,5 2,7 100 200 S\n");
  EXPECT_EQ(info->cpu(), 1.0);
  EXPECT_EQ(info->memory(), 2.0);
  EXPECT_EQ(info->stats(), "S");
}

TEST_F(ProcessLine, WithoutANewlineIsCutOff) {
  EXPECT_TRUE(isUntouched(*read("41 1.5 0.1 100 200 S")));
}

TEST_F(ProcessLine, BlanksAroundColumnsDoNotMatter) {
  EXPECT_EQ(read("\n \t41\t1.5   0.1\t100 200  S \t\n")->virtMemoryPages(), 200);
}

TEST_F(ProcessLine, ASizeThatIsTooLargeGivesTheLargest) {
  const auto info = read("41 1.5 0.1 99999999999999999999999 21474836480 S\n");
  EXPECT_EQ(info->phyMemoryPages(), std::numeric_limits<std::int32_t>::max());
  EXPECT_EQ(info->virtMemoryPages(), std::numeric_limits<std::int32_t>::max());
}

TEST_F(ProcessLine, AWrongIdentifierBehindWhichOneStandsIsTakenFromTheLine) {
  // The pattern may begin anywhere in a line.
  EXPECT_EQ(read("x 41 1.5 0.1 100 200 S\n")->cpu(), 1.5);
}

TEST_F(ProcessLine, OutputThatIsNotUtf8IsLeftOutAsAWhole) {
  EXPECT_TRUE(isUntouched(*read("41 1.5 0.1 100 200 S\n\xFF\n")));
  EXPECT_TRUE(isUntouched(*read("\xC3(\n41 1.5 0.1 100 200 S\n")));
}

TEST_F(ProcessLine, OutputWithOtherCharactersIsRead) {
  EXPECT_EQ(read("Größe \xF0\x9F\x98\x80\n41 1.5 0.1 100 200 S\n")->cpu(), 1.5);
  EXPECT_EQ(read(std::string("\0\n41 1.5 0.1 100 200 S\n", 23))->cpu(), 1.5);
}

TEST_F(ProcessLine, NoOutputLeavesTheRecordsAsTheyAre) {
  launch({{"Mail", "/Mail.app", 41}});
  monitor->updateInfo();
  EXPECT_TRUE(isUntouched(*reports.at(0).value().at(41)));
}

TEST_F(ProcessLine, IsReadByThePatternThatIsSet) {
  const auto pattern = systemTextPatterns()->compile("(\\d+) (\\d+)%");
  monitor->setPsRegex(pattern);
  EXPECT_EQ(monitor->psRegex(), pattern);
  const auto info = read("41 75%\n");
  EXPECT_EQ(info->cpu(), 75.0);
  EXPECT_EQ(info->memory(), 0.0);  // groups that the pattern has not
  EXPECT_EQ(info->stats(), "");
}

TEST_F(ProcessLine, WithoutAPatternNoneIsRead) {
  monitor->setPsRegex(nullptr);
  EXPECT_TRUE(isUntouched(*read("41 1.5 0.1 100 200 S\n")));
}

TEST_F(ProcessLine, APatternThatCantBeCompiledIsNone) {
  ports.patterns->refuses = true;
  monitor = ProcessStats::init();
  monitor->setDelegate(delegate);
  EXPECT_EQ(monitor->psRegex(), nullptr);
  EXPECT_TRUE(isUntouched(*read("41 1.5 0.1 100 200 S\n")));
}

}  // namespace
}  // namespace vantile
