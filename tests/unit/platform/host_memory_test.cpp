#include "vantile/platform/linux/host_memory.h"

#include <gtest/gtest.h>
#include <unistd.h>

#include "fakes/temporary_folder.h"
#include "unit/platform/fixture.h"

namespace vantile {
namespace {

using testing::fixture;
using testing::TemporaryFolder;

/// A machine whose /proc and /sys stand in a temporary folder.
struct LinuxHostMemoryTest : ::testing::Test {
  LinuxHostMemoryTest() {
    folder.folder("sys/block");
    folder.file("proc/meminfo", fixture("meminfo.txt"));
    paged(4000, 8000);
    host.lookUpStatistics64();
  }

  VirtualMemoryReading reading() { return host.statistics64(1).value(); }
  void readings(int count) {
    while (count-- > 0) (void)reading();
  }
  /// Kibibytes since boot, and zswap's pages far behind the first part of the file.
  void paged(std::uint64_t in, std::uint64_t out, std::uint64_t compressed = 0) {
    folder.file("proc/vmstat", "pgpgin " + std::to_string(in) + "\npgpgout " + std::to_string(out) +
                                   "\npglazyfreed 7\npgfault 9\n" + std::string(4000, '-') +
                                   "\nzswpin 1\nzswpout " + std::to_string(compressed) + "\n");
  }
  void zram(const std::string& name, std::uint64_t heldPages, std::uint64_t pagesWritten) {
    folder.file("sys/block/" + name + "/mm_stat", std::to_string(heldPages * 4096) + " 0 4096\n");
    folder.file("sys/block/" + name + "/stat",
                "0 0 0 0 0 0 " + std::to_string(pagesWritten * 8) + " 0\n");
  }
  /// As a device that is gone answers through a descriptor that is still open.
  void zramGone(const std::string& name) {
    folder.file("sys/block/" + name + "/mm_stat");
    folder.file("sys/block/" + name + "/stat");
    folder.remove("sys/block/" + name);
  }

