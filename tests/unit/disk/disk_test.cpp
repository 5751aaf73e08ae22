#include "vantile/disk/disk.h"

#include <gtest/gtest.h>

#include <stdexcept>
#include <thread>

#include "fakes/recorded_log.h"
#include "unit/disk/disk_fixture.h"

namespace vantile {
namespace {

using std::chrono::seconds;

using DiskMonitor = testing::Disk;

TEST_F(DiskMonitor, SamplesEverySecondFromTheStart) {
  const auto disk = monitor();
  EXPECT_EQ(disk->freshInterval(), 1);
  loop.advance(seconds(3));
  EXPECT_EQ(reports, 3);
}

TEST_F(DiskMonitor, IsSharedByTheProcess) {
  EXPECT_EQ(KVDDisk::singleton(), KVDDisk::singleton());
  EXPECT_NE(KVDDisk::singleton(), KVDDisk::init());
}

TEST_F(DiskMonitor, SamplesBySetInterval) {
  const auto disk = monitor();
  disk->setFreshInterval(5);
  loop.advance(seconds(10));
  EXPECT_EQ(reports, 2);
  disk->setFreshInterval(0);
  loop.advance(seconds(10));
  EXPECT_EQ(reports, 2);
}

TEST_F(DiskMonitor, SamplesNoMoreWhenItIsGone) {
  monitor().reset();
  loop.advance(seconds(3));
  EXPECT_EQ(volumes.tableReads, 0);
  EXPECT_EQ(categories.stores, 0);
}

TEST_F(DiskMonitor, AnEmptyTableIsToldOf) {
  EXPECT_TRUE(toldOf().empty());
  EXPECT_EQ(reports, 1);
}

TEST_F(DiskMonitor, WithoutADelegateOrItsOperationASampleIsTakenAllTheSame) {
  mount("/");
  const auto disk = monitor();
  disk->setDelegate(nullptr);
  disk->updateInfo();
  disk->setDelegate(std::make_shared<DiskDelegate>());
  disk->updateInfo();
  EXPECT_EQ(volumes.tableReads, 2);
  EXPECT_EQ(reports, 0);
}

TEST_F(DiskMonitor, EverySampleIsTakenAnew) {
  mount("/");
  const auto disk = monitor();
  disk->updateInfo();
  const auto before = rows;
  volumes.table[0].availableBlocks = 10;
  disk->updateInfo();
  EXPECT_EQ(before[0]->uint64("disk_freesize"), 400u * 512);
  EXPECT_EQ(rows[0]->uint64("disk_freesize"), 10u * 512);
}

TEST_F(DiskMonitor, ASampleFromInsideItsDelegateIsTaken) {
  const auto disk = monitor();
  const auto told = delegate->diskDetails;
  delegate->diskDetails = [&](const Array& all) {
    told(all);
    if (reports == 1) disk->updateInfo();
  };
  disk->updateInfo();
  EXPECT_EQ(reports, 2);
}

TEST_F(DiskMonitor, SamplesOfSeveralThreadsTakeTurnsAtTheMetadata) {
  mount("/");
  const auto disk = monitor();
  disk->setDelegate(nullptr);
  int inside = 0;  // a data race, were it not for the lock
  categories.onLook = [&] {
    EXPECT_EQ(++inside, 1);
    --inside;
  };
  std::vector<std::thread> threads;
  for (int i = 0; i < 4; ++i)
    threads.emplace_back([&] {
      for (int round = 0; round < 50; ++round) disk->updateInfo();
    });
  for (auto& thread : threads) thread.join();
}

TEST_F(DiskMonitor, WhatASampleThrowsIsALogLine) {
  const testing::RecordedLog log;
  mount("/");
  categories.onLook = [] { throw std::runtime_error("out of order"); };
  monitor()->updateInfo();
  EXPECT_EQ(reports, 0);
  ASSERT_EQ(log.lines.size(), 1u);
  EXPECT_EQ(log.lines[0], "a disk sample threw: out of order");
}

using WantedCategories = testing::Disk;
using Wanted = std::vector<std::vector<std::string>>;

TEST_F(WantedCategories, AreThoseOfTheVolumesThatAreToldOfInTheirOrder) {
  mount("/");
  mount("/proc", "proc");
  mount("/b");
  mount("/nameless");
  mount("/a");
  volumes.nameless.insert("/nameless");
  monitor()->updateInfo();
  EXPECT_EQ(categories.wanted, (Wanted{{"/", "/b", "/a"}}));
}

TEST_F(WantedCategories, AreToldAgainOnlyWhenTheyChange) {
  mount("/");
  const auto disk = monitor();
  disk->updateInfo();
  disk->updateInfo();
  mount("/b");
  disk->updateInfo();
  volumes.table.erase(volumes.table.begin());
  disk->updateInfo();
  EXPECT_EQ(categories.wanted, (Wanted{{"/"}, {"/", "/b"}, {"/b"}}));
}

TEST_F(WantedCategories, AreNoneWhileNobodyHearsOfThem) {
  mount("/");
  const auto disk = monitor();
  disk->setDelegate(nullptr);
  disk->updateInfo();
  EXPECT_TRUE(categories.wanted.empty());
  disk->setDelegate(delegate);
  disk->updateInfo();
  disk->setDelegate(std::make_shared<DiskDelegate>());
  disk->updateInfo();
  EXPECT_EQ(categories.wanted, (Wanted{{"/"}, {}}));
}

TEST_F(WantedCategories, EndWithTheMonitor) {
  auto disk = monitor();
  EXPECT_EQ(categories.stores, 1);
  disk.reset();
  EXPECT_EQ(categories.stores, 0);
}

}  // namespace
}  // namespace vantile
