#include <gtest/gtest.h>

#include <limits>
#include <locale>
#include <new>
#include <system_error>

#include "fakes/recorded_log.h"
#include "unit/disk/disk_fixture.h"

namespace vantile {
namespace {

using DiskSpace = testing::Disk;
using Paths = std::vector<std::string>;

TEST_F(DiskSpace, IsThatOfTheVolumeOfTheHome) {
  volumes.spaces["/users/ada"] = {3'000'000'000, 1'000'000'000, 77};
  EXPECT_EQ(KVDDisk::totalDiskSpaceInBytes(), 3'000'000'000u);
  EXPECT_EQ(KVDDisk::freeDiskSpaceInBytes(), 1'000'000'000u);
  EXPECT_EQ(KVDDisk::usedDiskSpaceInBytes(), 2'000'000'000u);
  EXPECT_EQ(KVDDisk::numberOfNodes(), 77u);
}

TEST_F(DiskSpace, AsTextIsFormatted) {
  volumes.spaces["/users/ada"] = {3'000'000'000, 2'500'000, std::nullopt};
  EXPECT_EQ(KVDDisk::totalDiskSpace(), "3.00 GB");
  EXPECT_EQ(KVDDisk::freeDiskSpace(), "2.50 MB");
  EXPECT_EQ(KVDDisk::usedDiskSpace(), "3.00 GB");
  volumes.spaces["/users/ada"] = {3'000, 2'000, std::nullopt};
  EXPECT_EQ(KVDDisk::usedDiskSpace(), "1000.00 bytes");
}

TEST_F(DiskSpace, WhatTheSystemDoesNotTellIsZero) {
  EXPECT_EQ(KVDDisk::totalDiskSpaceInBytes(), 0u);
  EXPECT_EQ(KVDDisk::freeDiskSpaceInBytes(), 0u);
  EXPECT_EQ(KVDDisk::usedDiskSpaceInBytes(), 0u);
  EXPECT_EQ(KVDDisk::numberOfNodes(), 0u);
  EXPECT_EQ(KVDDisk::totalDiskSpace(), "0.00 bytes");
}

TEST_F(DiskSpace, IsAskedAnewEachTime) {
  volumes.spaces["/users/ada"].size = 1;
  EXPECT_EQ(KVDDisk::totalDiskSpaceInBytes(), 1u);
  volumes.spaces["/users/ada"].size = 2;
  EXPECT_EQ(KVDDisk::totalDiskSpaceInBytes(), 2u);
}

TEST_F(DiskSpace, UsedIsTheDifferenceOfTwoLookUpsTheTotalFirst) {
  volumes.spaces["/users/ada"] = {1000, 400, std::nullopt};
  volumes.onSpace = [this] { volumes.spaces["/users/ada"] = {5000, 300, std::nullopt}; };
  EXPECT_EQ(KVDDisk::usedDiskSpaceInBytes(), 700u);
  EXPECT_EQ(volumes.spaceAsked, (Paths{"/users/ada", "/users/ada"}));
}

TEST_F(DiskSpace, UsedIsNeverClamped) {
  volumes.spaces["/users/ada"] = {1000, 1001, std::nullopt};
  EXPECT_EQ(KVDDisk::usedDiskSpaceInBytes(), std::numeric_limits<std::uint64_t>::max());
}

TEST_F(DiskSpace, NeedsNoMonitorAndMakesNone) {
  volumes.spaces["/users/ada"].size = 1'000'000;
  volumes.paths = {"/Volumes/BOOTCAMP"};
  volumes.spaces["/Volumes/BOOTCAMP"].size = 2'000'000;
  EXPECT_EQ(KVDDisk::totalDiskSpace(), "1.00 MB");
  EXPECT_EQ(KVDDisk::totalBootCampSpace(), "2.00 MB");
  EXPECT_EQ(categories.storesMade, 0);
  loop.advance(std::chrono::seconds(3));
  EXPECT_EQ(volumes.tableReads, 0);
}

TEST_F(DiskSpace, WhatGoesWrongIsALogLineAndAFigureThatIsNotTold) {
  const testing::RecordedLog log;
  volumes.paths = {"/Volumes/BOOTCAMP"};
  volumes.onSpace = [] { throw std::bad_alloc(); };
  EXPECT_EQ(KVDDisk::totalDiskSpaceInBytes(), 0u);
  EXPECT_EQ(KVDDisk::freeDiskSpace(), "0.00 bytes");
  EXPECT_EQ(KVDDisk::totalBootCampSpace(), "0.00 bytes");
  EXPECT_EQ(log.lines.size(), 3u);
  EXPECT_EQ(log.lines[0], "a query of space threw: std::bad_alloc");
}

TEST_F(DiskSpace, VolumesThatCantBeListedAreNone) {
  const testing::RecordedLog log;
  volumes.onPaths = [] {
    throw std::system_error(std::make_error_code(std::errc::not_enough_memory));
  };
  EXPECT_EQ(KVDDisk::totalBootCampDiskSpaceInBytes(), 0u);
  EXPECT_EQ(KVDDisk::totalBootCampSpace(), std::nullopt);
  EXPECT_EQ(log.lines.size(), 2u);
}

using BootCamp = testing::Disk;

TEST_F(BootCamp, WithoutOneNumbersAreZeroAndTwoTextsNil) {
  volumes.paths = {"/", "/Volumes/Stick"};
  EXPECT_EQ(KVDDisk::totalBootCampDiskSpaceInBytes(), 0u);
  EXPECT_EQ(KVDDisk::freeBootCampDiskSpaceInBytes(), 0u);
  EXPECT_EQ(KVDDisk::usedBootCampDiskSpaceInBytes(), 0u);
  EXPECT_EQ(KVDDisk::totalBootCampSpace(), std::nullopt);
  EXPECT_EQ(KVDDisk::freeBootCampDiskSpace(), std::nullopt);
  EXPECT_EQ(KVDDisk::usedBootCampDiskSpace(), "0.00 bytes");
  EXPECT_TRUE(volumes.spaceAsked.empty());
}

TEST_F(BootCamp, IsTheFirstVolumeWhosePathBeginsSo) {
  volumes.paths = {"/", "/Volumes/BOOTCAMP 1", "/Volumes/BOOTCAMP"};
  volumes.spaces["/Volumes/BOOTCAMP 1"] = {9'000'000, 2'000'000, std::nullopt};
  EXPECT_EQ(KVDDisk::totalBootCampDiskSpaceInBytes(), 9'000'000u);
  EXPECT_EQ(KVDDisk::freeBootCampDiskSpaceInBytes(), 2'000'000u);
  EXPECT_EQ(KVDDisk::usedBootCampDiskSpaceInBytes(), 7'000'000u);
  EXPECT_EQ(KVDDisk::totalBootCampSpace(), "9.00 MB");
  EXPECT_EQ(KVDDisk::freeBootCampDiskSpace(), "2.00 MB");
  EXPECT_EQ(KVDDisk::usedBootCampDiskSpace(), "7.00 MB");
}

TEST_F(BootCamp, IsNoVolumeThatHasTheNameLaterInItsPathOrInOtherLetters) {
  volumes.paths = {"/mnt/Volumes/BOOTCAMP", "/Volumes/bootcamp", "/Volumes/BOOTCAM"};
  EXPECT_EQ(KVDDisk::totalBootCampSpace(), std::nullopt);
}

TEST_F(BootCamp, ThatTellsNothingHasZeroAsText) {
  volumes.paths = {"/Volumes/BOOTCAMP"};
  EXPECT_EQ(KVDDisk::totalBootCampSpace(), "0.00 bytes");
  EXPECT_EQ(KVDDisk::freeBootCampDiskSpace(), "0.00 bytes");
}

TEST_F(BootCamp, UsedIsNeverClamped) {
  volumes.paths = {"/Volumes/BOOTCAMP"};
  volumes.spaces["/Volumes/BOOTCAMP"] = {1, 2, std::nullopt};
  EXPECT_EQ(KVDDisk::usedBootCampDiskSpaceInBytes(), std::numeric_limits<std::uint64_t>::max());
}

TEST_F(BootCamp, IsAskedAnewEachTimeAndUsedByTwoLookUpsTheTotalFirst) {
  volumes.paths = {"/Volumes/BOOTCAMP"};
  volumes.spaces["/Volumes/BOOTCAMP"] = {1000, 400, std::nullopt};
  volumes.onSpace = [this] { volumes.spaces["/Volumes/BOOTCAMP"] = {5000, 300, std::nullopt}; };
  EXPECT_EQ(KVDDisk::usedBootCampDiskSpaceInBytes(), 700u);
  volumes.paths.clear();
  EXPECT_EQ(KVDDisk::totalBootCampSpace(), std::nullopt);
}

TEST_F(BootCamp, IsLookedForAmongTheSameTypesAsTheMonitors) {
  volumes.local = {"ext4"};
  KVDDisk::totalBootCampSpace();
  EXPECT_EQ(volumes.askedTypes.size(), 9u);
}

TEST(MemoryFormatter, ShowsBytesBelowAMillion) {
  EXPECT_EQ(KVDDisk::memoryFormatter(0), "0.00 bytes");
  EXPECT_EQ(KVDDisk::memoryFormatter(1), "1.00 bytes");
  EXPECT_EQ(KVDDisk::memoryFormatter(1024), "1024.00 bytes");
  EXPECT_EQ(KVDDisk::memoryFormatter(999'999), "999999.00 bytes");
}

TEST(MemoryFormatter, ShowsMegabytesFromAMillionOn) {
  EXPECT_EQ(KVDDisk::memoryFormatter(1'000'000), "1.00 MB");
  EXPECT_EQ(KVDDisk::memoryFormatter(1'234'567), "1.23 MB");
  EXPECT_EQ(KVDDisk::memoryFormatter(999'999'999), "1000.00 MB");
}

TEST(MemoryFormatter, ShowsGigabytesFromABillionOn) {
  EXPECT_EQ(KVDDisk::memoryFormatter(1'000'000'000), "1.00 GB");
  EXPECT_EQ(KVDDisk::memoryFormatter(1'500'000'000'000), "1500.00 GB");
  EXPECT_EQ(KVDDisk::memoryFormatter(std::numeric_limits<std::uint64_t>::max()),
            "18446744073.71 GB");
}

/// Numbers as a host may have them everywhere.
struct WithCommas : std::numpunct<char> {
  char do_decimal_point() const override { return ','; }
  char do_thousands_sep() const override { return '.'; }
  std::string do_grouping() const override { return "\3"; }
};

TEST(MemoryFormatter, HasAPointWhateverTheLocale) {
  const auto before = std::locale::global(std::locale(std::locale::classic(), new WithCommas));
  EXPECT_EQ(KVDDisk::memoryFormatter(999'999), "999999.00 bytes");
  EXPECT_EQ(KVDDisk::memoryFormatter(1'234'567), "1.23 MB");
  std::locale::global(before);
}

}  // namespace
}  // namespace vantile
