#include "vantile/foundation/timer_schedule.h"

#include <gtest/gtest.h>

namespace vantile {
namespace {

using std::chrono::milliseconds;
using std::chrono::seconds;

class Schedule : public ::testing::Test {
 protected:
  using Moment = TimerSchedule::Moment;

  static Moment at(double inSeconds) {
    return Moment(
        std::chrono::round<std::chrono::nanoseconds>(std::chrono::duration<double>(inSeconds)));
  }

  TimerSchedule::Id add(char name, double due, TimerSchedule::Duration period) {
    return timers.add(at(due), period, std::make_shared<const std::function<void()>>([this, name] {
                        fired.push_back(name);
                      }));
  }

  /// Serves one wakeup and tells who was called in it.
  std::string wake(double now) {
    fired.clear();
    if (const auto wakeup = timers.wakeUp(at(now)))
      while (const auto fire = timers.takeDue(*wakeup)) (*fire)();
    return fired;
  }

  TimerSchedule timers;
  std::string fired;
};

TEST_F(Schedule, ServesNothingBeforeItIsDue) {
  add('a', 1, seconds(1));
  EXPECT_EQ(wake(0.999), "");
  EXPECT_EQ(wake(1), "a");
}

TEST_F(Schedule, KeepsThePhaseOfALateCall) {
  add('a', 1, seconds(1));
  EXPECT_EQ(wake(1.3), "a");
  EXPECT_EQ(timers.next(), at(2));
}

TEST_F(Schedule, SkipsPeriodsThatWereMissed) {
  add('a', 1, seconds(1));
  EXPECT_EQ(wake(5.5), "a");
  EXPECT_EQ(timers.next(), at(6));
}

TEST_F(Schedule, ACallOnTheDotOfALaterPeriodCountsForThatPeriod) {
  add('a', 1, seconds(1));
  EXPECT_EQ(wake(3), "a");
  EXPECT_EQ(timers.next(), at(4));
}

TEST_F(Schedule, TimersWithinATenthOfTheirPeriodShareAWakeup) {
  add('a', 1, seconds(1));
  add('b', 1.1, seconds(1));
  EXPECT_EQ(wake(1), "ab");
  EXPECT_EQ(timers.next(), at(2));
}

TEST_F(Schedule, TimersFartherApartDoNot) {
  add('a', 1, seconds(1));
  add('b', 1.101, seconds(1));
  EXPECT_EQ(wake(1), "a");
  EXPECT_EQ(timers.next(), at(1.101));
}

TEST_F(Schedule, TheShorterPeriodDecidesWhatIsNear) {
  add('a', 1, seconds(1));
  add('b', 1.5, seconds(10));
  EXPECT_EQ(wake(1), "a");
}

TEST_F(Schedule, ACallThatCameEarlyKeepsItsPhase) {
  add('a', 1, seconds(1));
  add('b', 1.05, seconds(1));
  wake(1);
  EXPECT_EQ(wake(2), "ab");
  EXPECT_EQ(wake(2.05), "");
  EXPECT_EQ(timers.next(), at(3));
}

TEST_F(Schedule, WhatIsOverdueIsServedInOrder) {
  add('b', 2, seconds(10));
  add('a', 1, seconds(10));
  EXPECT_EQ(wake(5), "ab");
}

TEST_F(Schedule, ATimerForOnceIsGoneAfterItsCall) {
  const auto id = add('a', 1, TimerSchedule::Duration::zero());
  EXPECT_TRUE(timers.contains(id));
  EXPECT_EQ(wake(1), "a");
  EXPECT_FALSE(timers.contains(id));
  EXPECT_EQ(timers.next(), std::nullopt);
}

TEST_F(Schedule, ATimerForOnceNeverComesEarly) {
  add('a', 1, seconds(1));
  add('b', 1.05, TimerSchedule::Duration::zero());
  EXPECT_EQ(wake(1), "a");
}

TEST_F(Schedule, TheLongestPeriodEndsWithTime) {
  using Duration = TimerSchedule::Duration;
  add('a', 1, Duration::max());
  EXPECT_EQ(wake(1), "a");
  EXPECT_EQ(timers.next(), Moment::max());
  EXPECT_EQ(TimerSchedule::later(at(1), Duration::max()), Moment::max());
  EXPECT_EQ(TimerSchedule::later(at(1), seconds(1)), at(2));
}

TEST_F(Schedule, ThoseInBetweenThatAreNotNearAreNotTakenAlong) {
  add('a', 100, seconds(60));
  add('b', 105, seconds(60));
  add('m', 100.5, seconds(1));
  add('o', 103, TimerSchedule::Duration::zero());
  EXPECT_EQ(wake(100), "ab");
  EXPECT_EQ(wake(100.5), "m");
  EXPECT_EQ(timers.next(), at(101.5));
}

TEST_F(Schedule, ARemovedTimerIsNotCalledAnyMore) {
  const auto id = add('a', 1, seconds(1));
  EXPECT_NE(timers.remove(id), nullptr);
  EXPECT_EQ(timers.remove(id), nullptr);
  EXPECT_EQ(wake(2), "");
}

}  // namespace
}  // namespace vantile
