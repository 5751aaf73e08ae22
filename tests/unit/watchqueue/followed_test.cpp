#include <gtest/gtest.h>

#include <cerrno>
#include <functional>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "unit/watchqueue/watch_queue_fixture.h"

namespace vantile {
namespace {

/// Renamed items whose new path is another's, or nobody's, when they are to be watched there.
class Followed : public testing::WatchQueue {
 protected:
  /// Calls `meanwhile` once, just before the path is opened to be watched.
  void beforeOpening(const std::string& path, std::function<void()> meanwhile) {
    events.find = [this, path, meanwhile, done = false](const std::string& opened) mutable {
      if (opened == path && !std::exchange(done, true)) meanwhile();
      return disk.identityOf(opened);
    };
  }
};

TEST_F(Followed, AnItemThatMovedOnKeepsItsWatchUnderTheNewPath) {
  watchFiles({"/disk/d/a"});
  const auto before = entry("/disk/d/a");
  beforeOpening("/disk/d/b", [this] { tree.move("d/b", "d/c"); });
  rename("/disk/d/a", "/disk/d/b");
  EXPECT_EQ(told, Lines{"renamed /disk/d/a to /disk/d/b"});
  EXPECT_EQ(entry("/disk/d/b"), before);
  EXPECT_EQ(before->path(), "/disk/d/b");
  EXPECT_EQ(queue->numberOfWatchedPaths(), 1u);
  EXPECT_EQ(events.openItems(), 1u);
  EXPECT_TRUE(log.lines.empty());
}

TEST_F(Followed, AnItemThatMovedOnIsFollowedFromThereByItsNextRename) {
  watchFiles({"/disk/d/a"});
  beforeOpening("/disk/d/b", [this] { tree.move("d/b", "d/c"); });
  rename("/disk/d/a", "/disk/d/b");
  happen("/disk/d/a", fileRenamed);
  EXPECT_EQ(told.back(), "renamed /disk/d/b to /disk/d/c");
  EXPECT_EQ(events.watchedPaths(), (Paths{{"/disk/d/c", 127}}));
  EXPECT_EQ(queue->numberOfWatchedPaths(), 1u);
}

TEST_F(Followed, TheRenameOfAnItemThatMovesOnJustThenIsNotLost) {
  watchFiles({"/disk/d/a"});
  kernel().oneAtATime = true;
  beforeOpening("/disk/d/b", [this] {
    tree.move("d/b", "d/c");
    events.happen("/disk/d/a", fileRenamed);
    threads.step();
  });
  rename("/disk/d/a", "/disk/d/b");
  serve();
  EXPECT_EQ(entry("/disk/d/c")->path(), "/disk/d/c");
  EXPECT_EQ(queue->numberOfWatchedPaths(), 1u);
  told.clear();
  happen("/disk/d/c", fileWritten);
  EXPECT_EQ(told, Lines{"WatchQueueFileWrittenToNotification /disk/d/c"});
}

TEST_F(Followed, AnItemWhosePathWasRemovedAndThatMovesOnIsFollowedToo) {
  watchFiles({"/disk/d/a"});
  kernel().oneAtATime = true;
  tree.move("d/a", "d/b");
  events.happen("/disk/d/a", fileRenamed);
  threads.step();
  queue->removePath("/disk/d/a");  // the rename is on its way
  beforeOpening("/disk/d/b", [this] {
    tree.move("d/b", "d/c");
    events.happen("/disk/d/a", fileRenamed);
    threads.step();
  });
  loop.settle();
  EXPECT_EQ(events.watchedPaths(), (Paths{{"/disk/d/c", 127}}));
  EXPECT_EQ(queue->numberOfWatchedPaths(), 1u);
}

TEST_F(Followed, TheKernelIsToldWhereAnItemIsThatMovedOn) {
  watchFiles({"/disk/d/a"});
  const auto watched = entry("/disk/d/a")->watchedFD();
  beforeOpening("/disk/d/b", [this] { tree.move("d/b", "d/c"); });
  rename("/disk/d/a", "/disk/d/b");
  EXPECT_EQ(events.stands, (std::vector<std::pair<int, std::string>>{{watched, "/disk/d/b"}}));
}

TEST_F(Followed, TheDeletionOfAnItemThatMovedOnEndsItsWatch) {
  watchFiles({"/disk/d/a"});
  beforeOpening("/disk/d/b", [this] { tree.move("d/b", "d/c"); });
  tree.move("d/a", "d/b");
  happen("/disk/d/a", fileRenamed | fileDeleted);
  EXPECT_EQ(told, (Lines{"renamed /disk/d/a to /disk/d/b", "deleted /disk/d/a"}));
  EXPECT_EQ(queue->numberOfWatchedPaths(), 0u);
  EXPECT_EQ(events.openItems(), 0u);
}

TEST_F(Followed, EventsOfAnItemThatMovedOnCarryItsNewPath) {
  watchFiles({"/disk/d/a"});
  beforeOpening("/disk/d/b", [this] { tree.move("d/b", "d/c"); });
  rename("/disk/d/a", "/disk/d/b");
  told.clear();
  happen("/disk/d/a", fileWritten);
  happen("/disk/d/a", fileDeleted);
  EXPECT_EQ(told, (Lines{"WatchQueueFileWrittenToNotification /disk/d/b", "deleted /disk/d/b"}));
  EXPECT_EQ(queue->numberOfWatchedPaths(), 0u);
}

TEST_F(Followed, AnotherFileUnderTheNewPathIsNotWatchedInItsPlace) {
  watchFiles({"/disk/d/a"});
  const auto before = entry("/disk/d/a");
  beforeOpening("/disk/d/b", [this] {
    tree.move("d/b", "d/c");
    tree.file("d/b");
  });
  rename("/disk/d/a", "/disk/d/b");
  EXPECT_EQ(entry("/disk/d/b"), before);
  EXPECT_EQ(events.openItems(), 1u);
  happen("/disk/d/a", fileRenamed);
  EXPECT_EQ(told.back(), "renamed /disk/d/b to /disk/d/c");
}

TEST_F(Followed, ANewPathThatIsRefusedIsWatchedByTheOldEntry) {
  watchFiles({"/disk/d/a", "/disk/d/x"});
  kernel().addError = ENOSPC;
  rename("/disk/d/a", "/disk/d/b");
  kernel().addError = 0;
  events.openError = EMFILE;
  rename("/disk/d/x", "/disk/d/y");
  EXPECT_EQ(queue->numberOfWatchedPaths(), 2u);
  EXPECT_EQ(events.openItems(), 2u);
  EXPECT_TRUE(log.lines.empty());
  told.clear();
  happen("/disk/d/a", fileWritten);
  happen("/disk/d/x", fileWritten);
  EXPECT_EQ(told, (Lines{"WatchQueueFileWrittenToNotification /disk/d/b",
                         "WatchQueueFileWrittenToNotification /disk/d/y"}));
}

TEST_F(Followed, AnEntryThatTheNewPathHasForTheSameItemStaysAsItIs) {
  watchFiles({"/disk/d/a"});
  tree.move("d/a", "d/b");
  events.happen("/disk/d/a", fileRenamed);
  queue->addPathNotifyingAbout("/disk/d/b", fileWritten);
  const auto before = entry("/disk/d/b");
  serve();
  EXPECT_EQ(told, Lines{"renamed /disk/d/a to /disk/d/b"});
  EXPECT_EQ(entry("/disk/d/b"), before);
  EXPECT_EQ(events.watchedPaths(), (Paths{{"/disk/d/b", fileWritten}}));
  EXPECT_EQ(queue->numberOfWatchedPaths(), 1u);
}

TEST_F(Followed, AnEntryThatTheDelegateMadeForTheNewPathStaysAsItIs) {
  delegate->WatchQueueRenameForPath = [](FSWatchQueue& teller, const std::string& to,
                                         const std::string& from) {
    teller.removePath(from);
    teller.addPathNotifyingAbout(to, fileDeleted);
  };
  watchFiles({"/disk/d/a"});
  rename("/disk/d/a", "/disk/d/b");
  EXPECT_EQ(events.watchedPaths(), (Paths{{"/disk/d/b", fileDeleted}}));
  EXPECT_EQ(queue->numberOfWatchedPaths(), 1u);
}

TEST_F(Followed, AnEntryThatTheNewPathHasForAnotherItemIsReplaced) {
  watchFiles({"/disk/d/a", "/disk/d/b"});
  const auto before = entry("/disk/d/a");
  tree.remove("d/b");
  rename("/disk/d/a", "/disk/d/b");
  EXPECT_EQ(told, Lines{"renamed /disk/d/a to /disk/d/b"});
  EXPECT_EQ(entry("/disk/d/b"), before);
  EXPECT_EQ(queue->numberOfWatchedPaths(), 1u);
  EXPECT_EQ(events.openItems(), 1u);
  told.clear();
  happen("/disk/d/a", fileWritten);
  EXPECT_EQ(told, Lines{"WatchQueueFileWrittenToNotification /disk/d/b"});
}

TEST_F(Followed, TheDeletionOfAReplacedItemIsToldAndLeavesTheOtherWatched) {
  watchFiles({"/disk/d/a", "/disk/d/b"});
  tree.remove("d/b");
  tree.move("d/a", "d/b");
  events.happen("/disk/d/a", fileRenamed);
  events.happen("/disk/d/b", fileDeleted);
  serve();
  EXPECT_EQ(told, (Lines{"renamed /disk/d/a to /disk/d/b", "deleted /disk/d/b"}));
  EXPECT_EQ(queue->numberOfWatchedPaths(), 1u);
  EXPECT_EQ(events.openItems(), 1u);
}

TEST_F(Followed, FilesThatExchangeTheirNamesAreBothFollowed) {
  watchFiles({"/disk/d/a", "/disk/d/b"});
  const auto a = disk.identityOf("/disk/d/a"), b = disk.identityOf("/disk/d/b");
  tree.move("d/a", "d/x");
  tree.move("d/b", "d/a");
  tree.move("d/x", "d/b");
  events.happen("/disk/d/a", fileRenamed);
  events.happen("/disk/d/b", fileRenamed);
  serve();
  EXPECT_EQ(told, (Lines{"renamed /disk/d/a to /disk/d/b", "renamed /disk/d/b to /disk/d/a"}));
  ASSERT_EQ(queue->numberOfWatchedPaths(), 2u);
  EXPECT_EQ(events.identity(entry("/disk/d/a")->watchedFD()), b);
  EXPECT_EQ(events.identity(entry("/disk/d/b")->watchedFD()), a);
}

TEST_F(Followed, TheOldPathsNewFileStaysWatched) {
  watchFiles({"/disk/d/a"});
  tree.move("d/a", "d/b");
  events.happen("/disk/d/a", fileRenamed);
  threads.step();
  queue->removePath("/disk/d/a");
  watchFiles({"/disk/d/a"});
  loop.settle();
  EXPECT_EQ(events.watchedPaths(), (Paths{{"/disk/d/a", 127}, {"/disk/d/b", 127}}));
}

TEST_F(Followed, AnEntryThatGotAnotherPathMeanwhileIsNotLeftBehind) {
  watchFiles({"/disk/d/a"});
  tree.move("d/a", "d/b");
  events.happen("/disk/d/a", fileRenamed);
  threads.step();
  entry("/disk/d/a")->setPath("/disk/d/now");
  loop.settle();
  EXPECT_EQ(events.watchedPaths(), (Paths{{"/disk/d/b", 127}}));
  EXPECT_EQ(queue->numberOfWatchedPaths(), 1u);
}

TEST_F(Followed, RemovingAllPathsInsideTheCallIsNotUndone) {
  delegate->WatchQueueRenameForPath = [](FSWatchQueue& teller, const std::string&,
                                         const std::string&) { teller.removeAllPaths(); };
  watchFiles({"/disk/d/a", "/disk/d/x"});
  rename("/disk/d/a", "/disk/d/b");
  EXPECT_EQ(queue->numberOfWatchedPaths(), 0u);
  EXPECT_EQ(events.openItems(), 0u);
}

TEST_F(Followed, RemovingAllPathsEndsARenameThatIsOnItsWay) {
  watchFiles({"/disk/d/a", "/disk/d/x"});
  queue->removePath("/disk/d/x");
  watchFiles({"/disk/d/x"});
  tree.move("d/a", "d/b");
  tree.move("d/x", "d/y");
  events.happen("/disk/d/a", fileRenamed);
  events.happen("/disk/d/x", fileRenamed);
  threads.step();
  queue->removePath("/disk/d/x");
  queue->removeAllPaths();
  loop.settle();
  EXPECT_EQ(told, (Lines{"renamed /disk/d/a to /disk/d/b", "renamed /disk/d/x to /disk/d/y"}));
  EXPECT_EQ(queue->numberOfWatchedPaths(), 0u);
  EXPECT_EQ(events.openItems(), 0u);
}

TEST_F(Followed, WhatIsWatchedAfterAllPathsWereRemovedIsFollowedAgain) {
  watchFiles({"/disk/d/a"});
  queue->removeAllPaths();
  watchFiles({"/disk/d/a"});
  rename("/disk/d/a", "/disk/d/b");
  EXPECT_EQ(events.watchedPaths(), (Paths{{"/disk/d/b", 127}}));
}

TEST_F(Followed, RemovingTheOldPathAloneInsideTheCallChangesNothing) {
  delegate->WatchQueueRenameForPath = [](FSWatchQueue& teller, const std::string&,
                                         const std::string& from) { teller.removePath(from); };
  watchFiles({"/disk/d/a"});
  rename("/disk/d/a", "/disk/d/b");
  EXPECT_EQ(events.watchedPaths(), (Paths{{"/disk/d/b", 127}}));
}

}  // namespace
}  // namespace vantile
