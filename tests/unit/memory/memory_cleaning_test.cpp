#include <gtest/gtest.h>

#include <algorithm>
#include <atomic>
#include <thread>
#include <utility>

#include "vantile/memory/cleaner.h"

#include "fakes/recorded_log.h"
#include "unit/memory/memory_fixture.h"

namespace vantile {
namespace {

using MemoryCleaning = testing::Memory;

TEST_F(MemoryCleaning, RunsInTheBackgroundAndTellsTheDelegate) {
  int completed = 0;
  delegate->clearMemoryCompleted = [&] { ++completed; };
  std::int32_t stop = 1;
  monitor()->clearMemory(&stop);
  EXPECT_TRUE(ports.alarm->log.empty());
  ASSERT_EQ(workers.waiting.size(), 1u);
  workers.runOne();
  EXPECT_EQ(completed, 1);
  EXPECT_EQ(stop, 1);
}

TEST_F(MemoryCleaning, TakesSmallBlocksOnlyUpTo10Point8) {
  utility.version->told = "10.8";
  host.pages.free = 1u << 20;  // 4 GiB: chunks for the asking
  endAfterOnePass();
  monitor()->clearMemory(nullptr);
  workers.runOne();
  EXPECT_TRUE(ports.pressure->chunks.empty());
  EXPECT_EQ(ports.pressure->requests, 1u + 2 * 17);
}

TEST_F(MemoryCleaning, TakesChunksLater) {
  for (const auto* version : {"10.8.1", "10.10", "11.0"}) {
    ports.pressure->chunks.clear();
    utility.version->told = version;
    host.pages.free = 65536;  // 256 MiB
    endAfterOnePass();
    monitor()->clearMemory(nullptr);
    workers.runOne();
    EXPECT_EQ(ports.pressure->chunks.size(), 2u) << version;
  }
}

TEST_F(MemoryCleaning, TakesChunksWhereTheVersionIsUnknown) {
  const auto memory = monitor();
  utility.version->told = std::nullopt;
  host.pages.free = 65536;
  endAfterOnePass();
  memory->clearMemory(nullptr);
  workers.runOne();
  EXPECT_FALSE(ports.pressure->chunks.empty());
}

TEST_F(MemoryCleaning, TheVersionIsTakenWhenItIsAskedFor) {
  utility.version->told = "10.8";
  host.pages.free = 65536;
  endAfterOnePass();
  monitor()->clearMemory(nullptr);
  utility.version->told = "10.9";
  workers.runOne();
  EXPECT_TRUE(ports.pressure->chunks.empty());
}

TEST_F(MemoryCleaning, KeepsTheMonitorAliveUntilItIsDone) {
  std::weak_ptr<KVDMemory> seen;
  std::int32_t stop = 1;
  KVDMemory::singleton();
  {
    const auto own = KVDMemory::init();
    own->clearMemory(&stop);
    seen = own;
  }
  EXPECT_FALSE(seen.expired());
  workers.runOne();
  workers.waiting.clear();
  EXPECT_TRUE(seen.expired());
}

TEST_F(MemoryCleaning, TwoRunsNeverOverlap) {
  const auto memory = monitor();
  std::atomic<int> inside = 0, mostInside = 0;
  delegate->clearMemoryCompleted = [&] {
    mostInside = std::max(mostInside.load(), ++inside);
    std::this_thread::yield();
    --inside;
  };
  std::int32_t stop = 1;
  for (int run = 0; run < 400; ++run) memory->clearMemory(&stop);
  const auto half = workers.waiting.begin() + 200;
  std::thread other([&] { std::for_each(half, workers.waiting.end(), [](auto& run) { run(); }); });
  std::for_each(workers.waiting.begin(), half, [](auto& run) { run(); });
  other.join();
  EXPECT_EQ(mostInside, 1);
}

TEST_F(MemoryCleaning, ItsEndWithoutADelegateOrAMonitorIsQuiet) {
  const testing::RecordedLog log;
  EXPECT_EQ(cleanmemorycomplete(), 0);
  host.name = 0;
  sharedMemoryMonitor().forget();
  EXPECT_EQ(cleanmemorycomplete(), 0);
  EXPECT_TRUE(log.lines.empty());
}

}  // namespace
}  // namespace vantile
