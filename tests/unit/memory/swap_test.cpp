#include <gtest/gtest.h>

#include <memory>
#include <string>
#include <vector>

#include "vantile/memory/memory.h"
#include "vantile/memory/swap_files.h"

#include "fakes/fake_memory_ports.h"
#include "fakes/fake_utility_ports.h"
#include "fakes/manual_workers.h"
#include "fakes/recorded_log.h"
#include "fakes/stepped_loop.h"

namespace vantile {
namespace {

const char* const pagerLine = " 41 ?? Ss 0:00 /sbin/dynamic_pager -F /vm/swapfile\n";

class Swap : public ::testing::Test {
 protected:
  std::shared_ptr<KVDMemory> monitor() {
    KVDMemory::singleton();
    return KVDMemory::init();
  }
  std::shared_ptr<Dictionary> stats() { return monitor()->swapStats(); }

  void addFile(const std::string& name, std::uint64_t bytes) {
    ports.folders->file(name, bytes);
    ports.files->files["/vm/" + name].facts = {FileKind::regular, bytes, 1, {}};
  }
  void addFolder(const std::string& name) {
    ports.folders->folder(name);
    ports.files->files["/vm/" + name].facts = {FileKind::folder, 4096, 1, {}};
  }

  testing::FakeUtilityPorts utility;
  testing::FakeMemoryPorts ports;
  testing::SteppedLoop loop;
};

/// A kernel that keeps no list: the pager's command line tells.
class PagerSwap : public Swap {
 protected:
  PagerSwap() { ports.tasks->output = {pagerLine}; }
};

TEST_F(PagerSwap, ReadsTheProcessListInQuarterSeconds) {
  ports.tasks->output = {" 1 ?? Ss 0:00 /sbin/la", "unchd\n", pagerLine};
  stats();
  EXPECT_EQ(ports.tasks->log,
            (std::vector<std::string>{"launch /bin/ps -axww", "read", "pause 250000", "read",
                                      "pause 250000", "read", "pause 250000"}));
}

TEST_F(PagerSwap, AProcessListInPiecesIsReadAsOne) {
  ports.tasks->output = {" 41 ?? Ss 0:00 /sbin/dynamic_pa", "ger -F /else/page\n"};
  EXPECT_EQ(*stats()->text("swap_path"), "/else");
}

TEST_F(PagerSwap, TheFolderIsThePathWithoutItsLastComponent) {
  ports.tasks->output = {"dynamic_pager -F /private/var/vm/swapfile"};
  EXPECT_EQ(*stats()->text("swap_path"), "/private/var/vm");
}

TEST_F(PagerSwap, AListThatCanNotBeStartedGivesTheDefaults) {
  ports.tasks->refuses = true;
  EXPECT_EQ(*stats()->text("swap_path"), "/private/var/vm/");
}

TEST_F(PagerSwap, AListThatCanNotBeReadToItsEndIsNotUsedAtAll) {
  ports.tasks->output = {pagerLine, std::nullopt};
  EXPECT_EQ(*stats()->text("swap_path"), "/private/var/vm/");
}

TEST_F(PagerSwap, WhatIsStillInThePipeWhenTheProgramHasEndedIsNotRead) {
  ports.tasks->output = {};
  EXPECT_EQ(*stats()->text("swap_path"), "/private/var/vm/");
  EXPECT_EQ(ports.tasks->log, std::vector<std::string>{"launch /bin/ps -axww"});
}

TEST_F(PagerSwap, TheDefaultPrefixIsSwapfile) {
  ports.tasks->refuses = true;
  EXPECT_EQ(findSwapLocation(MemoryPorts::installed()).prefix, "swapfile");
}

TEST_F(PagerSwap, CountsTheFilesWithThePrefixAndTheirBytes) {
  addFile("swapfile0", 100);
  addFile("swapfile1", 200);
  addFile("sleepimage", 5000);
  const auto swap = stats();
  EXPECT_EQ(swap->uint64("swap_count"), 2u);
  EXPECT_EQ(swap->uint64("swap_size"), 300u);
  EXPECT_EQ(swap->uint64("swap_countpeak"), 2u);
}

TEST_F(PagerSwap, FoldersDoNotCountButAreLookedInto) {
  addFolder("swapfiles");
  addFile("swapfiles/one", 7);
  addFolder("other");
  addFile("other/swapfile9", 9);  // its path from the folder does not begin with the prefix
  const auto swap = stats();
  EXPECT_EQ(swap->uint64("swap_count"), 1u);
  EXPECT_EQ(swap->uint64("swap_size"), 7u);
}

TEST_F(PagerSwap, ALinkCountsWithItsOwnSizeWhereItLeadsToAFile) {
  ports.folders->link("swapfile0");
  ports.files->files["/vm/swapfile0"].facts = {FileKind::symbolicLink, 11, 1, {}};
  const auto swap = stats();
  EXPECT_EQ(swap->uint64("swap_count"), 1u);
  EXPECT_EQ(swap->uint64("swap_size"), 11u);
  EXPECT_EQ(ports.files->log.front().second, true);
  EXPECT_EQ(ports.files->log.back().second, false);
}

TEST_F(PagerSwap, AnEntryThatIsGoneMeanwhileDoesNotCount) {
  ports.folders->file("swapfile0", 100);
  EXPECT_EQ(stats()->uint64("swap_count"), 0u);
}

TEST_F(PagerSwap, AMissingFolderGivesNothingAndLeavesThePeakAlone) {
  ports.tasks->output = {"dynamic_pager -F /nowhere/swapfile"};
  const auto swap = stats();
  EXPECT_EQ(swap->uint64("swap_count"), 0u);
  EXPECT_EQ(swap->uint64("swap_size"), 0u);
  EXPECT_EQ(swap->uint64("swap_countpeak"), 0u);
  EXPECT_FALSE(countSwapFiles(MemoryPorts::installed(), {"/nowhere", "swapfile"}).anyEntry);
}

TEST_F(PagerSwap, AFolderWithNoSwapFileHasEntriesAllTheSame) {
  addFile("sleepimage", 1);
  const auto files = countSwapFiles(MemoryPorts::installed(), {"/vm", "swapfile"});
  EXPECT_TRUE(files.anyEntry);
  EXPECT_EQ(files.count, 0u);
}

TEST_F(PagerSwap, AFolderPathWithASlashAtItsEndIsTheSame) {
  addFile("swapfile0", 100);
  EXPECT_EQ(countSwapFiles(MemoryPorts::installed(), {"/vm/", "swapfile"}).count, 1u);
}

TEST_F(PagerSwap, TellsTheUseThatTheKernelReports) {
  ports.swap->used = SwapUsage{12345, true};
  const auto swap = stats();
  EXPECT_EQ(swap->uint64("swap_used"), 12345u);
  EXPECT_EQ(swap->boolean("swap_encrypted"), true);
}

TEST_F(PagerSwap, AnUnknownUseIsZeroAndNotEncrypted) {
  const auto swap = stats();
  EXPECT_EQ(swap->uint64("swap_used"), 0u);
  EXPECT_EQ(swap->boolean("swap_encrypted"), false);
}

TEST_F(PagerSwap, ASystemBeforeTigerIsNotAskedForItsUse) {
  utility.version->told = "10.3.9";
  ports.swap->used = SwapUsage{12345, true};
  const auto swap = stats();
  EXPECT_EQ(swap->uint64("swap_used"), 0u);
  EXPECT_EQ(ports.swap->usageReads, 0);
}

TEST_F(PagerSwap, TheDictionaryKeepsItsKindsOfValue) {
  const auto swap = stats();
  EXPECT_TRUE(swap->find("swap_count")->as<std::uint32_t>());
  EXPECT_TRUE(swap->find("swap_countpeak")->as<std::uint32_t>());
  EXPECT_TRUE(swap->find("swap_size")->as<std::uint64_t>());
  EXPECT_TRUE(swap->find("swap_used")->as<std::uint64_t>());
  EXPECT_TRUE(swap->find("swap_encrypted")->as<bool>());
  EXPECT_EQ(swap->size(), 6u);
}

TEST_F(PagerSwap, OnlyTheFirstCallOfAMonitorGivesOne) {
  addFile("swapfile0", 100);
  const auto memory = monitor();
  EXPECT_NE(memory->swapStats(), nullptr);
  EXPECT_EQ(memory->swapStats(), nullptr);
  EXPECT_EQ(memory->swapStats(), nullptr);
}

TEST_F(PagerSwap, TheProcessListIsReadOnceAMonitor) {
  const auto memory = monitor();
  memory->swapStats();
  memory->swapStats();
  EXPECT_EQ(ports.tasks->log.size(), 3u);
  monitor()->swapStats();
  EXPECT_EQ(ports.tasks->log.size(), 6u);
}

TEST_F(PagerSwap, AFolderThatWasFoundBeforeLeavesNothingToTell) {
  const auto memory = monitor();
  memory->initializeSwapPath();
  EXPECT_EQ(memory->swapStats(), nullptr);
}

TEST_F(PagerSwap, NothingOfItIsLogged) {
  const testing::RecordedLog log;
  ports.tasks->refuses = true;
  stats();
  EXPECT_TRUE(log.lines.empty());
}

/// A kernel that lists its swap areas.
class ListedSwap : public Swap {
 protected:
  ListedSwap() {
    ports.swap->list = {{"/dev/zram0", false, 1000},
                        {"/var/swap files/main.swap", true, 300},
                        {"/dev/sda2", false, 20}};
  }
};

TEST_F(ListedSwap, CountsTheKernelsAreasOfEveryKind) {
  const auto swap = stats();
  EXPECT_EQ(swap->uint64("swap_count"), 3u);
  EXPECT_EQ(swap->uint64("swap_countpeak"), 3u);
  EXPECT_EQ(swap->uint64("swap_size"), 1320u);
}

TEST_F(ListedSwap, TheFirstFileTellsFolderAndPrefix) {
  const auto location = findSwapLocation(MemoryPorts::installed());
  EXPECT_EQ(location.folder, "/var/swap files");
  EXPECT_EQ(location.prefix, "main.swap");
  EXPECT_EQ(*stats()->text("swap_path"), "/var/swap files");
}

TEST_F(ListedSwap, AFileInTheRootFolderStandsInTheRootFolder) {
  ports.swap->list = {{"/swapfile", true, 1}};
  EXPECT_EQ(*stats()->text("swap_path"), "/");
}

TEST_F(ListedSwap, WithoutAFileTheDefaultsApply) {
  ports.swap->list = {{"/dev/zram0", false, 1000}};
  EXPECT_EQ(*stats()->text("swap_path"), "/private/var/vm/");
}

TEST_F(ListedSwap, AnEmptyListIsNoSwap) {
  ports.swap->list.emplace();
  const auto swap = stats();
  EXPECT_EQ(swap->uint64("swap_count"), 0u);
  EXPECT_EQ(swap->uint64("swap_countpeak"), 0u);
}

TEST_F(ListedSwap, StartsNoProgramAndWaitsForNothing) {
  stats();
  EXPECT_TRUE(ports.tasks->log.empty());
}

}  // namespace
}  // namespace vantile
