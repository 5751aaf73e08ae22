#include "vantile/memory/memory.h"

#include <gtest/gtest.h>

#include <atomic>
#include <stdexcept>
#include <thread>
#include <utility>
#include <vector>

#include "fakes/gate.h"
#include "fakes/recorded_log.h"
#include "unit/memory/memory_fixture.h"

namespace vantile {
namespace {

using std::chrono::seconds;

using testing::Gate;
using MemoryInit = testing::Memory;

TEST_F(MemoryInit, SamplesEverySecondFromTheStart) {
  const auto memory = monitor();
  EXPECT_EQ(memory->freshInterval(), 1);
  loop.advance(seconds(3));
  EXPECT_EQ(reports.size(), 3u);
}

TEST_F(MemoryInit, IsSharedByTheProcess) {
  EXPECT_EQ(KVDMemory::singleton(), KVDMemory::singleton());
}

TEST_F(MemoryInit, KnowsTheInstalledMemoryWhichAHostMayChange) {
  host.physical = 123;
  EXPECT_EQ(monitor()->physicalMemory(), 123u);
  monitor()->setPhysicalMemory(7);
  EXPECT_EQ(monitor()->physicalMemory(), 7u);
}

TEST_F(MemoryInit, AHostWithoutANameGivesNoneAndIsTriedAgain) {
  host.name = 0;
  EXPECT_EQ(KVDMemory::singleton(), nullptr);
  host.name = 7;
  EXPECT_NE(KVDMemory::singleton(), nullptr);
}

TEST_F(MemoryInit, ALateSystemWithoutTheStatisticsGivesNoneAndTheyAreLookedUpAgain) {
  host.keepsStatistics64 = false;
  EXPECT_EQ(KVDMemory::singleton(), nullptr);
  EXPECT_EQ(host.lookUps, 1);
  host.keepsStatistics64 = true;
  EXPECT_NE(KVDMemory::singleton(), nullptr);
  EXPECT_EQ(host.lookUps, 2);
  KVDMemory::singleton();
  EXPECT_EQ(host.lookUps, 2);
}

TEST_F(MemoryInit, AnEarlySystemDoesWithoutTheStatistics) {
  utility.version->told = "10.8";
  host.keepsStatistics64 = false;
  EXPECT_NE(KVDMemory::singleton(), nullptr);
}

TEST_F(MemoryInit, AFailureIsSilentAndLeavesNoTimer) {
  const testing::RecordedLog log;
  host.name = 0;
  KVDMemory::singleton();
  loop.advance(seconds(3));
  EXPECT_TRUE(log.lines.empty());
  EXPECT_EQ(host.reads64, 0);
}

TEST_F(MemoryInit, TheSystemsVersionIsAskedOnce) {
  const auto memory = monitor();
  utility.version->told = "10.3";
  ports.swap->used = SwapUsage{12345, true};
  memory->updateInfo();
  EXPECT_EQ(host.reads64, 1);
  EXPECT_EQ(ports.swap->usageReads, 1);
}

using MemorySample = testing::Memory;

TEST_F(MemorySample, GoesThrough64BitsFromMavericksOn) {
  utility.version->told = "10.9";
  monitor()->updateInfo();
  EXPECT_EQ(host.reads64, 1);
  EXPECT_EQ(host.reads32, 0);
}

TEST_F(MemorySample, GoesThrough32BitsBeforeMavericks) {
  utility.version->told = "10.8.5";
  monitor()->updateInfo();
  EXPECT_EQ(host.reads64, 0);
  EXPECT_EQ(host.reads32, 1);
  EXPECT_EQ(reports.at(0).memory.uint64("memory_compressed"), 0u);
  EXPECT_FALSE(reports.at(0).vm.contains("vm_compressions"));
}

TEST_F(MemorySample, TheFirstDeltasAreTheWholeCounters) {
  host.reading.pageIns = 1000;
  host.reading.pageOuts = 50;
  monitor()->updateInfo();
  EXPECT_EQ(reports.at(0).vm.uint64("vm_deltapageins"), 1000u);
  EXPECT_EQ(reports.at(0).vm.uint64("vm_deltapageouts"), 50u);
}

TEST_F(MemorySample, LaterDeltasAreTheGrowth) {
  host.reading.pageIns = 1000;
  host.reading.pageOuts = 50;
  monitor()->updateInfo();
  host.reading.pageIns = 1001;
  monitor()->updateInfo();
  EXPECT_EQ(reports.at(1).vm.uint64("vm_deltapageins"), 1u);
  EXPECT_EQ(reports.at(1).vm.uint64("vm_deltapageouts"), 0u);
}

TEST_F(MemorySample, ACounterThatWentBackwardsReportsItsNewValue) {
  host.reading.pageIns = 1000;
  host.reading.pageOuts = 1000;
  monitor()->updateInfo();
  host.reading.pageIns = 40;
  host.reading.pageOuts = 999;
  monitor()->updateInfo();
  EXPECT_EQ(reports.at(1).vm.uint64("vm_deltapageins"), 40u);
  EXPECT_EQ(reports.at(1).vm.uint64("vm_deltapageouts"), 999u);
}

TEST_F(MemorySample, BothPathsCountAgainstTheSameLastValues) {
  host.reading.pageIns = 100;
  host.reading32.pageIns = 150;
  const auto memory = monitor();
  memory->memoryStats64();
  memory->memoryStats32();
  EXPECT_EQ(reports.at(1).vm.uint64("vm_deltapageins"), 50u);
}

TEST_F(MemorySample, ARefusedReadingSkipsTheTickAndForgetsNothing) {
  host.reading.pageIns = 100;
  const auto memory = monitor();
  memory->updateInfo();
  host.refuses = true;
  host.reading.pageIns = 200;
  memory->updateInfo();
  EXPECT_EQ(reports.size(), 1u);
  host.refuses = false;
  memory->updateInfo();
  EXPECT_EQ(reports.at(1).vm.uint64("vm_deltapageins"), 100u);
}

TEST_F(MemorySample, WithoutADelegateNoSwapIsAskedForButTheCountersMoveOn) {
  const auto memory = KVDMemory::singleton();
  host.reading.pageIns = 100;
  memory->updateInfo();
  EXPECT_EQ(ports.swap->areaReads + ports.swap->usageReads, 0);
  memory->setDelegate(delegate);
  host.reading.pageIns = 130;
  memory->updateInfo();
  EXPECT_EQ(reports.at(0).vm.uint64("vm_deltapageins"), 30u);
  EXPECT_TRUE(reports.at(0).hasSwap);
}

TEST_F(MemorySample, ADelegateWithoutTheOperationIsPassedOverWithTheSwap) {
  const auto memory = KVDMemory::singleton();
  memory->setDelegate(std::make_shared<MemoryDelegate>());
  memory->updateInfo();
  EXPECT_EQ(ports.swap->areaReads + ports.swap->usageReads, 0);
}

TEST_F(MemorySample, SwapComesWithTheFirstReportOnly) {
  const auto memory = monitor();
  memory->updateInfo();
  memory->updateInfo();
  EXPECT_TRUE(reports.at(0).hasSwap);
  EXPECT_FALSE(reports.at(1).hasSwap);
}

TEST_F(MemorySample, ACounterThatTheSystemDoesNotKeepHasNoDelta) {
  host.reading.pageIns = std::nullopt;
  monitor()->updateInfo();
  EXPECT_FALSE(reports.at(0).vm.contains("vm_pageins"));
  EXPECT_FALSE(reports.at(0).vm.contains("vm_deltapageins"));
}

TEST_F(MemorySample, ASampleFromInsideTheDelegateCallIsSkipped) {
  const auto memory = monitor();
  int calls = 0;
  delegate->updateMemoryStatusWithVMStatusWithSwapDict = [&](const auto&, const auto&, auto*) {
    ++calls;
    memory->updateInfo();
    memory->memoryStats32();
  };
  memory->updateInfo();
  EXPECT_EQ(calls, 1);
}

TEST_F(MemorySample, WhatTheDelegateThrowsLeavesTheLockFree) {
  const testing::RecordedLog log;
  const auto memory = monitor();
  delegate->updateMemoryStatusWithVMStatusWithSwapDict = [&](const auto&, const auto&, auto*) {
    reports.push_back({});
    throw std::runtime_error("mine");
  };
  memory->updateInfo();
  std::thread([&] { memory->updateInfo(); }).join();
  EXPECT_EQ(reports.size(), 2u);
  EXPECT_EQ(log.lines.size(), 2u);
}

TEST_F(MemorySample, TheLockIsHeldOverTheDelegateCall) {
  const auto memory = monitor();
  Gate gate;
  std::atomic<int> inside = 0;
  delegate->updateMemoryStatusWithVMStatusWithSwapDict = [&](const auto&, const auto&, auto*) {
    EXPECT_EQ(++inside, 1);
    gate.pass();
    --inside;
  };
  std::thread first([&] { memory->updateInfo(); });
  gate.awaitEntry();
  std::thread second([&] { memory->updateInfo(); });
  gate.open();
  first.join();
  second.join();
}

TEST_F(MemorySample, ARefusedReadingDoesNotWaitForTheLock) {
  const auto memory = monitor();
  Gate gate;
  delegate->updateMemoryStatusWithVMStatusWithSwapDict = [&](const auto&, const auto&, auto*) {
    gate.pass();
  };
  std::thread sampling([&] { memory->updateInfo(); });
  gate.awaitEntry();
  host.refuses = true;
  memory->updateInfo();  // would wait for ever
  gate.open();
  sampling.join();
}

TEST_F(MemorySample, AReadingThatWaitedBehindAnotherSampleIsTakenAgain) {
  const auto memory = monitor();
  host.reading.pageIns = 100;
  bool overtaken = false;
  host.onRead = [&] {
    if (std::exchange(overtaken, true)) return;
    // Another thread samples in the midst of this thread's reading.
    host.reading.pageIns = 200;
    std::thread([&] { memory->updateInfo(); }).join();
    host.reading.pageIns = 100;  // what this thread would have read before
    host.onRead = [this] { host.reading.pageIns = 205; };
  };
  memory->updateInfo();
  EXPECT_EQ(reports.at(1).vm.uint64("vm_deltapageins"), 5u);
}

TEST_F(MemorySample, ASecondReadingThatIsRefusedSkipsTheSample) {
  const auto memory = monitor();
  bool overtaken = false;
  host.onRead = [&] {
    if (std::exchange(overtaken, true)) return;
    host.reading.pageIns = 200;
    std::thread([&] { memory->updateInfo(); }).join();
    host.onRead = [this] { host.refuses = true; };
  };
  memory->updateInfo();
  EXPECT_EQ(reports.size(), 1u);
  host.onRead = nullptr;
  host.refuses = false;
  memory->updateInfo();
  EXPECT_EQ(reports.at(1).vm.uint64("vm_deltapageins"), 0u);
}

TEST_F(MemorySample, ManyThreadsMaySampleAtOnce) {
  const auto memory = monitor();
  host.reading.pageIns = 100;
  std::vector<std::thread> threads;
  for (int i = 0; i < 4; ++i) {
    threads.emplace_back([&] {
      for (int round = 0; round < 50; ++round) memory->memoryStats64();
      for (int round = 0; round < 50; ++round) memory->memoryStats32();
      memory->swapStats();
    });
  }
  for (auto& thread : threads) thread.join();
  EXPECT_EQ(reports.size(), 400u);
}

TEST_F(MemorySample, ManyThreadsMayRefreshTheRecordAtOnce) {
  const auto memory = monitor();
  std::vector<std::thread> threads;
  for (int i = 0; i < 4; ++i) {
    threads.emplace_back([&] {
      for (int round = 0; round < 100; ++round) memory->freshMemoryInfo();
    });
  }
  for (auto& thread : threads) thread.join();
  EXPECT_EQ(host.pageCountReads, 400);
}

}  // namespace
}  // namespace vantile