  TemporaryFolder folder;
  LinuxHostMemory host{LinuxRoots{folder.path("proc"), folder.path("sys")}};
};

TEST_F(LinuxHostMemoryTest, StatisticsAreThereOnceTheyWereLookedFor) {
  LinuxHostMemory fresh{LinuxRoots{folder.path("proc"), folder.path("sys")}};
  EXPECT_FALSE(fresh.hasStatistics64());
  EXPECT_FALSE(fresh.statistics64(1));
  EXPECT_TRUE(fresh.statistics32(1));
  fresh.lookUpStatistics64();
  EXPECT_TRUE(fresh.hasStatistics64());
  EXPECT_TRUE(fresh.statistics64(1));
}

TEST_F(LinuxHostMemoryTest, AHostHasAName) {
  EXPECT_EQ(host.host(), 1u);
  EXPECT_EQ(host.physicalMemory(), 24684084ull * 1024);
  EXPECT_EQ(host.pageSize(), static_cast<std::uint64_t>(::sysconf(_SC_PAGESIZE)));
}

TEST_F(LinuxHostMemoryTest, WithoutItsFilesThereIsNoHost) {
  LinuxHostMemory nowhere{LinuxRoots{folder.path("none"), folder.path("none")}};
  nowhere.lookUpStatistics64();
  EXPECT_EQ(nowhere.host(), 0u);
  EXPECT_EQ(nowhere.physicalMemory(), 0u);
  EXPECT_FALSE(nowhere.statistics64(1) || nowhere.statistics32(1) || nowhere.pageCounts());
}

TEST_F(LinuxHostMemoryTest, AFileThatComesLaterIsReadThen) {
  LinuxHostMemory early{LinuxRoots{folder.path("later"), folder.path("sys")}};
  EXPECT_EQ(early.host(), 0u);
  folder.file("later/meminfo", fixture("meminfo.txt"));
  EXPECT_EQ(early.host(), 1u);
}

TEST_F(LinuxHostMemoryTest, AReadingThatLacksACountIsNone) {
  folder.file("proc/meminfo", "MemTotal: 4000 kB\nMemFree: 400 kB\nActive: 8 kB\n");
  EXPECT_FALSE(host.statistics64(1) || host.statistics32(1) || host.pageCounts());
  EXPECT_EQ(host.host(), 1u);
}

TEST_F(LinuxHostMemoryTest, AReadingWithoutItsCountersIsNone) {
  folder.remove("proc/vmstat");
  LinuxHostMemory fresh{LinuxRoots{folder.path("proc"), folder.path("sys")}};
  fresh.lookUpStatistics64();
  EXPECT_FALSE(fresh.statistics64(1));
}

TEST_F(LinuxHostMemoryTest, CountersThatTheKernelDoesNotKeepAreAbsent) {
  folder.file("proc/vmstat", "nr_free_pages 1\n");
  const auto bare = reading();
  EXPECT_FALSE(bare.pageIns || bare.pageOuts || bare.faults || bare.purges);
  EXPECT_GT(bare.free, 0u);
}

TEST_F(LinuxHostMemoryTest, EachReadingIsNew) {
  EXPECT_EQ(reading().pageOuts, 2000u);
  paged(4000, 8400);
  EXPECT_EQ(reading().pageOuts, 2100u);
}

TEST_F(LinuxHostMemoryTest, CountersBehindTheFirstPartAreReadToo) {
  folder.file("proc/vmstat", std::string(5000, '-') + "\npgpgin 4\npgpgout 8\npgfault 9\n");
  EXPECT_EQ(reading().pageIns, 1u);
  EXPECT_EQ(reading().faults, 9u);
}

TEST_F(LinuxHostMemoryTest, TheNarrowReadingsAreThoseOfTheWideOne) {
  const auto wide = reading();
  const auto narrow = host.statistics32(1).value();
  const auto counts = host.pageCounts().value();
  EXPECT_EQ(narrow.free, wide.free);
  EXPECT_EQ(narrow.wired, wide.wired + wide.compressorPages);
  EXPECT_EQ(narrow.faults, 9u);
  EXPECT_EQ(counts.free, narrow.free);
  EXPECT_EQ(counts.active, narrow.active);
  EXPECT_EQ(counts.inactive, narrow.inactive);
  EXPECT_EQ(counts.wired, narrow.wired);
}

TEST_F(LinuxHostMemoryTest, ZswapThatHoldsSomethingIsCounted) {
  folder.file("proc/meminfo", fixture("meminfo-zswap.txt"));
  paged(4000, 8000, 55);
  EXPECT_EQ(reading().compressions, 55u);
  EXPECT_EQ(reading().decompressions, 1u);
}

TEST_F(LinuxHostMemoryTest, ZswapThatIsSwitchedOnIsCountedBeforeItHoldsSomething) {
  folder.file("sys/module/zswap/parameters/enabled", "Y\n");
  paged(4000, 8000, 55);
  EXPECT_EQ(reading().compressions, 55u);
}

TEST_F(LinuxHostMemoryTest, ZswapThatIsSwitchedOffIsNot) {
  folder.file("sys/module/zswap/parameters/enabled", "N\n");
  paged(4000, 8000, 55);
  EXPECT_EQ(reading().compressions, 0u);
}

TEST_F(LinuxHostMemoryTest, ZswapStaysCountedOnceItWasInUse) {
  folder.file("proc/meminfo", fixture("meminfo-zswap.txt"));
  paged(4000, 8000, 55);
  (void)reading();
  folder.file("proc/meminfo", fixture("meminfo.txt"));
  EXPECT_EQ(reading().compressions, 55u);
}

TEST_F(LinuxHostMemoryTest, AZramDeviceIsTheCompressor) {
  zram("zram0", 300, 50);
  EXPECT_EQ(reading().uncompressedPages, 300u);
  EXPECT_EQ(reading().compressorPages, 1u);
  EXPECT_EQ(reading().compressions, 50u);
  EXPECT_EQ(reading().pageOuts, 1950u);
}

TEST_F(LinuxHostMemoryTest, OtherBlockDevicesAreNot) {
  folder.file("sys/block/sda/stat", "0 0 0 0 0 0 800 0\n");
  folder.file("sys/block/sda/mm_stat", "409600 0 4096\n");
  EXPECT_EQ(reading().uncompressedPages, 0u);
  EXPECT_EQ(reading().pageOuts, 2000u);
}

TEST_F(LinuxHostMemoryTest, AZramDeviceThatAppearsIsFoundInTimeAndNothingRunsBackwards) {
  EXPECT_EQ(reading().pageOuts, 2000u);
  zram("zram0", 300, 50);
  readings(15);
  EXPECT_EQ(reading().uncompressedPages, 300u);
  EXPECT_EQ(reading().pageOuts, 2000u);
  paged(4000, 8800);
  EXPECT_EQ(reading().pageOuts, 2150u);
}

TEST_F(LinuxHostMemoryTest, TheFirstUseOfAZramDeviceIsSeenInTime) {
  zram("zram0", 0, 0);
  folder.file("sys/block/zram0/mm_stat", "0 0 0\n");
  EXPECT_EQ(reading().compressorPages, 0u);
  zram("zram0", 4, 4);
  readings(16);
  EXPECT_EQ(reading().compressorPages, 1u);
  zram("zram0", 9, 9);
  EXPECT_EQ(reading().uncompressedPages, 9u);  // from then on at once
}

TEST_F(LinuxHostMemoryTest, AZramDeviceThatBecomesSwapIsFoundAtOnce) {
  (void)reading();
  zram("zram0", 300, 50);
  folder.file("proc/meminfo", fixture("meminfo-zswap.txt"));  // its swap total is another one
  EXPECT_EQ(reading().compressions, 50u);
}

TEST_F(LinuxHostMemoryTest, AZramDeviceThatVanishesTakesNoCounterBack) {
  zram("zram0", 300, 50);
  (void)reading();
  zramGone("zram0");
  const auto after = reading();
  EXPECT_EQ(after.uncompressedPages, 0u);
  EXPECT_EQ(after.compressions, 50u);
  EXPECT_EQ(after.pageOuts, 1950u);
}

TEST_F(LinuxHostMemoryTest, AZramDeviceThatCanNotBeReadOnceIsNotCountedTwice) {
  zram("zram0", 300, 50);
  EXPECT_EQ(reading().compressions, 50u);
  folder.file("sys/block/zram0/mm_stat", "");
  EXPECT_EQ(reading().compressions, 50u);
  zram("zram0", 300, 60);
  readings(16);
  EXPECT_EQ(reading().compressions, 60u);
}

TEST_F(LinuxHostMemoryTest, AZramDeviceThatComesBackUnderItsNameCountsOn) {
  zram("zram0", 300, 50);
  (void)reading();
  zramGone("zram0");
  (void)reading();
  zram("zram0", 20, 60);
  readings(15);
  EXPECT_EQ(reading().uncompressedPages, 20u);
  EXPECT_EQ(reading().compressions, 110u);
  EXPECT_EQ(reading().pageOuts, 1950u);
}

TEST_F(LinuxHostMemoryTest, AZramDeviceWithoutReadableFilesHarmsNoOther) {
  folder.file("sys/block/zram0/mm_stat", "nonsense\n");
  folder.folder("sys/block/zram1");
  zram("zram2", 300, 50);
  EXPECT_EQ(reading().uncompressedPages, 300u);
}

}  // namespace
}  // namespace vantile
