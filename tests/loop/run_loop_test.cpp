#include "vantile/foundation/run_loop.h"

#include <gtest/gtest.h>
#include <poll.h>
#include <signal.h>
#include <sys/resource.h>
#include <systemd/sd-event.h>

#include <atomic>
#include <thread>
#include <vector>

#include "vantile/foundation/queue.h"

namespace vantile {
namespace {

using std::chrono::milliseconds;
using std::chrono::steady_clock;

constexpr milliseconds longEnough(5000);

/// Runs each test on a thread of its own, whose run loop is new and ends with it.
class RealLoop : public ::testing::Test {
 protected:
  template <class Body>
  static void onNewThread(Body body) {
    std::thread(body).join();
  }

  /// Whether the descriptor becomes readable in time.
  static bool readable(int fd, milliseconds timeout) {
    pollfd entry = {fd, POLLIN, 0};
    return ::poll(&entry, 1, static_cast<int>(timeout.count())) == 1;
  }

  /// Polls and dispatches as a host would, until `done` or for too long.
  template <class Done>
  static bool pollUntil(Done done) {
    RunLoop& loop = RunLoop::current();
    const auto end = steady_clock::now() + longEnough;
    while (!done() && steady_clock::now() < end)
      if (readable(loop.fd(), longEnough)) loop.dispatch();
    return done();
  }
};

TEST_F(RealLoop, RunServesTimersUntilStopped) {
  onNewThread([] {
    int calls = 0;
    const auto timer = RunLoop::current().every(milliseconds(5), [&] {
      if (++calls == 3) RunLoop::current().stop();
    });
    RunLoop::current().run();
    EXPECT_EQ(calls, 3);
  });
}

TEST_F(RealLoop, AStopThatCameBeforeEndsTheNextRunAtOnce) {
  onNewThread([] {
    RunLoop::current().stop();
    RunLoop::current().run();
  });
}

TEST_F(RealLoop, RunsAgainAfterAStop) {
  onNewThread([] {
    RunLoop& loop = RunLoop::current();
    int posts = 0;
    for (int round = 0; round < 3; ++round) {
      loop.post([&] {
        ++posts;
        loop.stop();
      });
      loop.run();
    }
    EXPECT_EQ(posts, 3);
  });
}

TEST_F(RealLoop, IsStoppedFromAnotherThread) {
  onNewThread([] {
    RunLoop& loop = RunLoop::current();
    std::thread other;
    loop.post([&] { other = std::thread([&] { loop.stop(); }); });
    loop.run();
    other.join();
  });
}

TEST_F(RealLoop, ARunInsideACallDoesNothing) {
  onNewThread([] {
    RunLoop& loop = RunLoop::current();
    loop.post([&] {
      loop.run();
      loop.dispatch();
      loop.stop();
    });
    loop.run();
  });
}

TEST_F(RealLoop, ABarePollServesTimersAndPosts) {
  onNewThread([] {
    int ticks = 0;
    bool posted = false;
    const auto timer = RunLoop::current().every(milliseconds(5), [&] { ++ticks; });
    RunLoop::current().post([&] { posted = true; });
    EXPECT_TRUE(pollUntil([&] { return ticks >= 3 && posted; }));
  });
}

TEST_F(RealLoop, TheDescriptorIsQuietWhileNothingIsDue) {
  onNewThread([] {
    RunLoop& loop = RunLoop::current();
    const auto timer = loop.every(std::chrono::hours(1), [] {});
    loop.dispatch();
    EXPECT_FALSE(readable(loop.fd(), milliseconds(0)));
  });
}

TEST_F(RealLoop, ATimerAddedBetweenTwoPollsWakesTheDescriptor) {
  onNewThread([] {
    RunLoop& loop = RunLoop::current();
    loop.dispatch();
    bool called = false;
    const auto timer = loop.after(milliseconds(1), [&] { called = true; });
    EXPECT_TRUE(pollUntil([&] { return called; }));
  });
}

TEST_F(RealLoop, ATimerAddedByAnotherThreadDuringAPollWakesTheDescriptor) {
  onNewThread([] {
    RunLoop& loop = RunLoop::current();
    loop.dispatch();
    std::atomic<bool> called = false;
    Timer timer;
    std::thread other([&] { timer = loop.after(milliseconds(20), [&] { called = true; }); });
    EXPECT_TRUE(pollUntil([&] { return called.load(); }));
    other.join();
  });
}

TEST_F(RealLoop, AnEarlierTimerReplacesALaterWakeup) {
  onNewThread([] {
    RunLoop& loop = RunLoop::current();
    const auto late = loop.every(std::chrono::hours(1), [] {});
    loop.dispatch();
    bool called = false;
    const auto early = loop.after(milliseconds(10), [&] { called = true; });
    loop.dispatch();
    EXPECT_TRUE(readable(loop.fd(), longEnough));
    loop.dispatch();
    EXPECT_TRUE(called);
  });
}

TEST_F(RealLoop, ATimerSetInsideACallNeedsNoFurtherWake) {
  onNewThread([] {
    bool called = false;
    Timer inner;
    RunLoop::current().post(
        [&] { inner = RunLoop::current().after(milliseconds(5), [&] { called = true; }); });
    EXPECT_TRUE(pollUntil([&] { return called; }));
  });
}

TEST_F(RealLoop, ACancelledTimerLeavesTheDescriptorQuiet) {
  onNewThread([] {
    RunLoop& loop = RunLoop::current();
    auto timer = loop.after(milliseconds(10), [] {});
    loop.dispatch();
    timer.invalidate();
    loop.dispatch();
    EXPECT_FALSE(readable(loop.fd(), milliseconds(50)));
  });
}

TEST_F(RealLoop, APostFromAnotherThreadWakesTheDescriptor) {
  onNewThread([] {
    RunLoop& loop = RunLoop::current();
    loop.dispatch();
    bool done = false;
    std::thread([&] { loop.post([&] { done = true; }); }).join();
    EXPECT_TRUE(readable(loop.fd(), longEnough));
    loop.dispatch();
    EXPECT_TRUE(done);
  });
}

TEST_F(RealLoop, AHostsOwnDefaultEventLoopServesItToo) {
  onNewThread([] {
    sd_event* event = nullptr;
    ASSERT_GE(sd_event_default(&event), 0);
    bool called = false;
    const auto timer = RunLoop::current().after(milliseconds(1), [&] {
      called = true;
      sd_event_exit(event, 0);
    });
    EXPECT_EQ(sd_event_loop(event), 0);
    EXPECT_TRUE(called);
    sd_event_unref(event);
  });
}

TEST_F(RealLoop, TicksKeepToTheClock) {
  onNewThread([] {
    const auto start = steady_clock::now();
    std::vector<steady_clock::time_point> ticks;
    const auto timer = RunLoop::current().every(milliseconds(10), [&] {
      ticks.push_back(steady_clock::now());
      if (ticks.size() == 30) RunLoop::current().stop();
    });
    RunLoop::current().run();
    // Whatever the load, no tick comes before its time; a loop that adds up its delays or rounds
    // its periods down does that sooner or later.
    for (std::size_t i = 0; i < ticks.size(); ++i)
      EXPECT_GE(ticks[i] - start, milliseconds(10) * (static_cast<int>(i) + 1));
  });
}

TEST_F(RealLoop, SignalsDoNotEndIt) {
  onNewThread([] {
    struct sigaction action = {}, before = {};
    action.sa_handler = [](int) {};
    ::sigaction(SIGUSR1, &action, &before);
    RunLoop& loop = RunLoop::current();
    const auto self = ::pthread_self();
    int ticks = 0;
    const auto timer = loop.every(milliseconds(5), [&] {
      if (++ticks == 5) loop.stop();
    });
    std::atomic<bool> over = false;
    std::thread pest([&] {
      while (!over) {
        ::pthread_kill(self, SIGUSR1);
        std::this_thread::sleep_for(milliseconds(1));
      }
    });
    loop.run();
    EXPECT_EQ(ticks, 5);
    over = true;
    pest.join();
    ::sigaction(SIGUSR1, &before, nullptr);
  });
}

TEST_F(RealLoop, TheMainLoopTakesPostsBeforeItsThreadAsksForIt) {
  // In a process of its own, so that the first thread has not asked yet.
  ::testing::FLAGS_gtest_death_test_style = "threadsafe";
  EXPECT_EXIT(
      {
        bool done = false;
        std::thread([&] {
          Queue::main().async([&] { done = true; });
          RunLoop::main().post([] { RunLoop::main().stop(); });
        }).join();
        RunLoop::main().run();
        std::exit(done ? 0 : 1);
      },
      ::testing::ExitedWithCode(0), "");
}

TEST_F(RealLoop, OneThatIsHeldBeyondItsThreadIsHarmless) {
  std::shared_ptr<RunLoop> held;
  Timer timer;
  onNewThread([&] {
    held = RunLoop::current().shared_from_this();
    timer = held->every(milliseconds(1), [] {});
  });
  held->post([] {});
  held->stop();
  timer.invalidate();
  EXPECT_EQ(held->fd(), -1);
  held.reset();
}

TEST_F(RealLoop, ManyThreadsMayPostAndSetTimersAtOnce) {
  onNewThread([] {
    RunLoop& loop = RunLoop::current();
    std::atomic<int> called = 0;
    constexpr int threads = 4, rounds = 200;
    std::vector<std::thread> others;
    for (int i = 0; i < threads; ++i) {
      others.emplace_back([&] {
        for (int round = 0; round < rounds; ++round) {
          loop.post([&] { ++called; });
          auto timer = loop.every(milliseconds(1), [] {});
          loop.postAfter(milliseconds(1), [&] { ++called; });
        }
      });
    }
    EXPECT_TRUE(pollUntil([&] { return called == threads * rounds * 2; }));
    for (auto& other : others) other.join();
  });
}

}  // namespace
}  // namespace vantile
