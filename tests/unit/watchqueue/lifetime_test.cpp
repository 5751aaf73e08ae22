#include <gtest/gtest.h>

#include <cerrno>
#include <memory>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "unit/watchqueue/watch_queue_fixture.h"

namespace vantile {
namespace {

using WatchQueueEnd = testing::WatchQueue;

TEST_F(WatchQueueEnd, WithoutAThreadLetsTheEventQueueGo) {
  queue.reset();
  EXPECT_TRUE(events.queues.empty());
  EXPECT_TRUE(threads.names.empty());
  EXPECT_TRUE(log.lines.empty());
}

TEST_F(WatchQueueEnd, ClosesEveryItem) {
  watchFiles({"/disk/d/a", "/disk/d/b"});
  queue.reset();
  EXPECT_EQ(events.openItems(), 0u);
}

TEST_F(WatchQueueEnd, EndsTheThreadAtOnceWhichClosesTheEventQueue) {
  queue->addPath("/disk/d");
  int closes = 0;
  kernel().onInterrupt = [&] {  // in the midst of a wait
    threads.step();
    closes = kernel().closes;
    EXPECT_TRUE(threads.bodies.empty());
  };
  kernel().onWait = [] { ADD_FAILURE() << "the thread waits again"; };
  const auto held = threads.bodies.front();  // and so the event queue
  queue.reset();
  EXPECT_EQ(kernel().interrupts, 1);
  EXPECT_EQ(kernel().closes, 1);
}

TEST_F(WatchQueueEnd, LeavesTheEventQueueToTheThread) {
  queue->addPath("/disk/d");
  threads.step();
  queue.reset();
  ASSERT_EQ(events.queues.size(), 1u);
  EXPECT_EQ(kernel().closes, 0);
  threads.step();
  EXPECT_TRUE(threads.bodies.empty());
  EXPECT_TRUE(events.queues.empty());
  EXPECT_TRUE(log.lines.empty());
}

TEST_F(WatchQueueEnd, DuringAWaitThatNothingInterruptsEndsTheThreadAfterIt) {
  queue->addPath("/disk/d");
  kernel().afterInterrupt = false;
  kernel().coming = {std::nullopt};
  kernel().onWait = [this] { queue.reset(); };
  threads.step();
  EXPECT_TRUE(threads.bodies.empty());
  EXPECT_TRUE(events.queues.empty());
}

TEST_F(WatchQueueEnd, DuringAWaitDropsTheEventThatItGave) {
  watchFiles({"/disk/d/a"});
  kernel().afterInterrupt = false;
  events.happen("/disk/d/a", fileWritten);
  kernel().onWait = [this] { queue.reset(); };
  serve();
  EXPECT_TRUE(desktop.noted.empty());
  EXPECT_TRUE(told.empty());
  EXPECT_TRUE(threads.bodies.empty());
}

TEST_F(WatchQueueEnd, AnErrorOfClosingIsLoggedWithItsNumber) {
  queue->addPath("/disk/d");
  kernel().closeError = EBADF;
  queue.reset();
  serve();
  EXPECT_EQ(log.lines, Lines{"WatchQueue watcherThread: Couldn't close main kqueue (" +
                             std::to_string(EBADF) + ")"});
  EXPECT_TRUE(threads.bodies.empty());
}

TEST_F(WatchQueueEnd, InsideADelegatesCallLetsTheEventBeToldToItsEnd) {
  std::vector<std::uint32_t> watched;
  delegate->WatchQueueReceivedNotificationForPath = [&](FSWatchQueue& teller, const std::string&,
                                                        const std::string&) {
    queue.reset();
    watched.push_back(teller.numberOfWatchedPaths());
  };
  watchFiles({"/disk/d/a"});
  const std::weak_ptr<FSWatchQueue> weak = queue;
  happen("/disk/d/a", fileWritten | fileDeleted | attributesChanged);
  EXPECT_EQ(watched, (std::vector<std::uint32_t>{1, 0}));  // before and after the deletion
  EXPECT_EQ(told, Lines{"deleted /disk/d/a"});
  EXPECT_TRUE(weak.expired());
  serve();
  EXPECT_TRUE(events.queues.empty());
}

TEST_F(WatchQueueEnd, InsideTheCallOfARenameOrADeletionIsSafe) {
  delegate->WatchQueueRenameForPath = [this](FSWatchQueue&, const std::string&,
                                             const std::string&) { queue.reset(); };
  watchFiles({"/disk/d/a"});
  rename("/disk/d/a", "/disk/d/b");
  EXPECT_EQ(events.openItems(), 0u);
  queue = FSWatchQueue::init();
  delegate->WatchQueueDeletedForPath = [this](FSWatchQueue&, const std::string&) { queue.reset(); };
  queue->setDelegate(delegate);
  queue->addPath("/disk/d/b");
  happen("/disk/d/b", fileDeleted);
  EXPECT_EQ(events.openItems(), 0u);
}

TEST_F(WatchQueueEnd, ComesAfterTheEventsThatAreOnTheirWay) {
  watchFiles({"/disk/d/a", "/disk/d/b"});
  events.happen("/disk/d/a", fileWritten);
  events.happen("/disk/d/b", fileDeleted);
  threads.step();
  const std::weak_ptr<FSWatchQueue> weak = queue;
  queue.reset();
  EXPECT_FALSE(weak.expired());
  loop.settle();
  EXPECT_EQ(told, (Lines{"WatchQueueFileWrittenToNotification /disk/d/a", "deleted /disk/d/b"}));
  EXPECT_TRUE(weak.expired());
  EXPECT_EQ(events.openItems(), 0u);
}

TEST_F(WatchQueueEnd, DropsTheEventsThatTheKernelStillHas) {
  watchFiles({"/disk/d/a"});
  const auto held = entry("/disk/d/a");  // and so its watch
  events.happen("/disk/d/a", fileWritten);
  queue.reset();
  serve();
  EXPECT_TRUE(desktop.noted.empty());
  EXPECT_TRUE(told.empty());
}

TEST_F(WatchQueueEnd, AnEntryMayOutliveIt) {
  watchFiles({"/disk/d/a"});
  auto held = entry("/disk/d/a");
  queue.reset();
  EXPECT_EQ(events.openItems(), 1u);
  EXPECT_EQ(held->path(), "/disk/d/a");
  held.reset();
  EXPECT_EQ(events.openItems(), 0u);
}

TEST_F(WatchQueueEnd, LeavesOtherQueuesAlone) {
  auto other = FSWatchQueue::init();
  watchFiles({"/disk/d/a"});
  other->addPath("/disk/d/a");
  other.reset();
  serve();
  EXPECT_EQ(events.queues.size(), 1u);
  happen("/disk/d/a", fileWritten);
  EXPECT_EQ(told.size(), 1u);
}

TEST_F(WatchQueueEnd, LetsItsDelegateGo) {
  const std::weak_ptr<FSWatchQueueDelegate> weak = delegate;
  delegate.reset();
  EXPECT_EQ(queue->delegate(), weak.lock());
  queue.reset();
  EXPECT_TRUE(weak.expired());
}

}  // namespace
}  // namespace vantile
