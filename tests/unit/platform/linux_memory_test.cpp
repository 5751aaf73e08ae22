#include "vantile/platform/parsers/linux_memory.h"

#include <gtest/gtest.h>

#include <limits>

#include "unit/platform/fixture.h"

namespace vantile {
namespace {

using testing::fixture;

constexpr std::uint64_t pageSize = 4096;
constexpr std::uint64_t sectorsPerPage = 8;

std::uint64_t sumOf(const VirtualMemoryReading& reading) {
  return reading.free + reading.active + reading.inactive + reading.wired + reading.compressorPages;
}

/// A machine of 1,000 pages, in the words of its files.
struct LinuxMemoryReading : ::testing::Test {
  LinuxMemoryReading() {
    info.memTotal = 4000;
    info.memFree = 400;
    info.active = 800;
    info.inactive = 1200;
  }

  VirtualMemoryReading reading(std::uint64_t size = pageSize) {
    return memory.reading(info, counters, zram, size).value();
  }

  Meminfo info;
  Vmstat counters;
  ZramTotals zram;
  LinuxMemory memory;
};

TEST_F(LinuxMemoryReading, CountsPagesNotKibibytes) {
  EXPECT_EQ(reading().free, 100u);
  EXPECT_EQ(reading().active, 200u);
  EXPECT_EQ(reading().inactive, 300u);
  EXPECT_EQ(reading().wired, 400u);
}

TEST_F(LinuxMemoryReading, KnowsLargerPages) {
  EXPECT_EQ(reading(16384).free, 25u);
  counters.pgpgin = 1600;
  EXPECT_EQ(reading(16384).pageIns, 100u);
}

TEST_F(LinuxMemoryReading, FiveCountsMakeUpTheTotal) {
  info.zswap = 40;
  zram.memory.occupiedBytes = 5 * pageSize;
  EXPECT_EQ(sumOf(reading()), 1000u);
}

TEST_F(LinuxMemoryReading, OfRecordedMachinesMakesUpTheirTotals) {
  for (const char* name : {"meminfo.txt", "meminfo-zswap.txt"}) {
    info = parseMeminfo(fixture(name));
    counters = parseWholeVmstat(fixture("vmstat.txt"));
    EXPECT_EQ(sumOf(reading()), *info.memTotal / 4) << name;
  }
}

TEST_F(LinuxMemoryReading, TheCompressorIsZswapAndZramTogether) {
  info.zswap = 40;
  info.zswapped = 120;
  zram.memory = {30 * pageSize, 5 * pageSize};
  EXPECT_EQ(reading().compressorPages, 15u);
  EXPECT_EQ(reading().uncompressedPages, 60u);
}

TEST_F(LinuxMemoryReading, WiredIsNeverBelowNothing) {
  info.active = 3000;
  EXPECT_EQ(reading().wired, 0u);
  info.active = 40000;
  EXPECT_EQ(reading().wired, 0u);
  EXPECT_EQ(reading().compressorPages, 0u);
}

TEST_F(LinuxMemoryReading, TheCompressorOccupiesNoMoreThanIsLeft) {
  zram.memory.occupiedBytes = 5000 * pageSize;
  EXPECT_EQ(reading().compressorPages, 400u);
  EXPECT_EQ(reading().wired, 0u);
  EXPECT_EQ(sumOf(reading()), 1000u);
}

TEST_F(LinuxMemoryReading, IsNothingWithoutACountThatItNeeds) {
  for (auto count : {&Meminfo::memTotal, &Meminfo::memFree, &Meminfo::active, &Meminfo::inactive}) {
    Meminfo without = info;
    without.*count = std::nullopt;
    EXPECT_FALSE(memory.reading(without, counters, zram, pageSize));
  }
}

TEST_F(LinuxMemoryReading, CountersThatTheKernelLacksAreAbsent) {
  const auto bare = reading();
  EXPECT_FALSE(bare.pageIns || bare.pageOuts || bare.faults || bare.purges || bare.purgeable);
}

TEST_F(LinuxMemoryReading, CountersThatNoLinuxKeepsAreAbsent) {
  counters = parseWholeVmstat(fixture("vmstat.txt"));
  const auto whole = reading();
  EXPECT_FALSE(whole.hits || whole.lookups || whole.copyOnWriteFaults || whole.speculative);
}

TEST_F(LinuxMemoryReading, TakesFaultsPurgesAndReclaimableMemoryAsTheyAre) {
  counters.pgfault = 77;
  counters.pglazyfreed = 8;
  info.kReclaimable = 400;
  EXPECT_EQ(reading().faults, 77u);
  EXPECT_EQ(reading().purges, 8u);
  EXPECT_EQ(reading().purgeable, 100u);
}

TEST_F(LinuxMemoryReading, ZramTrafficIsTakenOutOfPaging) {
  counters.pgpgin = 400;
  counters.pgpgout = 800;
  zram.traffic = {30 * sectorsPerPage, 50 * sectorsPerPage};
  EXPECT_EQ(reading().pageIns, 70u);
  EXPECT_EQ(reading().pageOuts, 150u);
}

TEST_F(LinuxMemoryReading, CompressionsAreThoseOfZswapAndZram) {
  counters.zswpin = 3;
  counters.zswpout = 5;
  zram.traffic = {30 * sectorsPerPage, 50 * sectorsPerPage};
  EXPECT_EQ(reading().compressions, 55u);
  EXPECT_EQ(reading().decompressions, 33u);
}

TEST_F(LinuxMemoryReading, CompressionsDoNotRunBackwardsWhenTheirCounterIsMissedOnce) {
  counters.zswpin = 3;
  counters.zswpout = 5;
  (void)reading();
  counters = {};
  EXPECT_GE(reading().compressions.value_or(5), 5u);
  EXPECT_GE(reading().decompressions.value_or(3), 3u);
}

TEST(PagingCounter, DoesNotRunBackwardsWhenZramTrafficShowsUpLate) {
  PagingCounter counter;
  EXPECT_EQ(counter.pages(400, 0, pageSize), 100u);
  EXPECT_EQ(counter.pages(440, 30 * sectorsPerPage, pageSize), 100u);
  EXPECT_EQ(counter.pages(800, 30 * sectorsPerPage, pageSize), 170u);
}

TEST(PagingCounter, AKernelCounterThatWentBackwardsStartsAnew) {
  PagingCounter counter;
  EXPECT_EQ(counter.pages(400, 0, pageSize), 100u);
  EXPECT_EQ(counter.pages(40, 0, pageSize), 10u);
  EXPECT_EQ(counter.pages(80, 0, pageSize), 20u);
}

TEST(PagingCounter, MoreZramTrafficThanTrafficIsNothing) {
  EXPECT_EQ(PagingCounter().pages(4, 800, pageSize), 0u);
}

TEST(ZramSum, AddsDevicesUp) {
  ZramSum sum;
  sum.beginReading();
  sum.add("zram0", {100, 10}, {5, 6});
  sum.add("zram1", {200, 20}, {7, 8});
  EXPECT_EQ(sum.totals().memory.heldBytes, 300u);
  EXPECT_EQ(sum.totals().memory.occupiedBytes, 30u);
  EXPECT_EQ(sum.totals().traffic.readSectors, 12u);
  EXPECT_EQ(sum.totals().traffic.writtenSectors, 14u);
}

TEST(ZramSum, CountsTrafficOnceAndMemoryAsItIsNow) {
  ZramSum sum;
  sum.add("zram0", {100, 10}, {5, 6});
  sum.beginReading();
  sum.add("zram0", {40, 4}, {6, 8});
  EXPECT_EQ(sum.totals().memory.heldBytes, 40u);
  EXPECT_EQ(sum.totals().traffic.readSectors, 6u);
  EXPECT_EQ(sum.totals().traffic.writtenSectors, 8u);
}

TEST(ZramSum, TheTrafficOfADeviceThatIsGoneStaysCounted) {
  ZramSum sum;
  sum.add("zram0", {100, 10}, {5, 6});
  sum.forget("zram0");
  sum.beginReading();
  EXPECT_EQ(sum.totals().memory.heldBytes, 0u);
  EXPECT_EQ(sum.totals().traffic.readSectors, 5u);
}

TEST(ZramSum, ADeviceThatComesBackUnderItsNameIsAnotherOne) {
  ZramSum sum;
  sum.add("zram0", {100, 10}, {5, 6});
  sum.forget("zram0");
  sum.add("zram0", {100, 10}, {7, 9});
  EXPECT_EQ(sum.totals().traffic.readSectors, 12u);
  EXPECT_EQ(sum.totals().traffic.writtenSectors, 15u);
}

TEST(ZramSum, ADeviceThatWasResetCountsFromNothing) {
  ZramSum sum;
  sum.add("zram0", {100, 10}, {50, 60});
  sum.add("zram0", {100, 10}, {3, 4});
  EXPECT_EQ(sum.totals().traffic.readSectors, 53u);
  EXPECT_EQ(sum.totals().traffic.writtenSectors, 64u);
}

TEST(NarrowedReading, PageCountsStopAtTheLargestNumber) {
  VirtualMemoryReading wide;
  wide.free = 1ull << 32;
  wide.active = (1ull << 32) - 1;
  wide.inactive = 7;
  EXPECT_EQ(narrowed(wide).free, 0xFFFFFFFFu);
  EXPECT_EQ(narrowed(wide).active, 0xFFFFFFFFu);
  EXPECT_EQ(narrowed(wide).inactive, 7u);
}

TEST(NarrowedReading, CountersGoOnFromNothing) {
  VirtualMemoryReading wide;
  wide.pageIns = (1ull << 32) + 5;
  wide.pageOuts = (1ull << 32) - 1;
  wide.faults = 1ull << 32;
  wide.hits = (3ull << 32) + 1;
  wide.lookups = 9;
  wide.copyOnWriteFaults = (1ull << 33) + 2;
  EXPECT_EQ(narrowed(wide).pageIns, 5u);
  EXPECT_EQ(narrowed(wide).pageOuts, 0xFFFFFFFFu);
  EXPECT_EQ(narrowed(wide).faults, 0u);
  EXPECT_EQ(narrowed(wide).hits, 1u);
  EXPECT_EQ(narrowed(wide).lookups, 9u);
  EXPECT_EQ(narrowed(wide).copyOnWriteFaults, 2u);
}

TEST(NarrowedReading, CompressorPagesAreAmongTheWired) {
  VirtualMemoryReading wide;
  wide.wired = 5;
  wide.compressorPages = 3;
  EXPECT_EQ(narrowed(wide).wired, 8u);
  wide.compressorPages = 0xFFFFFFFFu;
  EXPECT_EQ(narrowed(wide).wired, 0xFFFFFFFFu);
}

TEST(NarrowedReading, WhatIsAbsentStaysAbsent) {
  const auto narrow = narrowed({});
  EXPECT_FALSE(narrow.pageIns || narrow.pageOuts || narrow.hits || narrow.lookups);
  EXPECT_FALSE(narrow.faults || narrow.copyOnWriteFaults);
}

}  // namespace
}  // namespace vantile
