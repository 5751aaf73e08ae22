#include "vantile/platform/macos/host_memory.h"

#include <cstring>

#include "seam.h"

namespace vantile {
namespace {

class HostMemorySeam : public Seam {
 protected:
  void TearDown() override {
    memory.reset();
    Seam::TearDown();
  }

  static constexpr std::uint64_t high = std::uint64_t{1} << 32;
  std::shared_ptr<HostMemory> memory = makeHostMemory();
};

TEST_F(HostMemorySeam, AsksForItsHostRightOnce) {
  EXPECT_EQ(memory->host(), 0x203u);
  EXPECT_EQ(memory->host(), 0x203u);
  memory->pageCounts();
  EXPECT_EQ(fakes::live().hostRights, 1);
}

TEST_F(HostMemorySeam, GivesBackItsHostRight) {
  memory->host();
  memory.reset();
  EXPECT_EQ(fakes::live().hostRights, 0);
}

TEST_F(HostMemorySeam, AsksAgainAfterAHostThatWasRefused) {
  fakes::machine.hostName = 0;
  EXPECT_EQ(memory->host(), 0u);
  fakes::machine.hostName = 0x203;
  EXPECT_EQ(memory->host(), 0x203u);
}

TEST_F(HostMemorySeam, KeepsWhatTheLastLookUpFound) {
  EXPECT_FALSE(memory->hasStatistics64());
  memory->lookUpStatistics64();
  EXPECT_TRUE(memory->hasStatistics64());
  fakes::machine.exportsStatistics64 = false;
  memory->lookUpStatistics64();
  EXPECT_FALSE(memory->hasStatistics64());
}

TEST_F(HostMemorySeam, ReadsNothingInto64BitsBeforeTheLookUp) {
  EXPECT_FALSE(memory->statistics64(memory->host()));
}

TEST_F(HostMemorySeam, ReadsEveryCountOfTheWideRecord) {
  memory->lookUpStatistics64();
  const auto reading = memory->statistics64(memory->host());
  ASSERT_TRUE(reading);
  EXPECT_EQ(reading->free, 10u);
  EXPECT_EQ(reading->active, 20u);
  EXPECT_EQ(reading->inactive, 30u);
  EXPECT_EQ(reading->wired, 40u);
  EXPECT_EQ(reading->pageIns, high + 50);
  EXPECT_EQ(reading->pageOuts, high + 60);
  EXPECT_EQ(reading->faults, high + 70);
  EXPECT_EQ(reading->copyOnWriteFaults, high + 80);
  EXPECT_EQ(reading->lookups, high + 90);
  EXPECT_EQ(reading->hits, high + 100);
  EXPECT_EQ(reading->purges, high + 110);
  EXPECT_EQ(reading->purgeable, 120u);
  EXPECT_EQ(reading->speculative, 130u);
  EXPECT_EQ(reading->decompressions, high + 140);
  EXPECT_EQ(reading->compressions, high + 150);
  EXPECT_EQ(reading->compressorPages, 160u);
  EXPECT_EQ(reading->uncompressedPages, high + 170);
}

TEST_F(HostMemorySeam, ReadsEveryCountOfTheNarrowRecord) {
  const auto reading = memory->statistics32(memory->host());
  ASSERT_TRUE(reading);
  EXPECT_EQ(reading->free, 1u);
  EXPECT_EQ(reading->active, 2u);
  EXPECT_EQ(reading->inactive, 3u);
  EXPECT_EQ(reading->wired, 4u);
  EXPECT_EQ(reading->pageIns, 5u);
  EXPECT_EQ(reading->pageOuts, 6u);
  EXPECT_EQ(reading->faults, 7u);
  EXPECT_EQ(reading->copyOnWriteFaults, 8u);
  EXPECT_EQ(reading->lookups, 9u);
  EXPECT_EQ(reading->hits, 10u);
}

TEST_F(HostMemorySeam, CountsPagesWithoutALookUp) {
  const auto counts = memory->pageCounts();
  ASSERT_TRUE(counts);
  EXPECT_EQ(counts->free, 1u);
  EXPECT_EQ(counts->active, 2u);
  EXPECT_EQ(counts->inactive, 3u);
  EXPECT_EQ(counts->wired, 4u);
}

TEST_F(HostMemorySeam, ReadsNothingWhereTheSystemRefuses) {
  memory->lookUpStatistics64();
  fakes::machine.statisticsResult = 5;
  EXPECT_FALSE(memory->statistics64(memory->host()));
  EXPECT_FALSE(memory->statistics32(memory->host()));
  EXPECT_FALSE(memory->pageCounts());
}

TEST_F(HostMemorySeam, ReadsNothingOfNoHost) {
  memory->lookUpStatistics64();
  EXPECT_FALSE(memory->statistics64(0));
  EXPECT_FALSE(memory->statistics32(0));
}

TEST_F(HostMemorySeam, KnowsThePageSizeAndTheInstalledMemory) {
  const std::uint64_t installed = 17'179'869'184;
  std::string bytes(sizeof installed, '\0');
  std::memcpy(bytes.data(), &installed, sizeof installed);
  fakes::machine.sysctlValues["hw.memsize"] = bytes;
  EXPECT_EQ(memory->pageSize(), 16384u);
  EXPECT_EQ(memory->physicalMemory(), installed);
}

TEST_F(HostMemorySeam, KnowsNoInstalledMemoryWhereTheSystemDoesNotTell) {
  EXPECT_EQ(memory->physicalMemory(), 0u);
}

TEST_F(HostMemorySeam, IsOneForTheProcess) {
  EXPECT_EQ(systemHostMemory(), systemHostMemory());
}

}  // namespace
}  // namespace vantile
