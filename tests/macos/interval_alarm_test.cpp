#include "vantile/platform/interval_alarm.h"

#include <signal.h>
#include <sys/time.h>

#include <chrono>
#include <csignal>

#include "seam.h"

namespace vantile {
namespace {

volatile std::sig_atomic_t alarms = 0;
void count(int) {
  alarms = alarms + 1;
}

class IntervalAlarmSeam : public Seam {
 protected:
  void TearDown() override {
    const itimerval none = {};
    ::setitimer(ITIMER_REAL, &none, nullptr);
    ::signal(SIGALRM, SIG_DFL);
    Seam::TearDown();
  }

  const std::shared_ptr<IntervalAlarm> alarm = systemIntervalAlarm();
  IntervalTimerSetting previous;
};

TEST_F(IntervalAlarmSeam, GivesTheSettingThatWasThere) {
  EXPECT_EQ(alarm->set({7, 250, 3600, 500}, previous), 0);
  EXPECT_EQ(alarm->set({}, previous), 0);
  EXPECT_EQ(previous.intervalSeconds, 7);
  EXPECT_GE(previous.intervalMicroseconds, 250);  // Linux rounds up to its tick
  EXPECT_GT(previous.valueSeconds, 3500);
  EXPECT_EQ(alarm->set({}, previous), 0);
  EXPECT_EQ(previous.valueSeconds, 0);
  EXPECT_EQ(previous.valueMicroseconds, 0);
}

TEST_F(IntervalAlarmSeam, SaysWhenASettingIsRefused) {
  previous.valueSeconds = 77;
  EXPECT_EQ(alarm->set({0, 0, 0, 1'000'000}, previous), -1);
  EXPECT_EQ(previous.valueSeconds, 77);
}

TEST_F(IntervalAlarmSeam, LetsTheHandlerHandleMoreThanOneAlarm) {
  alarms = 0;
  alarm->handle(count);
  ::raise(SIGALRM);
  ::raise(SIGALRM);
  EXPECT_EQ(alarms, 2);
}

TEST_F(IntervalAlarmSeam, PausesForTheWholeTimeThroughAnAlarm) {
  alarms = 0;
  alarm->handle(count);
  alarm->set({0, 0, 0, 1000}, previous);
  const auto before = std::chrono::steady_clock::now();
  EXPECT_EQ(alarm->pause(1), 0u);
  EXPECT_GE(std::chrono::steady_clock::now() - before, std::chrono::milliseconds(990));
  EXPECT_EQ(alarms, 1);
}

}  // namespace
}  // namespace vantile
