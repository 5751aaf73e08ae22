#include "vantile/foundation/run_loop.h"

#include <gtest/gtest.h>

#include <stdexcept>
#include <string>
#include <thread>
#include <vector>

#include "fakes/recorded_log.h"
#include "fakes/stepped_loop.h"

namespace vantile {
namespace {

using std::chrono::milliseconds;
using std::chrono::seconds;
using testing::RecordedLog;
using testing::SteppedDriver;
using testing::SteppedLoop;

class Loop : public ::testing::Test {
 protected:
  SteppedLoop stepped;
  RunLoop& loop = stepped.loop();
};

TEST_F(Loop, CallsATimerEveryPeriod) {
  int calls = 0;
  const auto timer = loop.every(seconds(1), [&] { ++calls; });
  stepped.advance(milliseconds(999));
  EXPECT_EQ(calls, 0);
  stepped.advance(milliseconds(2001));
  EXPECT_EQ(calls, 3);
}

TEST_F(Loop, AHundredTicksDoNotDrift) {
  std::vector<TimerSchedule::Moment> ticks;
  const auto start = loop.now();
  const auto timer = loop.every(milliseconds(200), [&] {
    ticks.push_back(loop.now());
    stepped.driver().stall(milliseconds(7));  // each call takes its time
  });
  stepped.advance(seconds(20) + milliseconds(7));
  ASSERT_EQ(ticks.size(), 100u);
  EXPECT_EQ(ticks.back() - start, seconds(20));
}

TEST_F(Loop, SixTimersOfOneSecondWakeItOnceASecond) {
  std::vector<Timer> timers;
  int calls = 0;
  for (int i = 0; i < 6; ++i) {
    timers.push_back(loop.every(seconds(1), [&] { ++calls; }));
    stepped.driver().stall(milliseconds(15));
  }
  stepped.advance(seconds(1));
  const int before = stepped.driver().wakeups;
  calls = 0;
  stepped.advance(seconds(10));
  EXPECT_EQ(stepped.driver().wakeups - before, 10);
  EXPECT_EQ(calls, 60);
}

TEST_F(Loop, ATimerGoesWithItsHandle) {
  int calls = 0;
  {
    const auto timer = loop.every(seconds(1), [&] { ++calls; });
    EXPECT_TRUE(timer.isValid());
  }
  stepped.advance(seconds(5));
  EXPECT_EQ(calls, 0);
}

TEST_F(Loop, AnAssignedHandleEndsTheTimerThatItHeld) {
  int first = 0, second = 0;
  auto timer = loop.every(seconds(1), [&] { ++first; });
  timer = loop.every(seconds(1), [&] { ++second; });
  stepped.advance(seconds(2));
  EXPECT_EQ(first, 0);
  EXPECT_EQ(second, 2);
}

TEST_F(Loop, ATimerMayEndItselfInItsCall) {
  int calls = 0;
  Timer timer;
  timer = loop.every(seconds(1), [&] {
    ++calls;
    timer.invalidate();
  });
  stepped.advance(seconds(5));
  EXPECT_EQ(calls, 1);
  EXPECT_FALSE(timer.isValid());
}

TEST_F(Loop, ATimerEndedByAnotherInTheSameWakeupIsNotCalled) {
  int calls = 0;
  Timer second;
  const auto first = loop.every(seconds(1), [&] { second.invalidate(); });
  second = loop.every(seconds(1), [&] { ++calls; });
  stepped.advance(seconds(3));
  EXPECT_EQ(calls, 0);
}

TEST_F(Loop, APeriodOfZeroOrLessGivesNoTimer) {
  EXPECT_FALSE(loop.every(seconds(0), [] {}).isValid());
  EXPECT_FALSE(loop.every(seconds(-1), [] {}).isValid());
}

TEST_F(Loop, ATimerForOnceIsCalledOnce) {
  int calls = 0;
  const auto timer = loop.after(seconds(2), [&] { ++calls; });
  stepped.advance(seconds(10));
  EXPECT_EQ(calls, 1);
  EXPECT_FALSE(timer.isValid());
}

TEST_F(Loop, ATimerOutlivesItsLoopHarmlessly) {
  Timer timer;
  {
    const auto other = RunLoop::on(std::make_unique<SteppedDriver>());
    timer = other->every(seconds(1), [] {});
    EXPECT_TRUE(timer.isValid());
  }
  EXPECT_FALSE(timer.isValid());
  timer.invalidate();
}

TEST_F(Loop, WhatATimerHoldsMayOwnTimersToo) {
  const auto owned = std::make_shared<Timer>(loop.every(seconds(1), [] {}));
  auto owner = loop.after(seconds(1), [owned] {});
  const std::weak_ptr<Timer> seen = owned;
  const_cast<std::shared_ptr<Timer>&>(owned).reset();
  stepped.advance(seconds(2));
  EXPECT_TRUE(seen.expired());
}

TEST_F(Loop, WorksOffPostsInOrder) {
  std::string order;
  loop.post([&] { order += 'a'; });
  loop.post([&] { order += 'b'; });
  EXPECT_EQ(order, "");
  stepped.settle();
  EXPECT_EQ(order, "ab");
}

TEST_F(Loop, WorkThatPostsItselfDoesNotHoldUpTimers) {
  int posts = 0, ticks = 0;
  std::function<void()> again = [&] {
    if (++posts < 1000) loop.post(again);
    stepped.driver().stall(milliseconds(10));
  };
  const auto timer = loop.every(seconds(1), [&] { ++ticks; });
  loop.post(again);
  stepped.settle();
  EXPECT_EQ(posts, 1000);
  EXPECT_GE(ticks, 9);
}

TEST_F(Loop, APostAfterADelayWaitsForIt) {
  bool done = false;
  loop.postAfter(seconds(2), [&] { done = true; });
  stepped.advance(milliseconds(1999));
  EXPECT_FALSE(done);
  stepped.advance(milliseconds(1));
  EXPECT_TRUE(done);
}

TEST_F(Loop, APostFromAnotherThreadRunsOnTheLoopsThread) {
  std::thread::id ranOn;
  std::thread([&] { loop.post([&] { ranOn = std::this_thread::get_id(); }); }).join();
  stepped.settle();
  EXPECT_EQ(ranOn, std::this_thread::get_id());
}

TEST_F(Loop, WhatACallThrowsIsLoggedAndTheRestGoesOn) {
  const RecordedLog log;
  int calls = 0;
  loop.post([] { throw std::runtime_error("a host's mistake"); });
  loop.post([&] { ++calls; });
  const auto timer = loop.every(seconds(1), [&] {
    ++calls;
    throw 7;
  });
  stepped.advance(seconds(2));
  EXPECT_EQ(calls, 3);
  ASSERT_EQ(log.lines.size(), 3u);
  EXPECT_EQ(log.lines[0], "posted work threw: a host's mistake");
  EXPECT_EQ(log.lines[1], "a timer threw: something that is not a std::exception");
}

TEST_F(Loop, IsTheCurrentAndTheMainOneWhileOverridden) {
  EXPECT_EQ(&RunLoop::current(), &loop);
  EXPECT_EQ(&RunLoop::main(), &loop);
  std::thread([this] {
    EXPECT_NE(&RunLoop::current(), &loop);
    EXPECT_EQ(&RunLoop::main(), &loop);
  }).join();
}

}  // namespace
}  // namespace vantile
