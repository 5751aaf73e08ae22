// What a sample of `CPUStatus` reports.

#include <gtest/gtest.h>

#include <limits>
#include <stdexcept>

#include "fakes/recorded_log.h"
#include "unit/sensors/cpu_fixture.h"

namespace vantile {
namespace {

using testing::Parts;
using Told = std::vector<std::string>;

constexpr std::uint32_t top = std::numeric_limits<std::uint32_t>::max();

/// Two to the 64th, near which an unsigned reading of a small negative number is.
constexpr float huge = 18446744073709551616.0f;

using CpuReport = testing::Cpu;

TEST_F(CpuReport, ComesInOrder) {
  processors.counts = TaskCounts{4, 9};
  processors.averages = {1, 2, 3};
  smc.dataSize = 2;
  monitor()->updateInfo();
  EXPECT_EQ(told, (Told{"core 0", "core 1", "all", "tasks", "load", "temperature"}));
}

TEST_F(CpuReport, OperationsThatAreLeftEmptyArePassedOver) {
  processors.counts = TaskCounts{4, 9};
  processors.cores = {{}, {}};
  const auto cpu = monitor();
  delegate->cpuUsedWithCoreWithSystemWithUserWithIdle = nullptr;
  processors.cores = {{.user = 1}, {.idle = 3}};
  cpu->updateInfo();
  EXPECT_EQ(told, (Told{"all", "tasks"}));
  EXPECT_EQ(all, (Parts{0, 0.25f, 0.75f}));
}

TEST_F(CpuReport, WithoutADelegateTheCountersMoveOn) {
  const auto cpu = CPUStatus::singleton();
  processors.cores[0].idle = 100;
  cpu->updateInfo();
  cpu->setDelegate(delegate);
  processors.cores[0] = {.user = 1, .idle = 101};
  cpu->updateInfo();
  EXPECT_EQ(cores[0], (Parts{0, 0.5f, 0.5f}));
}

TEST_F(CpuReport, ADelegateThatIsTakenAwayInsideACallIsToldNoMore) {
  processors.counts = TaskCounts{4, 9};
  const auto cpu = monitor();
  delegate->cpuUsedWithSystemWithUserWithIdle = [&](float, float, float) {
    told.push_back("all");
    cpu->setDelegate(nullptr);
  };
  cpu->updateInfo();
  EXPECT_EQ(told, (Told{"core 0", "core 1", "all"}));
}

TEST_F(CpuReport, WhatADelegateThrowsDoesNotEndTheSample) {
  const testing::RecordedLog log;
  processors.counts = TaskCounts{4, 9};
  const auto cpu = monitor();
  delegate->cpuUsedWithSystemWithUserWithIdle = [](float, float, float) {
    throw std::runtime_error("mine");
  };
  cpu->updateInfo();
  EXPECT_EQ(told.back(), "tasks");
  EXPECT_EQ(log.lines.size(), 1u);
}

using CpuUsage = testing::Cpu;

TEST_F(CpuUsage, IsTheShareOfTheTicksSinceTheSampleBefore) {
  const auto cpu = monitor();
  processors.cores[0] = {.user = 10, .system = 20, .idle = 70};
  cpu->updateInfo();
  processors.cores[0] = {.user = 10, .system = 21, .idle = 73};
  cpu->updateInfo();
  EXPECT_EQ(cores[0], (Parts{0.25f, 0, 0.75f}));
}

TEST_F(CpuUsage, NiceIsTheUsers) {
  const auto cpu = monitor();
  processors.cores[0] = {.user = 1, .system = 1, .idle = 1, .nice = 1};
  cpu->updateInfo();
  EXPECT_EQ(cores[0], (Parts{0.25f, 0.5f, 0.25f}));
}

TEST_F(CpuUsage, OfTheMachineIsTheShareOfAllTicks) {
  const auto cpu = monitor();
  processors.cores = {{.user = 3}, {.system = 2, .idle = 11}};
  cpu->updateInfo();
  EXPECT_EQ(all, (Parts{2 / 16.0f, 3 / 16.0f, 11 / 16.0f}));
}

TEST_F(CpuUsage, OfAProcessorWithoutProgressIs0) {
  const auto cpu = monitor();
  processors.cores = {{}, {.idle = 3}};
  cpu->updateInfo();
  EXPECT_EQ(cores[0], (Parts{0, 0, 0}));
  EXPECT_EQ(all, (Parts{0, 0, 0.75f}));  // its total counts as 1
}

TEST_F(CpuUsage, ASystemCounterThatWrappedGoesOn) {
  processors.cores = {{.system = top, .idle = 5}};
  const auto cpu = monitor();
  processors.cores = {{.system = 1, .idle = 7}};
  cpu->updateInfo();
  EXPECT_EQ(cores[0], (Parts{0.5f, 0, 0.5f}));
}

TEST_F(CpuUsage, ASystemCounterThatWentBackwardsIsAWrappedOne) {
  processors.cores = {{.system = 10, .idle = 0}};
  const auto cpu = monitor();
  processors.cores = {{.system = 9, .idle = 1}};
  cpu->updateInfo();
  const float wrapped = 4294967295.0f;
  EXPECT_EQ(cores[0], (Parts{wrapped / 4294967296.0f, 0, 1 / 4294967296.0f}));
}

TEST_F(CpuUsage, AnIdleCounterThatWentBackwardsIsAHugeShare) {
  processors.cores = {{.idle = 10}};
  const auto cpu = monitor();
  processors.cores = {{.system = 8, .idle = 6}};
  cpu->updateInfo();
  EXPECT_EQ(cores[0], (Parts{2, 0, huge / 4}));
}

TEST_F(CpuUsage, AUserOrNiceCounterThatWentBackwardsIsAHugeShare) {
  processors.cores = {{.user = 10}, {.nice = 10}};
  const auto cpu = monitor();
  processors.cores = {{.user = 6, .idle = 8}, {.idle = 8, .nice = 6}};
  cpu->updateInfo();
  EXPECT_EQ(cores[0], (Parts{0, huge / 4, 2}));
  EXPECT_EQ(cores[1], (Parts{0, huge / 4, 2}));
}

TEST_F(CpuUsage, AnIdleCounterThatWrappedIsOneThatWentBackwards) {
  processors.cores = {{.idle = top}};
  const auto cpu = monitor();
  processors.cores = {{.idle = 0}};
  cpu->updateInfo();
  EXPECT_EQ(cores[0][2], 1);  // both it and the total are the same negative number
}

TEST_F(CpuUsage, AProcessorBeyondThoseAtTheStartIsLeftOut) {
  const auto cpu = monitor();
  processors.cores.resize(5000, {.idle = 1});
  processors.cores[1].user = 1;
  cpu->updateInfo();
  cpu->updateInfo();
  EXPECT_EQ(cores.size(), 2u);
}

TEST_F(CpuUsage, ProcessorsThatAreNotToldOfAreLeftOut) {
  const auto cpu = monitor();
  processors.cores.resize(1);
  cpu->updateInfo();
  EXPECT_EQ(told, (Told{"core 0", "all"}));
}

TEST_F(CpuUsage, OfNoProcessorsIsNotTold) {
  processors.counts = TaskCounts{4, 9};
  const auto cpu = monitor();
  processors.cores.clear();
  cpu->updateInfo();
  EXPECT_EQ(told, Told{"tasks"});
}

using CpuTasks = testing::Cpu;

TEST_F(CpuTasks, AreTheSystemsCounts) {
  processors.counts = TaskCounts{412, 2103};
  monitor()->updateInfo();
  EXPECT_EQ(counts, (TaskCounts{412, 2103}));
}

TEST_F(CpuTasks, ThatAreRefusedSkipTheirOwnCallAlone) {
  processors.averages = {1, 2, 3};
  monitor()->updateInfo();
  EXPECT_EQ(told, (Told{"core 0", "core 1", "all", "load"}));
}

TEST_F(CpuTasks, AndLoadAreNotAskedForWhereNobodyIsTold) {
  processors.counts = TaskCounts{4, 9};
  const auto cpu = monitor();
  delegate->processorWithTaskCountWithThreadCount = nullptr;
  delegate->loadAverageWith1mWith5mWith15m = nullptr;
  cpu->updateInfo();
  EXPECT_EQ(processors.otherReads, 0);
}

using CpuLoad = testing::Cpu;

TEST_F(CpuLoad, IsNarrowedToSinglePrecision) {
  processors.averages = {0.1, 2.5, 16777217};
  monitor()->updateInfo();
  EXPECT_EQ(loads, (Parts{0.1f, 2.5f, 16777216.0f}));
}

TEST_F(CpuLoad, OfFewerThanThreeAveragesIsNotTold) {
  processors.averages = {1, 2};
  const auto cpu = monitor();
  cpu->updateInfo();
  processors.averages.clear();
  cpu->updateInfo();
  EXPECT_EQ(std::count(told.begin(), told.end(), "load"), 0);
}

using CpuTemperature = testing::Cpu;

TEST_F(CpuTemperature, IsReadThroughAConnectionOfItsOwnEachTime) {
  smc.dataSize = 2;
  const auto cpu = monitor();
  const Told once = {"open", "call 2 on 41", "call 2 on 41", "close 41"};
  cpu->updateInfo();
  EXPECT_EQ(smc.log, once);
  EXPECT_EQ(smc.requests.at(0).key, 0x54433050u);  // "TC0P"
  EXPECT_EQ(celsius, 58.25);
  smc.log.clear();
  cpu->updateInfo();
  EXPECT_EQ(smc.log, once);
}

TEST_F(CpuTemperature, OfZeroOrBelowIsNotToldButTheConnectionIsClosed) {
  smc.dataSize = 2;
  const auto cpu = monitor();
  smc.bytes = {0, 0};
  cpu->updateInfo();
  EXPECT_EQ(smc.log.back(), "close 41");
  smc.bytes = {0xff, 0};
  cpu->updateInfo();
  smc.readResult = 1;
  cpu->updateInfo();
  EXPECT_EQ(smc.log.back(), "close 41");
  EXPECT_EQ(std::count(told.begin(), told.end(), "temperature"), 0);
}

TEST_F(CpuTemperature, MonitorsTakeTurnsWithTheConnection) {
  const auto sampling = [] {
    const auto cpu = CPUStatus::init();
    for (int sample = 0; sample < 300; ++sample) cpu->updateInfo();
  };
  std::thread another(sampling);
  sampling();
  another.join();
  EXPECT_FALSE(smc.overlapped);
}

TEST_F(CpuTemperature, IsLookedForWithoutAnyoneToTellToo) {
  smc.opening = {};
  const auto cpu = monitor();
  delegate->cpuWithTemperature = nullptr;
  ::testing::internal::CaptureStdout();
  cpu->updateInfo();
  cpu->setDelegate(nullptr);
  cpu->updateInfo();
  const auto printed = ::testing::internal::GetCapturedStdout();
  EXPECT_EQ(printed, "Error: no SMC found\nError: no SMC found\n");
}

TEST_F(CpuTemperature, WithoutAnSmcAllElseIsToldAndEverySampleSaysSo) {
  processors.counts = TaskCounts{4, 9};
  processors.averages = {1, 2, 3};
  smc.opening = {};
  const auto cpu = monitor();
  ::testing::internal::CaptureStdout();
  cpu->updateInfo();
  cpu->updateInfo();
  const auto printed = ::testing::internal::GetCapturedStdout();
  const Told once = {"core 0", "core 1", "all", "tasks", "load"};
  Told twice = once;
  twice.insert(twice.end(), once.begin(), once.end());
  EXPECT_EQ(told, twice);
  EXPECT_EQ(smc.log, (Told{"open", "open"}));
  EXPECT_EQ(printed, "Error: no SMC found\nError: no SMC found\n");
}

}  // namespace
}  // namespace vantile
