#include <gtest/gtest.h>

#include <cerrno>
#include <optional>
#include <string>

#include "unit/watchqueue/watch_queue_fixture.h"

namespace vantile {
namespace {

class WatchedPaths : public testing::WatchQueue {
 protected:
  static std::string addPathMessage(const std::string& path) {
    return "WatchQueue tried to add the path " + path +
           " to watchedPathEntries, but the VDKQueuePathEntry was nil. \n"
           "It's possible that the host process has hit its max open file descriptors limit.";
  }
  static std::string addPathNotifyingAboutMessage(const std::string& path) {
    return "WatchQueue tried to add the path " + path +
           " to watchedPathEntries, but the WatchQueuePathEntry was nil. \n"
           "It's possible that the host process has hit its max open file descriptors limit.";
  }
};

TEST_F(WatchedPaths, BeginEmpty) {
  const auto fresh = FSWatchQueue::init();
  EXPECT_EQ(fresh->numberOfWatchedPaths(), 0u);
  EXPECT_EQ(fresh->delegate(), nullptr);
  EXPECT_FALSE(fresh->alwaysPostNotifications());
  EXPECT_TRUE(events.opened.empty());
}

TEST_F(WatchedPaths, ThereIsNoQueueWithoutAnEventQueue) {
  events.queueError = EMFILE;
  EXPECT_EQ(FSWatchQueue::init(), nullptr);
  EXPECT_EQ(log.lines, Lines{"WatchQueue: no queue of file events could be made (" +
                             std::to_string(EMFILE) + ")"});
}

TEST_F(WatchedPaths, AnEventQueueBeyondALimitIsLoggedWithIt) {
  events.queueError = ENOSPC;
  EXPECT_EQ(FSWatchQueue::init(), nullptr);
  ASSERT_EQ(log.lines.size(), 2u);
  EXPECT_EQ(log.lines[1], "WatchQueue: fs.watches is 3");
}

TEST_F(WatchedPaths, AddPathWatchesForAllSevenChanges) {
  watchFiles({"/disk/d/a"});
  EXPECT_EQ(events.watchedPaths(), (Paths{{"/disk/d/a", 127}}));
  EXPECT_EQ(entry("/disk/d/a")->subscriptionFlags(), 127u);
  EXPECT_EQ(queue->numberOfWatchedPaths(), 1u);
}

TEST_F(WatchedPaths, AddPathNotifyingAboutWatchesForTheChangesGiven) {
  tree.file("d/a");
  queue->addPathNotifyingAbout("/disk/d/a", fileWritten | fileDeleted);
  EXPECT_EQ(events.watchedPaths(), (Paths{{"/disk/d/a", 3}}));
  EXPECT_EQ(entry("/disk/d/a")->subscriptionFlags(), 3u);
  EXPECT_EQ(queue->numberOfWatchedPaths(), 1u);
}

TEST_F(WatchedPaths, FoldersAreWatchedLikeFiles) {
  queue->addPath("/disk/d");
  EXPECT_EQ(events.watchedPaths(), (Paths{{"/disk/d", 127}}));
}

TEST_F(WatchedPaths, NilIsNoPath) {
  watchFiles({"/disk/d/a"});
  queue->addPath(std::nullopt);
  queue->addPathNotifyingAbout(std::nullopt, 127);
  queue->removePath(std::nullopt);
  EXPECT_EQ(queue->numberOfWatchedPaths(), 1u);
  EXPECT_EQ(events.opened, Lines{"/disk/d/a"});
  EXPECT_TRUE(log.lines.empty());
}

TEST_F(WatchedPaths, AMissingPathIsLoggedByAddPathAndNotKept) {
  queue->addPath("/disk/d/missing");
  EXPECT_EQ(log.lines, Lines{addPathMessage("/disk/d/missing")});
  EXPECT_EQ(queue->numberOfWatchedPaths(), 0u);
  EXPECT_EQ(kernel().adds, 0);
}

TEST_F(WatchedPaths, AMissingPathIsLoggedByAddPathNotifyingAboutInItsOwnWords) {
  queue->addPathNotifyingAbout("/disk/d/missing", 1);
  EXPECT_EQ(log.lines, Lines{addPathNotifyingAboutMessage("/disk/d/missing")});
  EXPECT_EQ(queue->numberOfWatchedPaths(), 0u);
  EXPECT_EQ(kernel().adds, 0);
}

TEST_F(WatchedPaths, AFailureLeavesTheOthersAsTheyAre) {
  watchFiles({"/disk/d/a"});
  queue->addPath("/disk/d/missing");
  watchFiles({"/disk/d/b"});
  EXPECT_EQ(events.watchedPaths(), (Paths{{"/disk/d/a", 127}, {"/disk/d/b", 127}}));
}

TEST_F(WatchedPaths, APathIsLoggedAsItIs) {
  for (const std::string path : {"/disk/%@", "/disk/%s%n", "/disk/a\nb", "/disk/\xff\xc3", ""}) {
    log.lines.clear();
    queue->addPath(path);
    queue->addPathNotifyingAbout(path, 1);
    EXPECT_EQ(log.lines, (Lines{addPathMessage(path), addPathNotifyingAboutMessage(path)}));
  }
}

TEST_F(WatchedPaths, ALimitThatOpeningHitsIsLoggedBehindTheMessage) {
  events.openError = ENOSPC;
  queue->addPath("/disk/d");
  queue->addPathNotifyingAbout("/disk/d", 1);
  EXPECT_EQ(log.lines,
            (Lines{addPathMessage("/disk/d"), "WatchQueue: fs.watches is 3",
                   addPathNotifyingAboutMessage("/disk/d"), "WatchQueue: fs.watches is 3"}));
}

TEST_F(WatchedPaths, ALimitThatTheKernelHitsIsLoggedBehindTheMessage) {
  kernel().addError = ENOSPC;
  queue->addPath("/disk/d");
  queue->addPathNotifyingAbout("/disk/d", 1);
  EXPECT_EQ(log.lines,
            (Lines{addPathMessage("/disk/d"), "WatchQueue: fs.watches is 3",
                   addPathNotifyingAboutMessage("/disk/d"), "WatchQueue: fs.watches is 3"}));
}

TEST_F(WatchedPaths, WhatTheKernelRefusesIsNotKept) {
  kernel().addError = ENOSPC;
  watchFiles({"/disk/d/a"});
  EXPECT_EQ(queue->numberOfWatchedPaths(), 0u);
  EXPECT_EQ(events.openItems(), 0u);
  kernel().addError = 0;
  watchFiles({"/disk/d/b", "/disk/d/a"});
  EXPECT_EQ(events.watchedPaths(), (Paths{{"/disk/d/a", 127}, {"/disk/d/b", 127}}));
}

TEST_F(WatchedPaths, APathThatIsWatchedStaysAsItIs) {
  tree.file("d/a");
  queue->addPathNotifyingAbout("/disk/d/a", 1);
  const auto before = entry("/disk/d/a");
  queue->addPath("/disk/d/a");
  queue->addPathNotifyingAbout("/disk/d/a", 2);
  EXPECT_EQ(events.watchedPaths(), (Paths{{"/disk/d/a", 1}}));
  EXPECT_EQ(entry("/disk/d/a"), before);
  EXPECT_EQ(before->subscriptionFlags(), 1u);
  EXPECT_EQ(kernel().adds, 1);
  EXPECT_EQ(queue->numberOfWatchedPaths(), 1u);
  EXPECT_TRUE(log.lines.empty());
}

TEST_F(WatchedPaths, AreToldApartByTheirText) {
  queue->addPath("/disk/d");
  queue->addPath("/disk/d/");
  EXPECT_EQ(queue->numberOfWatchedPaths(), 2u);
  queue->removePath("/disk/d/");
  EXPECT_EQ(events.watchedPaths(), (Paths{{"/disk/d", 127}}));
}

TEST_F(WatchedPaths, AddPathToQueueGivesTheEntryThatItKeeps) {
  const auto added = queue->addPathToQueueNotifyingAbout("/disk/d", 0x12);
  ASSERT_NE(added, nullptr);
  EXPECT_EQ(added->path(), "/disk/d");
  EXPECT_EQ(added->subscriptionFlags(), 0x12u);
  EXPECT_EQ(entry("/disk/d"), added);
  EXPECT_EQ(events.watchedPaths(), (Paths{{"/disk/d", 0x12}}));
}

TEST_F(WatchedPaths, AddPathToQueueDoesNothingForChangesThatAreWatchedForAlready) {
  const auto added = queue->addPathToQueueNotifyingAbout("/disk/d", 0x13);
  for (const std::uint32_t flags : {0x13u, 0x02u, 0x11u, 0u}) {
    EXPECT_EQ(queue->addPathToQueueNotifyingAbout("/disk/d", flags), added);
    EXPECT_EQ(added->subscriptionFlags(), 0x13u);
  }
  EXPECT_EQ(kernel().adds, 1);
}

TEST_F(WatchedPaths, AddPathToQueueWatchesForFurtherChangesBesides) {
  const auto added = queue->addPathToQueueNotifyingAbout("/disk/d", 0x13);
  const auto tag = kernel().watched.at(added->watchedFD()).tag;
  EXPECT_EQ(queue->addPathToQueueNotifyingAbout("/disk/d", 0x06), added);
  EXPECT_EQ(added->subscriptionFlags(), 0x17u);
  EXPECT_EQ(events.watchedPaths(), (Paths{{"/disk/d", 0x17}}));
  EXPECT_EQ(kernel().watched.at(added->watchedFD()).tag, tag);
  EXPECT_EQ(events.opened.size(), 1u);
  EXPECT_EQ(queue->numberOfWatchedPaths(), 1u);
}

TEST_F(WatchedPaths, AddPathToQueueGivesNullWithoutALine) {
  EXPECT_EQ(queue->addPathToQueueNotifyingAbout("/disk/d/missing", 127), nullptr);
  kernel().addError = ENOSPC;
  EXPECT_EQ(queue->addPathToQueueNotifyingAbout("/disk/d", 127), nullptr);
  EXPECT_EQ(queue->numberOfWatchedPaths(), 0u);
  EXPECT_TRUE(log.lines.empty());
}

TEST_F(WatchedPaths, AWideningThatTheKernelRefusesLeavesTheWatchAsItWas) {
  queue->addPathNotifyingAbout("/disk/d", 2);
  kernel().addError = ENOSPC;
  const auto widened = queue->addPathToQueueNotifyingAbout("/disk/d", 8);
  ASSERT_TRUE(widened);
  EXPECT_EQ(queue->numberOfWatchedPaths(), 1u);
  EXPECT_EQ(events.watchedPaths(), (Paths{{"/disk/d", 2}}));
  EXPECT_EQ(log.lines, Lines{});
  EXPECT_EQ(widened->subscriptionFlags(), 2u);
}

TEST_F(WatchedPaths, AWideningThatWasRefusedIsTriedAgain) {
  queue->addPathNotifyingAbout("/disk/d", 2);
  kernel().addError = ENOSPC;
  queue->addPathToQueueNotifyingAbout("/disk/d", 8);
  kernel().addError = 0;
  queue->addPathToQueueNotifyingAbout("/disk/d", 8);
  EXPECT_EQ(events.watchedPaths(), (Paths{{"/disk/d", 10}}));
}

TEST_F(WatchedPaths, RemovePathClosesTheItemAndEndsItsWatch) {
  watchFiles({"/disk/d/a", "/disk/d/b"});
  queue->removePath("/disk/d/a");
  EXPECT_EQ(queue->numberOfWatchedPaths(), 1u);
  EXPECT_EQ(events.openItems(), 1u);
  EXPECT_EQ(events.watchedPaths(), (Paths{{"/disk/d/b", 127}}));
}

TEST_F(WatchedPaths, RemovePathDoesNothingForAPathThatIsNotWatched) {
  watchFiles({"/disk/d/a"});
  queue->removePath("/disk/d/b");
  EXPECT_EQ(queue->numberOfWatchedPaths(), 1u);
  EXPECT_TRUE(log.lines.empty());
}

TEST_F(WatchedPaths, RemoveAllPathsClosesEveryItem) {
  watchFiles({"/disk/d/a", "/disk/d/b", "/disk/d/c"});
  queue->removeAllPaths();
  EXPECT_EQ(queue->numberOfWatchedPaths(), 0u);
  EXPECT_EQ(events.openItems(), 0u);
  EXPECT_TRUE(kernel().watched.empty());
}

TEST_F(WatchedPaths, ARemovedPathCanBeAddedAnew) {
  watchFiles({"/disk/d/a"});
  queue->removePath("/disk/d/a");
  queue->addPathNotifyingAbout("/disk/d/a", fileWritten);
  EXPECT_EQ(events.watchedPaths(), (Paths{{"/disk/d/a", fileWritten}}));
  queue->removeAllPaths();
  queue->addPath("/disk/d/a");
  happen("/disk/d/a", fileWritten);
  EXPECT_EQ(told, Lines{"WatchQueueFileWrittenToNotification /disk/d/a"});
}

}  // namespace
}  // namespace vantile
