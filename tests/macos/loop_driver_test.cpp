#include "vantile/foundation/loop_driver.h"

#include <CoreFoundation/CoreFoundation.h>

#include <atomic>
#include <new>
#include <thread>

#include "seam.h"

namespace vantile {
namespace {

using namespace std::chrono_literals;

class LoopDriverSeam : public Seam {
 protected:
  void TearDown() override {
    driver.reset();
    Seam::TearDown();
  }

  /// Counts the calls of `serve` and stops the run at the given one.
  void attach(int stopAt = 0) {
    driver->attach([this, stopAt] {
      if (++served == stopAt) driver->stop();
    });
  }

  std::unique_ptr<LoopDriver> driver = makeLoopDriver();
  int served = 0;
};

TEST_F(LoopDriverSeam, GivesBackItsObjectsAndTheLoop) {
  attach();
  EXPECT_EQ(fakes::live(), (fakes::Live{.sources = 1, .timers = 1, .loopReferences = 1}));
  driver.reset();
  EXPECT_EQ(fakes::live(), fakes::Live{});
}

TEST_F(LoopDriverSeam, GivesBackItsObjectsWithoutEverHavingALoop) {
  driver->wake();
  driver.reset();
  EXPECT_EQ(fakes::live(), fakes::Live{});
}

TEST_F(LoopDriverSeam, ThrowsWhereNoObjectCanBeMade) {
  fakes::machine.refusesObjects = true;
  EXPECT_THROW(makeLoopDriver(), std::bad_alloc);
}

TEST_F(LoopDriverSeam, GoesByTheClockOfTheSystemsTimers) {
  EXPECT_EQ(driver->now().time_since_epoch(), fakes::uptime());
}

TEST_F(LoopDriverSeam, HasNoDescriptor) {
  attach();
  EXPECT_EQ(driver->fd(), -1);
}

TEST_F(LoopDriverSeam, ServesAWakeFromBeforeItsLoop) {
  driver->wake();
  attach();
  EXPECT_EQ(served, 0);
  driver->dispatch();
  EXPECT_EQ(served, 1);
}

TEST_F(LoopDriverSeam, ServesAWakeFromAnotherThreadOutOfItsSleep) {
  attach(1);
  std::thread other([this] { driver->wake(); });
  driver->run();
  other.join();
  EXPECT_EQ(served, 2);  // the wake, and the stop that it led to
}

TEST_F(LoopDriverSeam, WakesAtAMomentAndNeverBefore) {
  attach();
  for (const auto delay : {1ns, 119ns, 999'999ns, 1'000'000'007ns, 59'999'999'999ns}) {
    served = 0;
    const auto moment = driver->now() + delay;
    driver->wakeAt(moment);
    CFRunLoopRunInMode(kCFRunLoopDefaultMode, 0, false);
    EXPECT_EQ(served, 0);
    fakes::advance(delay - 1ns);
    CFRunLoopRunInMode(kCFRunLoopDefaultMode, 0, false);
    EXPECT_EQ(served, 0);
    fakes::advance(2us);
    CFRunLoopRunInMode(kCFRunLoopDefaultMode, 0, false);
    EXPECT_EQ(served, 1);
  }
}

TEST_F(LoopDriverSeam, WakesForAMomentThatIsPast) {
  attach();
  driver->wakeAt(driver->now() - 1h);
  fakes::advance(2us);
  CFRunLoopRunInMode(kCFRunLoopDefaultMode, 0, false);
  EXPECT_EQ(served, 1);
}

TEST_F(LoopDriverSeam, TakesAPastMomentInsideItsOwnWakeup) {
  int calls = 0;
  driver->attach(
      [&] { driver->wakeAt(++calls < 3 ? std::optional(driver->now()) : std::nullopt); });
  driver->wakeAt(driver->now());
  for (int pass = 0; pass < 5; ++pass) {
    fakes::advance(2us);
    CFRunLoopRunInMode(kCFRunLoopDefaultMode, 0, false);
  }
  EXPECT_EQ(calls, 3);
}

TEST_F(LoopDriverSeam, AsksForNoWakeupWhereNoneIsWanted) {
  attach();
  driver->wakeAt(driver->now() + 1s);
  driver->wakeAt(std::nullopt);
  fakes::advance(24h);
  CFRunLoopRunInMode(kCFRunLoopDefaultMode, 0, false);
  EXPECT_EQ(served, 0);
}

TEST_F(LoopDriverSeam, EndsARunAtOnceForAStopThatCameBefore) {
  attach();
  driver->stop();
  driver->run();
  EXPECT_EQ(fakes::wakeups(), 0);
  EXPECT_EQ(served, 0);
}

TEST_F(LoopDriverSeam, EndsOneRunForAStop) {
  attach(2);
  driver->stop();
  driver->run();
  EXPECT_EQ(served, 0);
  driver->wakeAt(driver->now() + 1s);
  driver->run();
  EXPECT_GE(served, 2);
}

TEST_F(LoopDriverSeam, EndsARunForAStopFromAnotherThread) {
  attach();
  std::thread other([this] { driver->stop(); });
  driver->run();
  other.join();
}

TEST_F(LoopDriverSeam, EndsItsRunThroughARunOfTheHostsInside) {
  driver->attach([this] {
    if (++served != 1) return;
    driver->stop();
    CFRunLoopRun();
  });
  driver->wake();
  driver->run();
  EXPECT_GE(served, 2);
}

TEST_F(LoopDriverSeam, EndsNoRunOfTheHosts) {
  attach();
  driver->stop();
  std::atomic<bool> ended = false;
  std::thread other([&, loop = CFRunLoopGetCurrent()] {
    while (fakes::wakeups() < 3) driver->wake();
    ended = true;
    CFRunLoopStop(loop);
  });
  int runs = 0;
  for (; !ended; ++runs) CFRunLoopRun();
  other.join();
  EXPECT_EQ(runs, 1);
}

TEST_F(LoopDriverSeam, ServesWhatIsDueWithoutWaiting) {
  attach();
  driver->dispatch();
  driver->dispatch();
  EXPECT_EQ(served, 2);
  EXPECT_EQ(fakes::wakeups(), 0);
}

TEST_F(LoopDriverSeam, MayEndInsideACallOfItsLoop) {
  driver->attach([this] { driver.reset(); });
  driver->wake();
  CFRunLoopRunInMode(kCFRunLoopDefaultMode, 0, false);
  EXPECT_EQ(fakes::live(), fakes::Live{});
}

TEST_F(LoopDriverSeam, AnotherThreadMayAttachItToTheMainLoop) {
  CFRunLoopGetMain();  // as the first thread has it from the start
  driver = makeMainLoopDriver();
  EXPECT_TRUE(driver->attachesAnywhere());
  std::thread([this] { attach(); }).join();
  driver->wake();
  CFRunLoopRunInMode(kCFRunLoopDefaultMode, 0, false);
  EXPECT_EQ(served, 1);
}

TEST_F(LoopDriverSeam, OnlyTheLoopsOwnThreadAttachesAnyOther) {
  EXPECT_FALSE(driver->attachesAnywhere());
}

TEST_F(LoopDriverSeam, KnowsTheFirstThread) {
  EXPECT_TRUE(onFirstThread());
  fakes::machine.isFirstThread = false;
  EXPECT_FALSE(onFirstThread());
}

}  // namespace
}  // namespace vantile
