#include "vantile/foundation/worker_queue.h"

#include <gtest/gtest.h>
#include <signal.h>

#include <atomic>
#include <condition_variable>
#include <latch>
#include <mutex>
#include <thread>

namespace vantile {
namespace {

using std::chrono::milliseconds;

TEST(WorkerQueue, RunsWorkOnAnotherThread) {
  std::latch done(1);
  std::thread::id ranOn;
  systemWorkerQueue().submit([&] {
    ranOn = std::this_thread::get_id();
    done.count_down();
  });
  done.wait();
  EXPECT_NE(ranOn, std::this_thread::get_id());
}

TEST(WorkerQueue, WorkThatBlocksDoesNotHoldUpTheRest) {
  constexpr int blocked = 10;
  std::latch all(blocked);  // each waits for all the others
  std::latch done(blocked);
  for (int i = 0; i < blocked; ++i) {
    systemWorkerQueue().submit([&] {
      all.arrive_and_wait();
      done.count_down();
    });
  }
  done.wait();
}

TEST(WorkerQueue, DelayedWorkWaitsAndThenRunsThoughOthersBlock) {
  std::latch release(1), done(1), freed(3);
  for (int i = 0; i < 3; ++i) {
    systemWorkerQueue().submit([&] {
      release.wait();
      freed.count_down();
    });
  }
  const auto start = std::chrono::steady_clock::now();
  std::chrono::nanoseconds waited{0};
  systemWorkerQueue().submitAfter(milliseconds(30), [&] {
    waited = std::chrono::steady_clock::now() - start;
    done.count_down();
  });
  done.wait();
  EXPECT_GE(waited, milliseconds(30));
  release.count_down();
  freed.wait();
}

TEST(WorkerQueue, TheLongestDelayIsNotOver) {
  std::atomic<bool> ran = false;
  systemWorkerQueue().submitAfter(std::chrono::nanoseconds::max(), [&] { ran = true; });
  std::latch done(1);
  systemWorkerQueue().submitAfter(milliseconds(30), [&] { done.count_down(); });
  done.wait();
  EXPECT_FALSE(ran);
}

TEST(WorkerQueue, WorkMaySubmitMore) {
  std::latch done(1);
  systemWorkerQueue().submit([&] { systemWorkerQueue().submit([&] { done.count_down(); }); });
  done.wait();
}

TEST(WorkerQueue, ItsThreadsTakeNoSignalsButThoseOfTheirOwnFaults) {
  std::latch done(1);
  sigset_t mask;
  systemWorkerQueue().submit([&] {
    ::pthread_sigmask(SIG_SETMASK, nullptr, &mask);
    done.count_down();
  });
  done.wait();
  EXPECT_TRUE(sigismember(&mask, SIGINT));
  EXPECT_TRUE(sigismember(&mask, SIGCHLD));
  EXPECT_TRUE(sigismember(&mask, SIGALRM));
  EXPECT_FALSE(sigismember(&mask, SIGSEGV));
}

TEST(WorkerQueue, TheCallersSignalMaskIsLeftAlone) {
  sigset_t before, after;
  ::pthread_sigmask(SIG_SETMASK, nullptr, &before);
  std::latch done(1);
  systemWorkerQueue().submit([&] { done.count_down(); });
  done.wait();
  ::pthread_sigmask(SIG_SETMASK, nullptr, &after);
  EXPECT_EQ(sigismember(&before, SIGINT), sigismember(&after, SIGINT));
}

}  // namespace
}  // namespace vantile
