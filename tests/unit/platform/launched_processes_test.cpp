#include "vantile/platform/parsers/launched_processes.h"

#include <gtest/gtest.h>

#include <utility>

namespace vantile {
namespace {

// Entries.
constexpr std::size_t mail = 0, terminal = 1, chess = 2, none = LaunchedProcess::none;

const std::string firstUnit = "/app-mail-1.scope", secondUnit = "/app-mail-2.scope";
const std::string mailProgram = "/usr/bin/mail", chessProgram = "/usr/bin/chess";

/// A process that is begun by another one; later ones have larger numbers.
LaunchedProcess process(std::int32_t pid, std::int32_t parent = 1) {
  LaunchedProcess process;
  process.pid = pid;
  process.parent = parent;
  process.startTicks = static_cast<std::uint64_t>(pid) * 10;
  return process;
}
LaunchedProcess inUnit(LaunchedProcess of, const std::string& group, std::size_t entry) {
  of.group = &group;
  of.unitEntry = entry;
  return of;
}
LaunchedProcess launched(LaunchedProcess of, std::size_t entry) {
  of.launchEntry = entry;
  return of;
}
LaunchedProcess runs(LaunchedProcess of, const std::string& program, std::size_t entry) {
  of.executable = &program;
  of.programEntry = entry;
  return of;
}

using Found = std::vector<std::pair<std::int32_t, std::size_t>>;

Found leaders(const std::vector<LaunchedProcess>& processes) {
  Found found;
  for (const auto& leader : applicationLeaders(processes))
    found.emplace_back(processes[leader.process].pid, leader.entry);
  return found;
}

TEST(ApplicationLeaders, OfNothingAreNone) {
  EXPECT_TRUE(leaders({}).empty());
  EXPECT_TRUE(leaders({process(5)}).empty());
}

TEST(ApplicationLeaders, OfAUnitIsTheProcessThatBeganFirst) {
  auto wrapped = inUnit(process(5), firstUnit, mail);  // the numbers have begun anew since
  wrapped.startTicks = 9000;
  EXPECT_EQ(leaders({wrapped, inUnit(process(6), firstUnit, mail),
                     inUnit(process(7, 6), firstUnit, mail)}),
            (Found{{6, mail}}));
}

TEST(ApplicationLeaders, OfProcessesThatBeganTogetherIsTheFirstNumber) {
  auto same = inUnit(process(6), firstUnit, mail);
  same.startTicks = 50;
  EXPECT_EQ(leaders({inUnit(process(5), firstUnit, mail), same}), (Found{{5, mail}}));
}

TEST(ApplicationLeaders, EachUnitHasItsOwn) {
  EXPECT_EQ(leaders({inUnit(process(5), firstUnit, mail), inUnit(process(6), secondUnit, mail)}),
            (Found{{5, mail}, {6, mail}}));
}

TEST(ApplicationLeaders, AUnitWithoutAnEntryIsNoApplication) {
  auto other = inUnit(process(5), firstUnit, none);
  EXPECT_TRUE(leaders({other}).empty());
  EXPECT_EQ(leaders({runs(other, mailProgram, mail)}), (Found{{5, mail}}));
}

TEST(ApplicationLeaders, WhatWasLaunchedIsOneWhateverItRuns) {
  EXPECT_EQ(leaders({launched(process(5), mail)}), (Found{{5, mail}}));
  EXPECT_EQ(leaders({runs(launched(process(5), mail), chessProgram, chess)}), (Found{{5, mail}}));
}

TEST(ApplicationLeaders, WhatWasLaunchedTwiceIsThereTwice) {
  EXPECT_EQ(leaders({launched(process(5), mail), launched(process(6, 5), mail)}),
            (Found{{5, mail}, {6, mail}}));
}

TEST(ApplicationLeaders, AUnitThatWasLaunchedIsThereOnce) {
  EXPECT_EQ(leaders({launched(inUnit(process(5), firstUnit, mail), mail),
                     launched(inUnit(process(6, 5), firstUnit, mail), mail)}),
            (Found{{5, mail}}));
}

TEST(ApplicationLeaders, AnotherApplicationWithinAUnitIsOne) {
  EXPECT_EQ(leaders({inUnit(process(5), firstUnit, terminal),
                     runs(inUnit(process(6, 5), firstUnit, terminal), chessProgram, chess),
                     launched(inUnit(process(7, 5), firstUnit, terminal), mail)}),
            (Found{{5, terminal}, {6, chess}, {7, mail}}));
}

TEST(ApplicationLeaders, AnExecutableOfAnEntryMakesOne) {
  EXPECT_EQ(leaders({runs(process(5), mailProgram, mail), runs(process(6), chessProgram, chess)}),
            (Found{{5, mail}, {6, chess}}));
}

TEST(ApplicationLeaders, ItsOwnChildrenAreNone) {
  EXPECT_EQ(leaders({runs(process(5), mailProgram, mail), runs(process(6, 5), mailProgram, mail),
                     runs(process(7, 6), mailProgram, mail)}),
            (Found{{5, mail}}));
}

TEST(ApplicationLeaders, ChildrenOfWhatWasLaunchedAreNone) {
  EXPECT_EQ(leaders({launched(process(5), mail), runs(process(6, 5), mailProgram, mail)}),
            (Found{{5, mail}}));
}

TEST(ApplicationLeaders, ChildrenOfTheSameExecutableAreNoneByWhicheverEntryItIsKnown) {
  // Launched by an entry for new messages; the executable's own entry is another one.
  EXPECT_EQ(leaders({runs(launched(process(5), chess), mailProgram, mail),
                     runs(process(6, 5), mailProgram, mail)}),
            (Found{{5, chess}}));
  EXPECT_EQ(leaders({runs(inUnit(process(5), firstUnit, chess), mailProgram, mail),
                     runs(process(6, 5), mailProgram, mail)}),
            (Found{{5, chess}}));
}

TEST(ApplicationLeaders, ChildrenOfUnknownExecutablesAreOnes) {
  auto unknown = process(6, 5);
  unknown.programEntry = mail;
  EXPECT_EQ(leaders({launched(process(5), chess), unknown}), (Found{{5, chess}, {6, mail}}));
}

TEST(ApplicationLeaders, OneThatIsStartedFromAnotherIsOne) {
  EXPECT_EQ(leaders({launched(process(5), terminal), runs(process(7, 6), chessProgram, chess),
                     runs(process(8, 5), mailProgram, mail)}),
            (Found{{5, terminal}, {7, chess}, {8, mail}}));
}

TEST(ApplicationLeaders, AChildWhoseParentEndedLeads) {
  EXPECT_EQ(leaders({runs(process(6, 5), mailProgram, mail)}), (Found{{6, mail}}));
}

TEST(ApplicationLeaders, AProcessThatIsItsOwnParentHarmsNobody) {
  EXPECT_TRUE(leaders({runs(process(6, 6), mailProgram, mail)}).empty());
}

}  // namespace
}  // namespace vantile
