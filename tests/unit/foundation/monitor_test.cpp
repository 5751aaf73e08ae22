#include "vantile/foundation/monitor.h"

#include <gtest/gtest.h>

#include <functional>
#include <limits>
#include <thread>

#include "fakes/stepped_loop.h"

namespace vantile {
namespace {

using std::chrono::seconds;

struct CountingDelegate {
  std::function<void(int)> sampled;
};

/// The least that a monitor can be: it counts its samples.
class CountingMonitor final : public Monitor<CountingDelegate> {
 public:
  void updateInfo(const Timer* = nullptr) override {
    tell(delegate(), &CountingDelegate::sampled, ++samples);
  }
  int samples = 0;
};

class MonitorFrame : public ::testing::Test {
 protected:
  testing::SteppedLoop loop;
  std::shared_ptr<CountingMonitor> monitor = std::make_shared<CountingMonitor>();
};

TEST_F(MonitorFrame, HasNoIntervalAndNoTimerAtFirst) {
  loop.advance(seconds(10));
  EXPECT_EQ(monitor->freshInterval(), 0);
  EXPECT_EQ(monitor->samples, 0);
}

TEST_F(MonitorFrame, SamplesOnceAnInterval) {
  monitor->setFreshInterval(2);
  loop.advance(seconds(10));
  EXPECT_EQ(monitor->freshInterval(), 2);
  EXPECT_EQ(monitor->samples, 5);
}

TEST_F(MonitorFrame, TheSameIntervalKeepsTheTimer) {
  monitor->setFreshInterval(2);
  loop.advance(std::chrono::milliseconds(1500));
  monitor->setFreshInterval(2);
  loop.advance(std::chrono::milliseconds(500));
  EXPECT_EQ(monitor->samples, 1);
}

TEST_F(MonitorFrame, ANewIntervalLeavesExactlyOneTimerActive) {
  monitor->setFreshInterval(1);
  monitor->setFreshInterval(2);
  monitor->setFreshInterval(3);
  loop.advance(seconds(6));
  EXPECT_EQ(monitor->samples, 2);
}

TEST_F(MonitorFrame, AnIntervalOfZeroOrLessIsStoredAndStopsSampling) {
  for (const std::int32_t interval : {0, -1, std::numeric_limits<std::int32_t>::min()}) {
    monitor->setFreshInterval(1);
    monitor->setFreshInterval(interval);
    EXPECT_EQ(monitor->freshInterval(), interval);
    loop.advance(seconds(10));
    EXPECT_EQ(monitor->samples, 0);
  }
}

TEST_F(MonitorFrame, TheLongestIntervalIsKept) {
  monitor->setFreshInterval(std::numeric_limits<std::int32_t>::max());
  loop.advance(seconds(std::numeric_limits<std::int32_t>::max()));
  EXPECT_EQ(monitor->samples, 1);
}

TEST_F(MonitorFrame, TheTimerGoesWithTheMonitor) {
  monitor->setFreshInterval(1);
  monitor.reset();
  loop.advance(seconds(1));
  EXPECT_LE(loop.driver().wakeups, 2);  // setting and unsetting the timer
}

TEST_F(MonitorFrame, ReplacingTheDelegateReleasesTheOneBefore) {
  auto delegate = std::make_shared<CountingDelegate>();
  const std::weak_ptr<CountingDelegate> seen = delegate;
  monitor->setDelegate(std::move(delegate));
  EXPECT_FALSE(seen.expired());
  monitor->setDelegate(nullptr);
  EXPECT_TRUE(seen.expired());
}

TEST_F(MonitorFrame, TheEndOfTheMonitorDoesNotReleaseItsDelegate) {
  auto delegate = std::make_shared<CountingDelegate>();
  const std::weak_ptr<CountingDelegate> seen = delegate;
  monitor->setDelegate(std::move(delegate));
  monitor.reset();
  EXPECT_FALSE(seen.expired());
}

TEST_F(MonitorFrame, MayBeLetGoOfInItsOwnDelegateCall) {
  const auto delegate = std::make_shared<CountingDelegate>();
  int calls = 0;
  delegate->sampled = [&](int) {
    ++calls;
    monitor.reset();
  };
  monitor->setDelegate(delegate);
  monitor->setFreshInterval(1);
  loop.advance(seconds(5));
  EXPECT_EQ(calls, 1);
}

TEST_F(MonitorFrame, ChangesItsIntervalInItsOwnDelegateCall) {
  const auto delegate = std::make_shared<CountingDelegate>();
  delegate->sampled = [&](int) { monitor->setFreshInterval(5); };
  monitor->setDelegate(delegate);
  monitor->setFreshInterval(1);
  loop.advance(seconds(11));
  EXPECT_EQ(monitor->samples, 3);  // after 1, 6 and 11 seconds
}

TEST_F(MonitorFrame, TicksOnTheLoopOfTheThreadThatSetTheInterval) {
  std::thread([this] {
    testing::SteppedDriver* driver = nullptr;
    auto owned = std::make_unique<testing::SteppedDriver>();
    driver = owned.get();
    const RunLoop::Override own(RunLoop::on(std::move(owned)));
    monitor->setFreshInterval(1);
    driver->advance(seconds(1));
    EXPECT_EQ(monitor->samples, 1);
  }).join();
  loop.advance(seconds(5));
  EXPECT_EQ(monitor->samples, 1);
}

TEST_F(MonitorFrame, AThreadThatEndsTakesItsTimerAlong) {
  std::thread([this] {
    const RunLoop::Override own(RunLoop::on(std::make_unique<testing::SteppedDriver>()));
    monitor->setFreshInterval(1);
  }).join();
  monitor->setFreshInterval(2);
  loop.advance(seconds(4));
  EXPECT_EQ(monitor->samples, 2);
}

}  // namespace
}  // namespace vantile
