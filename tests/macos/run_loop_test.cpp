// The run loop on CFRunLoop.

#include "vantile/foundation/run_loop.h"

#include <CoreFoundation/CoreFoundation.h>

#include <thread>
#include <vector>

#include "vantile/foundation/queue.h"

#include "seam.h"

namespace vantile {
namespace {

using namespace std::chrono_literals;

class RunLoopSeam : public Seam {
 protected:
  // The process's own main loop is never destroyed, so it is there before the counting begins.
  static void SetUpTestSuite() {
    fakes::machine.isFirstThread = false;
    RunLoop::main();
  }
  void TearDown() override {
    loop.reset();
    Seam::TearDown();
  }

  std::shared_ptr<RunLoop> loop = RunLoop::on(makeLoopDriver());
};

TEST_F(RunLoopSeam, FiresARepeatingTimerInPhase) {
  const auto start = fakes::uptime();
  std::vector<std::int64_t> seconds;
  const Timer timer = loop->every(1s, [&] {
    seconds.push_back(std::chrono::round<std::chrono::seconds>(fakes::uptime() - start).count());
    fakes::advance(300ms);  // a slow call
    if (seconds.size() == 5) loop->stop();
  });
  loop->run();
  EXPECT_EQ(seconds, (std::vector<std::int64_t>{1, 2, 3, 4, 5}));
}

TEST_F(RunLoopSeam, WakesOnceAPeriod) {
  int fired = 0;
  const Timer timer = loop->every(1s, [&] {
    if (++fired == 10) loop->stop();
  });
  loop->run();
  EXPECT_LE(fakes::wakeups(), 12);  // ten periods, the start, the stop
}

TEST_F(RunLoopSeam, FiresASingleTimerOnce) {
  int fired = 0;
  const Timer single = loop->after(1s, [&] { ++fired; });
  const Timer end = loop->after(10s, [&] { loop->stop(); });
  loop->run();
  EXPECT_EQ(fired, 1);
  EXPECT_FALSE(single.isValid());
}

TEST_F(RunLoopSeam, FiresNoTimerThatWasInvalidated) {
  Timer timer = loop->every(1s, [] { FAIL(); });
  const Timer end = loop->after(10s, [&] { loop->stop(); });
  timer.invalidate();
  loop->run();
}

TEST_F(RunLoopSeam, DoesPostsInOrderAndThoseMadeInside) {
  std::vector<int> done;
  loop->post([&] {
    done.push_back(1);
    loop->post([&] {
      done.push_back(3);
      loop->stop();
    });
  });
  loop->post([&] { done.push_back(2); });
  loop->run();
  EXPECT_EQ(done, (std::vector{1, 2, 3}));
}

TEST_F(RunLoopSeam, DoesPostsOfOtherThreads) {
  int done = 0;
  constexpr int each = 200;
  const auto post = [&] {
    for (int i = 0; i < each; ++i)
      loop->post([&] {
        if (++done == 2 * each) loop->stop();
      });
  };
  std::thread first(post), second(post);
  loop->run();
  first.join();
  second.join();
  EXPECT_EQ(done, 2 * each);
}

TEST_F(RunLoopSeam, TakesTimersOfOtherThreadsOutOfItsSleep) {
  Timer timer;
  std::thread other([&] { timer = loop->after(1s, [&] { loop->stop(); }); });
  loop->run();
  other.join();
  EXPECT_FALSE(timer.isValid());
}

TEST_F(RunLoopSeam, EndsARunAtOnceForAStopThatCameBefore) {
  loop->post([] { FAIL() << "the run went on"; });
  loop->stop();
  loop->run();
}

TEST_F(RunLoopSeam, ServesAHostThatRunsTheLoopItself) {
  int fired = 0;
  const Timer timer = loop->every(1s, [&] {
    if (++fired == 3) CFRunLoopStop(CFRunLoopGetCurrent());
  });
  CFRunLoopRun();
  EXPECT_EQ(fired, 3);
}

TEST_F(RunLoopSeam, ServesWhatIsDueOnDispatch) {
  int done = 0;
  const Timer timer = loop->every(1s, [&] { ++done; });
  loop->post([&] { done += 10; });
  loop->dispatch();
  EXPECT_EQ(done, 10);
  fakes::advance(1s);
  loop->dispatch();
  EXPECT_EQ(done, 11);
  loop->dispatch();
  EXPECT_EQ(done, 11);
}

TEST_F(RunLoopSeam, HasNoDescriptor) {
  EXPECT_EQ(loop->fd(), -1);
}

TEST_F(RunLoopSeam, OfAThreadEndsWithIt) {
  Timer timer;
  std::thread other([&] {
    const RunLoop::Override none(nullptr);
    fakes::machine.isFirstThread = false;
    timer = RunLoop::current().every(1s, [] { RunLoop::current().stop(); });
    RunLoop::current().run();
    fakes::machine.isFirstThread = true;
  });
  other.join();
  EXPECT_FALSE(timer.isValid());
}

TEST_F(RunLoopSeam, OfTheFirstThreadTakesTheMainQueuesWork) {
  const RunLoop::Override main(loop, true);
  bool done = false;
  std::thread other([&] {
    Queue::main().async([&] {
      done = true;
      loop->stop();
    });
  });
  RunLoop::main().run();
  other.join();
  EXPECT_TRUE(done);
}

TEST_F(RunLoopSeam, TakesWorkFromTheGlobalQueueBack) {
  const RunLoop::Override main(loop, true);
  Queue::global().async([&] { Queue::main().async([&] { loop->stop(); }); });
  fakes::runGlobalQueue();
  RunLoop::main().run();
}

}  // namespace
}  // namespace vantile
