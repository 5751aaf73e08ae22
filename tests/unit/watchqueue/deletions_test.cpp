#include <gtest/gtest.h>

#include <string>

#include "unit/watchqueue/watch_queue_fixture.h"

namespace vantile {
namespace {

using Deletion = testing::WatchQueue;

TEST_F(Deletion, EndsTheWatchAndClosesTheItem) {
  watchFiles({"/disk/d/a", "/disk/d/b"});
  happen("/disk/d/a", fileDeleted);
  EXPECT_EQ(events.watchedPaths(), (Paths{{"/disk/d/b", 127}}));
  EXPECT_EQ(queue->numberOfWatchedPaths(), 1u);
  EXPECT_EQ(events.openItems(), 1u);
}

TEST_F(Deletion, IsToldWhileThePathIsStillInTheTable) {
  std::uint32_t during = 0;
  delegate->WatchQueueDeletedForPath = [&](FSWatchQueue& teller, const std::string&) {
    during = teller.numberOfWatchedPaths();
  };
  watchFiles({"/disk/d/a"});
  happen("/disk/d/a", fileDeleted);
  EXPECT_EQ(during, 1u);
}

TEST_F(Deletion, EndsTheWatchWhoeverListens) {
  watchFiles({"/disk/d/a", "/disk/d/b"});
  delegate->WatchQueueDeletedForPath = nullptr;
  happen("/disk/d/a", fileDeleted);
  EXPECT_EQ(queue->numberOfWatchedPaths(), 1u);
  queue->setDelegate(nullptr);
  happen("/disk/d/b", fileDeleted);
  EXPECT_EQ(queue->numberOfWatchedPaths(), 0u);
  EXPECT_TRUE(told.empty());
}

TEST_F(Deletion, OfAFileThatWasMadeAnewDuringTheCallDoesNotEndTheNewOnesWatch) {
  delegate->WatchQueueDeletedForPath = [this](FSWatchQueue& teller, const std::string& path) {
    tree.remove("d/a");
    tree.file("d/a");
    teller.removePath(path);
    teller.addPath(path);
  };
  watchFiles({"/disk/d/a"});
  happen("/disk/d/a", fileDeleted);
  EXPECT_EQ(events.watchedPaths(), (Paths{{"/disk/d/a", 127}}));
  EXPECT_EQ(events.identity(entry("/disk/d/a")->watchedFD()), disk.identityOf("/disk/d/a"));
}

TEST_F(Deletion, OnItsWayDoesNotEndTheWatchOfAnotherFileUnderThePath) {
  watchFiles({"/disk/d/a"});
  tree.remove("d/a");
  events.happen("/disk/d/a", fileDeleted);
  threads.step();
  queue->removePath("/disk/d/a");
  watchFiles({"/disk/d/a"});
  loop.settle();
  EXPECT_EQ(told, Lines{"deleted /disk/d/a"});
  EXPECT_EQ(queue->numberOfWatchedPaths(), 1u);
  happen("/disk/d/a", fileWritten);
  EXPECT_EQ(told.back(), "WatchQueueFileWrittenToNotification /disk/d/a");
}

TEST_F(Deletion, OfAPathThatWasRemovedDuringTheCallIsNoError) {
  delegate->WatchQueueDeletedForPath = [](FSWatchQueue& teller, const std::string& path) {
    teller.removePath(path);
  };
  watchFiles({"/disk/d/a"});
  happen("/disk/d/a", fileDeleted | attributesChanged);
  EXPECT_EQ(told, Lines{"WatchQueueFileAttributesChangedNotification /disk/d/a"});
  EXPECT_EQ(queue->numberOfWatchedPaths(), 0u);
}

TEST_F(Deletion, OnItsWayEndsTheWatchOfAnEntryThatGotAnotherPath) {
  watchFiles({"/disk/d/a"});
  events.happen("/disk/d/a", fileDeleted);
  threads.step();
  entry("/disk/d/a")->setPath("/disk/d/now");
  loop.settle();
  EXPECT_EQ(told, Lines{"deleted /disk/d/a"});
  EXPECT_EQ(queue->numberOfWatchedPaths(), 0u);
}

TEST_F(Deletion, InTheTrashIsToldUnderTheOldPath) {
  watchFiles({"/disk/d/a"});
  rename("/disk/d/a", "/disk/Trash/a");
  told.clear();
  tree.remove("Trash/a");
  happen("/disk/d/a", fileDeleted);
  EXPECT_EQ(told, Lines{"deleted /disk/d/a"});
  EXPECT_EQ(queue->numberOfWatchedPaths(), 0u);
}

TEST_F(Deletion, BehindAMoveToNowhereIsToldUnderTheOldPath) {
  watchFiles({"/disk/d/a"});
  rename("/disk/d/a", "/disk/elsewhere/a");
  happen("/disk/d/a", fileDeleted);
  EXPECT_EQ(told, (Lines{"WatchQueueFileRenamedNotification /disk/d/a", "deleted /disk/d/a"}));
  EXPECT_EQ(queue->numberOfWatchedPaths(), 0u);
}

}  // namespace
}  // namespace vantile
