#include <gtest/gtest.h>

#include <cerrno>
#include <chrono>
#include <exception>
#include <optional>
#include <stdexcept>
#include <string>
#include <vector>

#include "unit/watchqueue/watch_queue_fixture.h"

namespace vantile {
namespace {

using WatcherThread = testing::WatchQueue;

TEST_F(WatcherThread, IsStartedByTheFirstPathThatIsAdded) {
  EXPECT_TRUE(threads.names.empty());
  queue->addPath("/disk/d");
  EXPECT_EQ(threads.names, Lines{"vantile-watch"});
  queue->addPath("/disk/Trash");
  EXPECT_EQ(threads.names.size(), 1u);
}

TEST_F(WatcherThread, IsNotStartedByAPathThatCanNotBeWatched) {
  queue->addPath("/disk/d/missing");
  queue->addPathNotifyingAbout("/disk/d/missing", 1);
  kernel().addError = ENOSPC;
  queue->addPath("/disk/d");
  EXPECT_TRUE(threads.names.empty());
}

TEST_F(WatcherThread, GoesOnWithoutPaths) {
  queue->addPath("/disk/d");
  queue->removeAllPaths();
  serve();
  EXPECT_EQ(threads.bodies.size(), 1u);
  queue->addPath("/disk/d");
  EXPECT_EQ(threads.names.size(), 1u);
}

TEST_F(WatcherThread, ThatCanNotBeStartedIsLoggedAndTriedAgain) {
  threads.refused = true;
  watchFiles({"/disk/d/a"});
  EXPECT_EQ(log.lines, Lines{"WatchQueue: no thread could be started to wait for file events"});
  EXPECT_EQ(queue->numberOfWatchedPaths(), 1u);
  threads.refused = false;
  watchFiles({"/disk/d/b"});
  EXPECT_EQ(log.lines.size(), 1u);
  happen("/disk/d/a", fileWritten);
  EXPECT_EQ(told, Lines{"WatchQueueFileWrittenToNotification /disk/d/a"});
}

TEST_F(WatcherThread, IsTriedAgainByAWideningToo) {
  threads.refused = true;
  queue->addPathNotifyingAbout("/disk/d", 1);
  threads.refused = false;
  queue->addPathToQueueNotifyingAbout("/disk/d", 1);  // watched for that already
  EXPECT_TRUE(threads.names.empty());
  queue->addPathToQueueNotifyingAbout("/disk/d", 2);
  EXPECT_EQ(threads.names.size(), 1u);
}

TEST_F(WatcherThread, WaitsForASecondAtMost) {
  queue->addPath("/disk/d");
  threads.step();
  EXPECT_EQ(kernel().lastTimeout, std::chrono::seconds(1));
}

TEST_F(WatcherThread, GoesOnAfterAWaitThatGaveNothing) {
  watchFiles({"/disk/d/a"});
  kernel().coming = {std::nullopt, std::nullopt};
  happen("/disk/d/a", fileWritten);
  EXPECT_EQ(told.size(), 1u);
}

TEST_F(WatcherThread, PassesOverEventsThatTellNothing) {
  watchFiles({"/disk/d/a"});
  const auto tag = kernel().watched.begin()->second.tag;
  kernel().coming = {FileEvent{tag, 0}, FileEvent{tag + 1000, fileWritten}};
  serve();
  EXPECT_TRUE(desktop.noted.empty());
  EXPECT_TRUE(told.empty());
  EXPECT_EQ(kernel().taken, (std::vector{tag, tag + 1000}));
}

TEST_F(WatcherThread, NotesAChangeWithTheDesktopOnceForEachEvent) {
  watchFiles({"/disk/d/a", "/disk/d/b"});
  events.happen("/disk/d/b", fileWritten | attributesChanged | fileGrew);
  events.happen("/disk/d/a", fileDeleted);
  serve();
  EXPECT_EQ(desktop.noted, (Lines{"/disk/d/b", "/disk/d/a"}));
}

TEST_F(WatcherThread, NotesTheChangeItselfAndLeavesTheRestToTheMainThread) {
  watchFiles({"/disk/d/a"});
  events.happen("/disk/d/a", fileRenamed | fileWritten | fileDeleted);
  tree.log.clear();
  threads.step();
  EXPECT_EQ(desktop.noted, Lines{"/disk/d/a"});
  EXPECT_TRUE(told.empty());
  EXPECT_TRUE(desktop.posted.empty());
  EXPECT_TRUE(tree.log.empty());
  EXPECT_TRUE(kernel().taken.empty());
  EXPECT_EQ(queue->numberOfWatchedPaths(), 1u);
  loop.settle();
  EXPECT_EQ(told.size(), 3u);
}

TEST_F(WatcherThread, AnErrorOfTheDesktopsDropsTheEventAndIsLogged) {
  watchFiles({"/disk/d/a"});
  desktop.refusal = "no desktop";
  happen("/disk/d/a", fileWritten);
  EXPECT_EQ(log.lines, Lines{"Error in WatchQueue watcherThread: no desktop"});
  EXPECT_TRUE(told.empty());
  EXPECT_TRUE(desktop.posted.empty());
}

TEST_F(WatcherThread, GoesOnAfterAnErrorOfTheDesktops) {
  watchFiles({"/disk/d/a"});
  kernel().oneAtATime = true;
  desktop.refusal = "no desktop";
  happen("/disk/d/a", fileWritten);
  desktop.refusal.reset();
  happen("/disk/d/a", attributesChanged);
  EXPECT_EQ(told, Lines{"WatchQueueFileAttributesChangedNotification /disk/d/a"});
  EXPECT_EQ(log.lines.size(), 1u);
}

TEST_F(WatcherThread, GoesOnAfterAWaitThatThrew) {
  watchFiles({"/disk/d/a"});
  kernel().toThrow = std::make_exception_ptr(std::logic_error("no wait"));
  happen("/disk/d/a", fileWritten);
  EXPECT_EQ(log.lines, Lines{"Error in WatchQueue watcherThread: no wait"});
  EXPECT_EQ(told.size(), 1u);
}

TEST_F(WatcherThread, DoesNotCatchWhatIsNoException) {
  queue->addPath("/disk/d");
  kernel().toThrow = std::make_exception_ptr(7);
  EXPECT_THROW(threads.step(), int);
  EXPECT_TRUE(log.lines.empty());
}

TEST_F(WatcherThread, EachEventIsTakenUpOnce) {
  watchFiles({"/disk/d/a", "/disk/d/b"});
  const auto tagOf = [this](const std::string& path) {
    return kernel().watched.at(entry(path)->watchedFD()).tag;
  };
  const auto a = tagOf("/disk/d/a"), b = tagOf("/disk/d/b");
  EXPECT_NE(a, b);
  happen("/disk/d/a", fileWritten | attributesChanged);
  happen("/disk/d/b", fileDeleted);
  happen("/disk/d/a", 0x80 | fileGrew);
  EXPECT_EQ(kernel().taken, (std::vector{a, b, a}));
}

TEST_F(WatcherThread, AnEventThatComesWhileItsPathIsStillBeingAddedIsTold) {
  watchFiles({"/disk/d/a"});
  kernel().onAdd = [this] {
    events.happen("/disk/d/b", fileWritten);
    threads.step();
  };
  watchFiles({"/disk/d/b"});
  loop.settle();
  EXPECT_EQ(told, Lines{"WatchQueueFileWrittenToNotification /disk/d/b"});
}

TEST_F(WatcherThread, EachQueueHasItsOwn) {
  watchFiles({"/disk/d/a"});
  const auto other = FSWatchQueue::init();
  other->setDelegate(delegate);
  other->addPath("/disk/d/a");
  EXPECT_EQ(threads.names.size(), 2u);
  happen("/disk/d/a", fileWritten);  // in the latest queue
  EXPECT_EQ(tellers, std::vector<const FSWatchQueue*>{other.get()});
}

}  // namespace
}  // namespace vantile
