#include "vantile/sensors/cpu.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <locale>
#include <string>
#include <thread>
#include <utility>

#include "fakes/gate.h"
#include "fakes/recorded_log.h"
#include "unit/sensors/cpu_fixture.h"

namespace vantile {
namespace {

using std::chrono::seconds;

using testing::Gate;
using testing::Parts;
using CpuInit = testing::Cpu;

TEST_F(CpuInit, SamplesEverySecondFromTheStart) {
  const auto cpu = monitor();
  EXPECT_EQ(cpu->freshInterval(), 1);
  loop.advance(seconds(3));
  EXPECT_EQ(std::count(told.begin(), told.end(), "all"), 3);
}

TEST_F(CpuInit, IsSharedByTheProcess) {
  EXPECT_EQ(CPUStatus::singleton(), CPUStatus::singleton());
}

TEST_F(CpuInit, WithoutCountersThereIsNoneAndItIsTriedAgain) {
  const testing::RecordedLog log;
  processors.refuses = true;
  EXPECT_EQ(CPUStatus::singleton(), nullptr);
  EXPECT_EQ(CPUStatus::init(), nullptr);
  loop.advance(seconds(2));
  EXPECT_TRUE(log.lines.empty());
  EXPECT_EQ(processors.tickReads, 2);
  processors.refuses = false;
  EXPECT_NE(CPUStatus::singleton(), nullptr);
}

TEST_F(CpuInit, KnowsNameSpeedAndNumberWhichAHostMayChange) {
  processors.hertz = 2'400'000'000;
  processors.number = 8;
  const auto cpu = monitor();
  EXPECT_EQ(cpu->cpuName(), "Intel");
  EXPECT_EQ(cpu->cpuSpeed(), "2.40 GHz");
  EXPECT_EQ(cpu->numberOfCPUs(), 8u);
  cpu->setCpuName("mine");
  cpu->setCpuSpeed(std::nullopt);
  cpu->setNumberOfCPUs(3);
  EXPECT_EQ(cpu->cpuName(), "mine");
  EXPECT_EQ(cpu->cpuSpeed(), std::nullopt);
  EXPECT_EQ(cpu->numberOfCPUs(), 3u);
  EXPECT_EQ(cpu->getCPUName(), "Intel");
  EXPECT_EQ(cpu->getCPUSpeed(), "2.40 GHz");
  EXPECT_EQ(cpu->getNumberOfCPUs(), 8);
}

TEST_F(CpuInit, ASystemThatDoesNotTellHasNoSpeedAndOneProcessor) {
  const auto cpu = monitor();
  EXPECT_EQ(cpu->cpuSpeed(), std::nullopt);
  EXPECT_EQ(cpu->numberOfCPUs(), 1u);
}

TEST_F(CpuInit, TheFirstSampleTellsOfTheTimeSinceThen) {
  processors.cores = {{.user = 1000, .system = 1000, .idle = 1000}};
  const auto cpu = monitor();
  processors.cores = {{.user = 1001, .system = 1000, .idle = 1003}};
  cpu->updateInfo();
  EXPECT_EQ(cores[0], (Parts{0, 0.25f, 0.75f}));
}

TEST_F(CpuInit, ThereIsAlwaysAProcessor) {
  processors.number = 0;
  EXPECT_EQ(monitor()->numberOfCPUs(), 1u);
}

using CpuSpeed = testing::Cpu;

TEST_F(CpuSpeed, IsInMegahertzUpToABillionHertz) {
  const auto cpu = monitor();
  processors.hertz = 1'000'000'000;
  EXPECT_EQ(cpu->getCPUSpeed(), "1000.00 MHz");
  processors.hertz = 1'000'000'001;
  EXPECT_EQ(cpu->getCPUSpeed(), "1.00 GHz");
  processors.hertz = 2'400'000'000;
  EXPECT_EQ(cpu->getCPUSpeed(), "2.40 GHz");
  processors.hertz = 0;
  EXPECT_EQ(cpu->getCPUSpeed(), "0.00 MHz");
  processors.hertz = 733'333'333;
  EXPECT_EQ(cpu->getCPUSpeed(), "733.33 MHz");
}

TEST_F(CpuSpeed, MayNeedMoreThan32Bits) {
  processors.hertz = 5'700'000'000;
  EXPECT_EQ(monitor()->cpuSpeed(), "5.70 GHz");
}

TEST_F(CpuSpeed, IsOfSinglePrecision) {
  const auto cpu = monitor();
  processors.hertz = 2'085'000'000;  // a double would give 2.08
  EXPECT_EQ(cpu->getCPUSpeed(), "2.09 GHz");
  processors.hertz = 900'005'000;  // 900.00
  EXPECT_EQ(cpu->getCPUSpeed(), "900.01 MHz");
}

/// Numbers as a host may have them everywhere.
struct WithCommas : std::numpunct<char> {
  char do_decimal_point() const override { return ','; }
  char do_thousands_sep() const override { return '.'; }
  std::string do_grouping() const override { return "\3"; }
};

TEST_F(CpuSpeed, HasAPointWhateverTheLocale) {
  const auto before = std::locale::global(std::locale(std::locale::classic(), new WithCommas));
  processors.hertz = 2'400'000'000;
  EXPECT_EQ(monitor()->cpuSpeed(), "2.40 GHz");
  processors.hertz = 1'000'000'000;
  EXPECT_EQ(monitor()->getCPUSpeed(), "1000.00 MHz");
  std::locale::global(before);
}

using CpuSample = testing::Cpu;

TEST_F(CpuSample, RefusedCountersSkipAllOfItAndForgetNothing) {
  processors.counts = TaskCounts{1, 2};
  const auto cpu = monitor();
  processors.refuses = true;
  cpu->updateInfo();
  EXPECT_TRUE(told.empty());
  EXPECT_TRUE(smc.log.empty());
  processors.refuses = false;
  processors.cores[0] = {.user = 1, .idle = 1};
  cpu->updateInfo();
  EXPECT_EQ(cores[0], (Parts{0, 0.5f, 0.5f}));
}

TEST_F(CpuSample, RefusedCountersDoNotWaitForTheLock) {
  const auto cpu = monitor();
  Gate gate;
  delegate->cpuUsedWithSystemWithUserWithIdle = [&](float, float, float) { gate.pass(); };
  std::thread sampling([&] { cpu->updateInfo(); });
  gate.awaitEntry();
  processors.refuses = true;
  cpu->updateInfo();  // would wait for ever
  gate.open();
  sampling.join();
}

TEST_F(CpuSample, OneFromInsideADelegateCallIsSkipped) {
  const auto cpu = monitor();
  int calls = 0;
  float idle = 0;
  delegate->cpuUsedWithSystemWithUserWithIdle = [&](float, float, float newIdle) {
    idle = newIdle;
    if (++calls > 1) return;
    for (auto& core : processors.cores) core.user += 100;
    cpu->updateInfo();
  };
  cpu->updateInfo();
  EXPECT_EQ(calls, 1);
  for (auto& core : processors.cores) core.idle += 300;
  cpu->updateInfo();
  EXPECT_FLOAT_EQ(idle, 0.75F);  // what grew meanwhile was not accounted for
}

TEST_F(CpuSample, TheLockIsHeldOverAllDelegateCalls) {
  smc.dataSize = 2;
  const auto cpu = monitor();
  Gate gate;
  std::atomic<int> inside = 0;
  delegate->cpuUsedWithCoreWithSystemWithUserWithIdle = [&](std::uint32_t core, float, float,
                                                            float) {
    if (core == 0) {
      EXPECT_EQ(++inside, 1);
    }
  };
  delegate->cpuWithTemperature = [&](double) {  // the last one
    gate.pass();
    --inside;
  };
  std::thread first([&] { cpu->updateInfo(); });
  gate.awaitEntry();
  const int readBefore = processors.tickReads;
  std::thread second([&] { cpu->updateInfo(); });
  // It reads before it waits for the lock. Were that free, it would be inside in no time.
  while (processors.tickReads == readBefore) std::this_thread::yield();
  for (int chances = 0; chances < 1000; ++chances) std::this_thread::yield();
  gate.open();
  first.join();
  second.join();
}

TEST_F(CpuSample, AReadingThatWaitedBehindAnotherSampleIsTakenAgain) {
  const auto cpu = monitor();
  processors.cores = {{.idle = 100}};
  bool overtaken = false;
  processors.onTicks = [&] {
    if (std::exchange(overtaken, true)) return;
    // Another thread samples in the midst of this thread's reading.
    processors.cores = {{.idle = 200}};
    std::thread([&] { cpu->updateInfo(); }).join();
    processors.cores = {{.idle = 100}};  // what this thread would have read before
    processors.onTicks = [this] { processors.cores = {{.user = 5, .idle = 205}}; };
  };
  cpu->updateInfo();
  EXPECT_EQ(cores[0], (Parts{0, 0.5f, 0.5f}));
}

TEST_F(CpuSample, ASecondReadingThatIsRefusedSkipsTheSample) {
  const auto cpu = monitor();
  bool overtaken = false;
  processors.onTicks = [&] {
    if (std::exchange(overtaken, true)) return;
    std::thread([&] { cpu->updateInfo(); }).join();
    processors.onTicks = [this] { processors.refuses = true; };
  };
  cpu->updateInfo();
  EXPECT_EQ(std::count(told.begin(), told.end(), "all"), 1);
}

TEST_F(CpuSample, ManyThreadsMaySampleAtOnce) {
  processors.counts = TaskCounts{1, 2};
  const auto cpu = monitor();
  std::vector<std::thread> threads;
  for (int i = 0; i < 4; ++i)
    threads.emplace_back([&] {
      for (int round = 0; round < 50; ++round) cpu->updateInfo();
      cpu->setCpuName(cpu->cpuSpeed());
    });
  for (auto& thread : threads) thread.join();
  EXPECT_EQ(std::count(told.begin(), told.end(), "tasks"), 200);
}

}  // namespace
}  // namespace vantile
