// The cleaner's alarm lands on any thread of the process. Nobody may come to harm by it.

#include <gtest/gtest.h>
#include <pthread.h>
#include <signal.h>
#include <sys/time.h>
#include <time.h>
#include <unistd.h>

#include <atomic>
#include <cerrno>
#include <chrono>
#include <thread>

#include "vantile/memory/cleaner.h"

#include "live/sanitized.h"

namespace vantile {
namespace {

using std::chrono::milliseconds;
using std::chrono::steady_clock;

constexpr std::uint32_t smallBlocksOnly = 1;

struct LiveAlarm : ::testing::Test {
  ~LiveAlarm() override {
    uninit_time();  // an alarm after the test's end would land on the next one
    ::signal(SIGALRM, SIG_DFL);
  }

  static milliseconds since(steady_clock::time_point begin) {
    return std::chrono::duration_cast<milliseconds>(steady_clock::now() - begin);
  }
  static void alarmIn(milliseconds delay) {
    const itimerval setting = {{0, 0}, {delay.count() / 1000, delay.count() % 1000 * 1000}};
    ASSERT_EQ(::setitimer(ITIMER_REAL, &setting, nullptr), 0);
  }
  /// Waits until that much time has gone by since `begin`.
  static void waitUntil(steady_clock::time_point begin, milliseconds elapsed) {
    std::this_thread::sleep_until(begin + elapsed);
  }
};

TEST_F(LiveAlarm, ARunWhoseFlagIsSetOnlyPauses) {
  std::int32_t stop = 1;
  const auto begin = steady_clock::now();
  EXPECT_EQ(clear_memory(nullptr, 0, &stop), 0);
  EXPECT_GE(since(begin), milliseconds(1000));
  EXPECT_LT(since(begin), milliseconds(5000));
  EXPECT_EQ(stop, 1);
}

TEST_F(LiveAlarm, EndsARun) {
  std::int32_t stop = 0;
  std::atomic<bool> ended = false;
  const auto begin = steady_clock::now();
  std::thread run([&] {
    clear_memory(nullptr, smallBlocksOnly, &stop);
    ended = true;
  });
  waitUntil(begin, milliseconds(300));
  EXPECT_FALSE(ended);
  alarmIn(milliseconds(100));
  run.join();
  EXPECT_GE(since(begin), milliseconds(1300));
  EXPECT_LT(since(begin), milliseconds(8000));
  EXPECT_EQ(std::atomic_ref<std::int32_t>(stopClearMemory).load(), 1);
}

TEST_F(LiveAlarm, AFlagSetByAnotherThreadEndsARun) {
  std::int32_t stop = 0;
  const auto begin = steady_clock::now();
  std::thread run([&stop] { clear_memory(nullptr, smallBlocksOnly, &stop); });
  waitUntil(begin, milliseconds(200));
  std::atomic_ref<std::int32_t>(stop).store(1);
  run.join();
  EXPECT_GE(since(begin), milliseconds(1200));
  EXPECT_LT(since(begin), milliseconds(8000));
}

TEST_F(LiveAlarm, DoesNotShortenThePauseThatItLandsIn) {
  std::int32_t stop = 1;
  const auto begin = steady_clock::now();
  std::thread run([&stop] { clear_memory(nullptr, smallBlocksOnly, &stop); });
  for (int alarms = 1; alarms <= 4; ++alarms) {
    waitUntil(begin, milliseconds(200 * alarms));
    ::pthread_kill(run.native_handle(), SIGALRM);
  }
  run.join();
  EXPECT_GE(since(begin), milliseconds(1000));
}

TEST_F(LiveAlarm, AReadThatItLandsInIsTakenUpAgain) {
  if (testing::threadSanitized)
    GTEST_SKIP() << "ThreadSanitizer's signal() lets no call be taken up again";
  int ends[2];
  ASSERT_EQ(::pipe(ends), 0);
  ssize_t count = 0;
  char byte = 0;
  std::thread reader([&] { count = ::read(ends[0], &byte, 1); });
  std::int32_t stop = 1;
  const auto begin = steady_clock::now();
  std::thread run([&stop] { clear_memory(nullptr, smallBlocksOnly, &stop); });
  waitUntil(begin, milliseconds(300));
  ::pthread_kill(reader.native_handle(), SIGALRM);
  waitUntil(begin, milliseconds(500));
  EXPECT_EQ(::write(ends[1], "x", 1), 1);
  reader.join();
  run.join();
  EXPECT_EQ(count, 1);
  EXPECT_EQ(byte, 'x');
  ::close(ends[0]);
  ::close(ends[1]);
}

TEST_F(LiveAlarm, ASleepThatItLandsInKnowsWhatIsLeft) {
  std::int32_t stop = 1;
  const auto begin = steady_clock::now();
  std::atomic<int> interruptions = 0;
  std::thread sleeper([&interruptions] {
    timespec left = {0, 900'000'000};
    while (::nanosleep(&left, &left) != 0) {
      ASSERT_EQ(errno, EINTR);
      ++interruptions;
    }
  });
  std::thread run([&stop] { clear_memory(nullptr, smallBlocksOnly, &stop); });
  waitUntil(begin, milliseconds(300));
  ::pthread_kill(sleeper.native_handle(), SIGALRM);
  sleeper.join();
  EXPECT_GE(since(begin), milliseconds(900));
  EXPECT_EQ(interruptions, 1);
  run.join();
}

TEST_F(LiveAlarm, AfterAnEarlyStopOnlyAsksTheNextRunThatOverwritesIt) {
  std::int32_t stop = 1;
  clear_memory(nullptr, smallBlocksOnly, &stop);
  std::atomic_ref<std::int32_t>(stopClearMemory).store(0);
  ::raise(SIGALRM);
  EXPECT_EQ(std::atomic_ref<std::int32_t>(stopClearMemory).load(), 1);
  stop = 0;
  const auto begin = steady_clock::now();
  std::thread run([&stop] { clear_memory(nullptr, smallBlocksOnly, &stop); });
  waitUntil(begin, milliseconds(200));
  EXPECT_EQ(std::atomic_ref<std::int32_t>(stopClearMemory).load(), 0);
  std::atomic_ref<std::int32_t>(stop).store(1);
  run.join();
}

}  // namespace
}  // namespace vantile
