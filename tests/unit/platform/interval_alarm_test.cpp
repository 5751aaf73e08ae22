#include "vantile/platform/interval_alarm.h"

#include <gtest/gtest.h>
#include <signal.h>

#include <atomic>
#include <thread>

namespace vantile {
namespace {

std::atomic<int> alarms = 0;
void countAlarm(int) {
  ++alarms;
}

/// Leaves no alarm armed and no handler behind.
struct IntervalAlarmTest : ::testing::Test {
  ~IntervalAlarmTest() override {
    IntervalTimerSetting previous;
    alarm->set({}, previous);
    ::signal(SIGALRM, SIG_DFL);
  }

  const std::shared_ptr<IntervalAlarm> alarm = systemIntervalAlarm();
};

TEST_F(IntervalAlarmTest, SettingItGivesTheSettingBefore) {
  IntervalTimerSetting previous;
  ASSERT_EQ(alarm->set({.intervalSeconds = 70, .valueSeconds = 5000}, previous), 0);
  ASSERT_EQ(alarm->set({}, previous), 0);
  EXPECT_EQ(previous.intervalSeconds, 70);
  EXPECT_GT(previous.valueSeconds, 4000);
  EXPECT_LE(previous.valueSeconds, 5000);
}

TEST_F(IntervalAlarmTest, ZeroesDisarmIt) {
  IntervalTimerSetting previous;
  alarm->set({.valueSeconds = 5000}, previous);
  alarm->set({}, previous);
  alarm->set({}, previous);
  EXPECT_EQ(previous.valueSeconds, 0);
  EXPECT_EQ(previous.valueMicroseconds, 0);
}

TEST_F(IntervalAlarmTest, ASettingThatIsRefusedLeavesThePreviousOneAlone) {
  IntervalTimerSetting previous{1, 2, 3, 4};
  EXPECT_EQ(alarm->set({.valueSeconds = 1, .valueMicroseconds = 2000000}, previous), -1);
  EXPECT_EQ(previous.valueSeconds, 3);
}

TEST_F(IntervalAlarmTest, TheSignalReachesItsHandler) {
  alarms = 0;
  alarm->handle(countAlarm);
  ::raise(SIGALRM);
  ::raise(SIGALRM);
  EXPECT_EQ(alarms, 2);
}

TEST_F(IntervalAlarmTest, AThreadThatBlockedTheSignalReceivesIt) {
  alarms = 0;
  std::thread([this] {
    sigset_t set;
    sigemptyset(&set);
    sigaddset(&set, SIGALRM);
    ::pthread_sigmask(SIG_BLOCK, &set, nullptr);
    alarm->handle(countAlarm);
    ::raise(SIGALRM);
  }).join();
  EXPECT_EQ(alarms, 1);
}

TEST_F(IntervalAlarmTest, APauseOfNothingLeavesNothing) {
  EXPECT_EQ(alarm->pause(0), 0u);
}

/// Blocks SIGALRM on this thread, as a host does that takes it from a descriptor.
struct BlockedAlarmTest : IntervalAlarmTest {
  BlockedAlarmTest() {
    sigset_t set;
    sigemptyset(&set);
    sigaddset(&set, SIGALRM);
    ::pthread_sigmask(SIG_BLOCK, &set, &before);
    alarms = 0;
  }
  ~BlockedAlarmTest() override { ::pthread_sigmask(SIG_SETMASK, &before, nullptr); }

  static bool isBlocked() {
    sigset_t now;
    ::pthread_sigmask(SIG_SETMASK, nullptr, &now);
    return sigismember(&now, SIGALRM) == 1;
  }

  sigset_t before;
};

TEST_F(BlockedAlarmTest, AnAlarmFromBeforeIsDropped) {
  ::raise(SIGALRM);
  alarm->handle(countAlarm);
  EXPECT_EQ(alarms, 0);
  ::raise(SIGALRM);
  EXPECT_EQ(alarms, 1);
}

TEST_F(BlockedAlarmTest, TheThreadTakesItUntilItLeaves) {
  alarm->handle(countAlarm);
  EXPECT_FALSE(isBlocked());
  alarm->leave();
  EXPECT_TRUE(isBlocked());
}

TEST_F(IntervalAlarmTest, AThreadThatDidNotBlockItIsLeftAsItWas) {
  alarm->handle(countAlarm);
  alarm->leave();
  EXPECT_FALSE(BlockedAlarmTest::isBlocked());
}

}  // namespace
}  // namespace vantile
