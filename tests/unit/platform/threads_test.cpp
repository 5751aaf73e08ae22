#include "vantile/platform/threads.h"

#include <gtest/gtest.h>
#include <pthread.h>
#include <signal.h>

#include <latch>
#include <string>
#include <thread>

namespace vantile {
namespace {

/// Runs `body` on a thread and waits for it.
void runDetached(const char* name, const std::function<void()>& body) {
  std::latch done(1);
  ASSERT_TRUE(systemThreads()->detach(name, [&] {
    body();
    done.count_down();
  }));
  done.wait();
}

std::string nameOnAThreadCalled(const char* name) {
  char seen[16] = {};
  runDetached(name, [&] { ::pthread_getname_np(::pthread_self(), seen, sizeof seen); });
  return seen;
}

/// While it lives, no thread can be had: their stacks would take more than there are addresses.
class NoThreads {
 public:
  NoThreads() {
    ::pthread_getattr_default_np(&before_);
    pthread_attr_t tooMuch;
    ::pthread_attr_init(&tooMuch);
    ::pthread_attr_setstacksize(&tooMuch, std::size_t{1} << 47);
    ::pthread_setattr_default_np(&tooMuch);
    ::pthread_attr_destroy(&tooMuch);
  }
  ~NoThreads() {
    ::pthread_setattr_default_np(&before_);
    ::pthread_attr_destroy(&before_);
  }
  NoThreads(const NoThreads&) = delete;
  NoThreads& operator=(const NoThreads&) = delete;

 private:
  pthread_attr_t before_;
};

TEST(LinuxThreads, RunWhatTheyAreGivenOnAThreadOfItsOwn) {
  std::thread::id ranOn;
  runDetached("a", [&] { ranOn = std::this_thread::get_id(); });
  EXPECT_NE(ranOn, std::this_thread::get_id());
}

TEST(LinuxThreads, LiveSideBySide) {
  constexpr int count = 8;
  std::latch all(count), done(count);
  for (int i = 0; i < count; ++i) {
    ASSERT_TRUE(systemThreads()->detach("a", [&] {
      all.arrive_and_wait();
      done.count_down();
    }));
  }
  done.wait();
}

TEST(LinuxThreads, AreCalledByTheirName) {
  EXPECT_EQ(nameOnAThreadCalled("vantile-watcher"), "vantile-watcher");
}

TEST(LinuxThreads, ANameThatIsTooLongIsCutOff) {
  EXPECT_EQ(nameOnAThreadCalled("vantile-watch-queue"), "vantile-watch-q");
}

TEST(LinuxThreads, TheHostsSignalsAreBlockedButForThoseOfAFault) {
  sigset_t blocked;
  runDetached("a", [&] { ::pthread_sigmask(SIG_SETMASK, nullptr, &blocked); });
  for (const int signal : {SIGINT, SIGTERM, SIGHUP, SIGALRM, SIGCHLD, SIGUSR1, SIGPIPE})
    EXPECT_EQ(sigismember(&blocked, signal), 1) << signal;
  for (const int signal : {SIGSEGV, SIGBUS, SIGFPE, SIGILL, SIGTRAP, SIGABRT, SIGSYS})
    EXPECT_EQ(sigismember(&blocked, signal), 0) << signal;
}

TEST(LinuxThreads, TheCallersSignalsStayAsTheyAre) {
  sigset_t before, during, after;
  sigemptyset(&during);
  sigaddset(&during, SIGUSR1);
  ::pthread_sigmask(SIG_SETMASK, &during, &before);
  runDetached("a", [] {});
  ::pthread_sigmask(SIG_SETMASK, &before, &after);
  for (int signal = 1; signal < SIGRTMIN; ++signal)
    EXPECT_EQ(sigismember(&during, signal), sigismember(&after, signal)) << signal;
}

TEST(LinuxThreads, WhereNoneCanBeHadNothingIsRun) {
  const auto ran = std::make_shared<bool>(false);
  {
    const NoThreads none;
    EXPECT_FALSE(systemThreads()->detach("a", [ran] { *ran = true; }));
  }
  EXPECT_FALSE(*ran);
  EXPECT_EQ(ran.use_count(), 1);
  runDetached("a", [] {});
}

TEST(LinuxThreads, AreSharedByTheProcess) {
  EXPECT_EQ(systemThreads(), systemThreads());
}

}  // namespace
}  // namespace vantile
