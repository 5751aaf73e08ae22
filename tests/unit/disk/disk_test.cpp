#include "vantile/disk/disk.h"

#include <gtest/gtest.h>

#include <cerrno>
#include <new>
#include <stdexcept>
#include <system_error>
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

TEST_F(DiskMonitor, IsToldOfOnTheThreadThatSamples) {
  const auto disk = monitor();
  std::vector<std::thread::id> threads;
  delegate->diskDetails = [&](const Array&) { threads.push_back(std::this_thread::get_id()); };
  disk->updateInfo();
  std::thread other([&] { disk->updateInfo(); });
  const auto otherId = other.get_id();
  other.join();
  EXPECT_EQ(threads, (std::vector{std::this_thread::get_id(), otherId}));
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

TEST_F(DiskMonitor, ASampleLetsNothingOut) {
  const testing::RecordedLog log;
  mount("/");
  const auto disk = monitor();
  categories.onLook = [] { throw std::bad_alloc(); };
  disk->updateInfo();
  categories.onLook = [] { throw std::system_error(EAGAIN, std::generic_category()); };
  disk->updateInfo();
  categories.onLook = nullptr;
  delegate->diskDetails = [](const Array&) { throw 1; };
  disk->updateInfo();
  EXPECT_EQ(log.lines.size(), 3u);
}

using WantedCategories = testing::Disk;
using Wanted = std::vector<std::vector<VolumeKey>>;

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

TEST_F(WantedCategories, AreToldAgainWhenAVolumeTookAnothersPlace) {
  mount("/").identity = "root";
  mount("/a").identity = "1";
  const auto disk = monitor();
  disk->updateInfo();
  volumes.table[1].identity = "2";
  disk->updateInfo();
  EXPECT_EQ(categories.wanted,
            (Wanted{{{"/", "root"}, {"/a", "1"}}, {{"/", "root"}, {"/a", "2"}}}));
}

TEST_F(WantedCategories, AVolumeThatTookAnothersPlaceDoesNotHaveItsKinds) {
  mount("/a").identity = "1";
  Array list(7, Value(std::uint64_t{5}));
  categories.items.emplace(VolumeKey("/a", "1"), CategorySizes{list});
  const auto disk = monitor();
  disk->updateInfo();
  EXPECT_EQ(rows[0]->uint64("disk_movies"), 5u);
  volumes.table[0].identity = "2";
  disk->updateInfo();
  EXPECT_FALSE(rows[0]->contains("disk_movies"));
  EXPECT_EQ(rows[0]->boolean("has_accumulated_sizes"), false);
}

TEST_F(WantedCategories, EndWithTheMonitor) {
  auto disk = monitor();
  EXPECT_EQ(categories.stores, 1);
  disk.reset();
  EXPECT_EQ(categories.stores, 0);
}

}  // namespace
}  // namespace vantile
