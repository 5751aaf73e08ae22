#include "vantile/memory/cleaner.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "fakes/fake_memory_ports.h"

namespace vantile {
namespace {

int completions = 0;
int complete() {
  return 40 + ++completions;
}

class Cleaner : public ::testing::Test {
 protected:
  Cleaner() { completions = 0; }

  std::size_t passes() const { return pressure.requests / requestsInAPass; }

  // A head, and a node and a block for each of the 17 that a pass takes in mode 1.
  static constexpr std::size_t requestsInAPass = 1 + 2 * 17;

  testing::FakeMemoryPorts ports;
  testing::FakePressureMemory& pressure = *ports.pressure;
  testing::FakeIntervalAlarm& alarm = *ports.alarm;
};

TEST_F(Cleaner, ArmsTheAlarmWorksWaitsAndCompletes) {
  pressure.onRequest = [this] { alarm.handler(14); };
  EXPECT_EQ(clear_memory(complete, 1, nullptr), 41);
  EXPECT_EQ(alarm.log, (std::vector<std::string>{"handle", "set 0.0 10.0", "pause 1", "leave"}));
  EXPECT_EQ(alarm.handler, signal_handler);
  EXPECT_EQ(completions, 1);
}

TEST_F(Cleaner, WorksPassAfterPassUntilTheAlarm) {
  pressure.onRequest = [this] {
    if (pressure.requests == 2 * requestsInAPass) alarm.handler(14);  // in the third pass
  };
  clear_memory(nullptr, 1, nullptr);
  EXPECT_EQ(passes(), 3u);
  EXPECT_TRUE(pressure.live.empty());
}

TEST_F(Cleaner, AStopFlagThatIsSetAlreadyRunsNoPassButThePauseAndTheCompletion) {
  std::int32_t stop = 1;
  EXPECT_EQ(clear_memory(complete, 0, &stop), 41);
  EXPECT_EQ(pressure.requests, 0u);
  EXPECT_EQ(alarm.log.at(2), "pause 1");
  EXPECT_EQ(stop, 1);
}

TEST_F(Cleaner, AnyNonzeroStopFlagAtTheStartRunsNoPass) {
  std::int32_t stop = -5;
  clear_memory(nullptr, 1, &stop);
  EXPECT_EQ(pressure.requests, 0u);
  EXPECT_EQ(stopClearMemory, -5);
}

TEST_F(Cleaner, TheCallersFlagEndsItAfterGivingThePassBack) {
  std::int32_t stop = 0;
  pressure.onRequest = [&] { stop = pressure.requests >= requestsInAPass + 4 ? 1 : 0; };
  clear_memory(nullptr, 1, &stop);
  EXPECT_EQ(passes(), 1u);  // the second one was cut short
  EXPECT_GT(pressure.requests, requestsInAPass);
  EXPECT_TRUE(pressure.live.empty());
  EXPECT_EQ(stopClearMemory, 0);
}

TEST_F(Cleaner, APassThatCanNotBeginIsNoReasonToEnd) {
  pressure.failingRequest = 1;
  pressure.onRequest = [this] {
    if (pressure.requests == 5) alarm.handler(14);
  };
  clear_memory(nullptr, 1, nullptr);
  EXPECT_GE(pressure.requests, requestsInAPass);
}

TEST_F(Cleaner, WithoutACompletionTheResultIsThatOfThePause) {
  std::int32_t stop = 1;
  EXPECT_EQ(clear_memory(nullptr, 1, &stop), 0);
  alarm.left = 3;
  EXPECT_EQ(clear_memory(nullptr, 1, &stop), 3);
}

TEST_F(Cleaner, AnAlarmThatComesWithItsHandlerIsNotForgotten) {
  alarm.onHandle = pressure.onRequest = [this] { alarm.handler(14); };
  clear_memory(nullptr, 1, nullptr);
  EXPECT_EQ(pressure.requests, 0u);
}

TEST_F(Cleaner, ALaterRunIsNotStoppedByAnEarlierAlarm) {
  std::int32_t stop = 1;
  clear_memory(nullptr, 1, &stop);
  signal_handler(14);
  EXPECT_EQ(stopClearMemory, 1);
  stop = 0;
  pressure.onRequest = [this] { alarm.handler(14); };
  clear_memory(nullptr, 1, &stop);
  EXPECT_EQ(passes(), 1u);
}

TEST_F(Cleaner, TheAlarmIsNeitherDisarmedNorItsHandlerTakenAway) {
  pressure.onRequest = [this] { alarm.handler(14); };
  clear_memory(nullptr, 1, nullptr);
  EXPECT_EQ(alarm.log.size(), 4u);
}

TEST_F(Cleaner, TheTimerFunctionsArmAndDisarm) {
  EXPECT_EQ(int_timer(), 0);
  EXPECT_EQ(uninit_time(), 0);
  EXPECT_EQ(alarm.log, (std::vector<std::string>{"set 0.0 10.0", "set 0.0 0.0"}));
  alarm.result = -1;
  EXPECT_EQ(int_timer(), -1);
  EXPECT_EQ(uninit_time(), -1);
}

TEST_F(Cleaner, TheSignalHandlerSetsTheFlag) {
  stopClearMemory = 0;
  signal_handler(14);
  EXPECT_EQ(stopClearMemory, 1);
}

class MemoryInfo : public Cleaner {
 protected:
  testing::FakeHostMemory& host = *ports.host;
};

TEST_F(MemoryInfo, CountsInactiveMemoryAsUsed) {
  host.pages = {1, 20, 300, 4000};
  host.page = 4096;
  memory_info info = {};
  EXPECT_EQ(get_memory_info(&info), 0);
  EXPECT_EQ(info.total, 4321u * 4096);
  EXPECT_EQ(info.free, 1u * 4096);
  EXPECT_EQ(info.used, 4320u * 4096);
  EXPECT_EQ(info.active, 20u * 4096);
  EXPECT_EQ(info.wired, 4000u * 4096);
  EXPECT_EQ(info.inactive, 300u * 4096);
}

TEST_F(MemoryInfo, StandsInItsOrder) {
  const memory_info info = {1, 2, 3, 4, 5, 6};
  const auto* const words = reinterpret_cast<const std::uint64_t*>(&info);
  EXPECT_EQ(sizeof info, 48u);
  EXPECT_EQ(words[0], info.total);
  EXPECT_EQ(words[1], info.free);
  EXPECT_EQ(words[2], info.used);
  EXPECT_EQ(words[3], info.active);
  EXPECT_EQ(words[4], info.wired);
  EXPECT_EQ(words[5], info.inactive);
}

TEST_F(MemoryInfo, SumsWrapAt32BitsBeforeTheyAreWidened) {
  host.pages = {0xffffffff, 1, 0, 2};
  host.page = 4096;
  memory_info info = {};
  get_memory_info(&info);
  EXPECT_EQ(info.total, 2u * 4096);
  EXPECT_EQ(info.free, 0xffffffffull * 4096);
  host.pages = {0, 0xffffffff, 3, 0};
  get_memory_info(&info);
  EXPECT_EQ(info.used, 2u * 4096);
}

TEST_F(MemoryInfo, ANullRecordIsRefused) {
  EXPECT_EQ(get_memory_info(nullptr), -1);
  EXPECT_EQ(host.pageCountReads, 0);
}

TEST_F(MemoryInfo, AFailedReadingLeavesTheRecordAlone) {
  host.refuses = true;
  memory_info info = {1, 2, 3, 4, 5, 6};
  EXPECT_EQ(get_memory_info(&info), -1);
  EXPECT_EQ(info.free, 2u);
}

}  // namespace
}  // namespace vantile
