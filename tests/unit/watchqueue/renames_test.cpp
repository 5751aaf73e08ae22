#include <gtest/gtest.h>

#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "unit/watchqueue/watch_queue_fixture.h"

namespace vantile {
namespace {

using Rename = testing::WatchQueue;

TEST_F(Rename, WithinTheFolderIsToldWithBothPaths) {
  watchFiles({"/disk/d/a"});
  rename("/disk/d/a", "/disk/d/b");
  EXPECT_EQ(told, Lines{"renamed /disk/d/a to /disk/d/b"});
}

TEST_F(Rename, WithinTheFolderIsFollowed) {
  watchFiles({"/disk/d/a"});
  rename("/disk/d/a", "/disk/d/b");
  EXPECT_EQ(queue->numberOfWatchedPaths(), 1u);
  EXPECT_EQ(entry("/disk/d/b")->path(), "/disk/d/b");
  EXPECT_EQ(events.watchedPaths(), (Paths{{"/disk/d/b", 127}}));
  EXPECT_EQ(events.openItems(), 1u);
  told.clear();
  happen("/disk/d/b", fileWritten);
  EXPECT_EQ(told, Lines{"WatchQueueFileWrittenToNotification /disk/d/b"});
}

TEST_F(Rename, KeepsTheChangesThatTheItemIsWatchedFor) {
  tree.file("d/a");
  queue->addPathNotifyingAbout("/disk/d/a", fileRenamed | fileWritten);
  rename("/disk/d/a", "/disk/d/b");
  EXPECT_EQ(events.watchedPaths(), (Paths{{"/disk/d/b", fileRenamed | fileWritten}}));
  EXPECT_EQ(entry("/disk/d/b")->subscriptionFlags(), fileRenamed | fileWritten);
}

TEST_F(Rename, AfterRenameIsFollowed) {
  watchFiles({"/disk/d/a"});
  rename("/disk/d/a", "/disk/d/b");
  rename("/disk/d/b", "/disk/d/c");
  rename("/disk/d/c", "/disk/d/a");
  EXPECT_EQ(told, (Lines{"renamed /disk/d/a to /disk/d/b", "renamed /disk/d/b to /disk/d/c",
                         "renamed /disk/d/c to /disk/d/a"}));
  EXPECT_EQ(events.watchedPaths(), (Paths{{"/disk/d/a", 127}}));
  EXPECT_TRUE(log.lines.empty());
}

TEST_F(Rename, IsFollowedWhoeverListens) {
  watchFiles({"/disk/d/a"});
  delegate->WatchQueueRenameForPath = nullptr;
  rename("/disk/d/a", "/disk/d/b");
  EXPECT_EQ(events.watchedPaths(), (Paths{{"/disk/d/b", 127}}));
  queue->setDelegate(nullptr);
  rename("/disk/d/b", "/disk/d/c");
  EXPECT_EQ(events.watchedPaths(), (Paths{{"/disk/d/c", 127}}));
  EXPECT_TRUE(told.empty());
}

TEST_F(Rename, IsToldBeforeTheTableChanges) {
  Paths during;
  delegate->WatchQueueRenameForPath = [&](FSWatchQueue&, const std::string&, const std::string&) {
    during = events.watchedPaths();
  };
  watchFiles({"/disk/d/a"});
  rename("/disk/d/a", "/disk/d/b");
  EXPECT_EQ(during, (Paths{{"/disk/d/a", 127}}));
}

TEST_F(Rename, IsFollowedBeforeTheRestOfItsEventIsTold) {
  std::vector<bool> watchedUnderItsNewPath;
  delegate->WatchQueueReceivedNotificationForPath = [&](FSWatchQueue&, const std::string& name,
                                                        const std::string& path) {
    told.push_back(name + " " + path);
    watchedUnderItsNewPath.push_back(events.watchedPaths().contains("/disk/d/b"));
  };
  watchFiles({"/disk/d/a"});
  tree.move("d/a", "d/b");
  happen("/disk/d/a", fileRenamed | attributesChanged);
  EXPECT_EQ(told, (Lines{"renamed /disk/d/a to /disk/d/b",
                         "WatchQueueFileAttributesChangedNotification /disk/d/a"}));
  EXPECT_EQ(watchedUnderItsNewPath, std::vector{true});
}

TEST_F(Rename, OfAFolderIsFollowedToo) {
  tree.file("d/inner/a");
  queue->addPath("/disk/d/inner");
  rename("/disk/d/inner", "/disk/d/other");
  EXPECT_EQ(told, Lines{"renamed /disk/d/inner to /disk/d/other"});
  EXPECT_EQ(events.watchedPaths(), (Paths{{"/disk/d/other", 127}}));
}

TEST_F(Rename, OfAPathWithASlashAtItsEndLooksInTheFolderAroundIt) {
  queue->addPath("/disk/d/");
  rename("/disk/d", "/disk/e", "/disk/d/");
  EXPECT_EQ(told, Lines{"renamed /disk/d/ to /disk/e"});
}

TEST_F(Rename, ToANameOfAnyBytesIsFollowed) {
  const std::string path = "/disk/d/line\nbreak and \xff\xc3";
  watchFiles({"/disk/d/a"});
  rename("/disk/d/a", path);
  EXPECT_EQ(told, Lines{"renamed /disk/d/a to " + path});
  EXPECT_EQ(events.watchedPaths(), (Paths{{path, 127}}));
}

TEST_F(Rename, AwayAndBackIsToldAsOneToItsOwnPath) {
  watchFiles({"/disk/d/a"});
  happen("/disk/d/a", fileRenamed);
  EXPECT_EQ(told, Lines{"renamed /disk/d/a to /disk/d/a"});
  EXPECT_EQ(queue->numberOfWatchedPaths(), 1u);
  EXPECT_EQ(events.watchedPaths(), (Paths{{"/disk/d/a", 127}}));
}

TEST_F(Rename, ToAnotherFolderIsAPlainNotificationUnderTheOldPath) {
  watchFiles({"/disk/d/a"});
  rename("/disk/d/a", "/disk/elsewhere/a");
  EXPECT_EQ(told, Lines{"WatchQueueFileRenamedNotification /disk/d/a"});
  EXPECT_EQ(events.watchedPaths(), (Paths{{"/disk/d/a", 127}}));
  told.clear();
  happen("/disk/d/a", fileWritten);
  EXPECT_EQ(told, Lines{"WatchQueueFileWrittenToNotification /disk/d/a"});
}

TEST_F(Rename, BackFromAnotherFolderIsFoundAgain) {
  watchFiles({"/disk/d/a"});
  rename("/disk/d/a", "/disk/elsewhere/a");
  rename("/disk/elsewhere/a", "/disk/d/b", "/disk/d/a");
  EXPECT_EQ(told.back(), "renamed /disk/d/a to /disk/d/b");
  EXPECT_EQ(events.watchedPaths(), (Paths{{"/disk/d/b", 127}}));
}

TEST_F(Rename, IntoAFolderInsideItsOwnIsNotLookedFor) {
  watchFiles({"/disk/d/a"});
  rename("/disk/d/a", "/disk/d/inner/a");
  EXPECT_EQ(told, Lines{"WatchQueueFileRenamedNotification /disk/d/a"});
}

TEST_F(Rename, ToTheTrashIsToldWithBothPaths) {
  watchFiles({"/disk/d/a"});
  rename("/disk/d/a", "/disk/Trash/a 2");
  EXPECT_EQ(told, Lines{"trashed /disk/d/a as /disk/Trash/a 2"});
}

TEST_F(Rename, ToTheTrashLeavesTheEntryUnderTheOldPath) {
  watchFiles({"/disk/d/a"});
  const auto before = entry("/disk/d/a");
  rename("/disk/d/a", "/disk/Trash/a");
  EXPECT_EQ(entry("/disk/d/a"), before);
  EXPECT_EQ(before->path(), "/disk/d/a");
  EXPECT_EQ(events.watchedPaths(), (Paths{{"/disk/d/a", 127}}));
  EXPECT_EQ(queue->numberOfWatchedPaths(), 1u);
  told.clear();
  happen("/disk/d/a", attributesChanged);
  EXPECT_EQ(told, Lines{"WatchQueueFileAttributesChangedNotification /disk/d/a"});
}

TEST_F(Rename, ToTheTrashIsTheSameWhoeverListens) {
  watchFiles({"/disk/d/a"});
  delegate->WatchQueueRemoveToTrashForPath = nullptr;
  rename("/disk/d/a", "/disk/Trash/a");
  EXPECT_TRUE(told.empty());
  EXPECT_EQ(events.watchedPaths(), (Paths{{"/disk/d/a", 127}}));
}

TEST_F(Rename, ToTheTrashTellsTheKernelWhereTheItemIs) {
  watchFiles({"/disk/d/a"});
  const auto watched = entry("/disk/d/a")->watchedFD();
  rename("/disk/d/a", "/disk/Trash/a");
  EXPECT_EQ(events.stands, (std::vector<std::pair<int, std::string>>{{watched, "/disk/Trash/a"}}));
}

TEST_F(Rename, InTheTrashIsToldUnderTheOldPathToo) {
  watchFiles({"/disk/d/a"});
  rename("/disk/d/a", "/disk/Trash/a");
  rename("/disk/Trash/a", "/disk/Trash/b", "/disk/d/a");
  EXPECT_EQ(told.back(), "trashed /disk/d/a as /disk/Trash/b");
}

TEST_F(Rename, OutOfTheTrashIsARenameWithinItsFolder) {
  watchFiles({"/disk/d/a"});
  rename("/disk/d/a", "/disk/Trash/a");
  rename("/disk/Trash/a", "/disk/d/b", "/disk/d/a");
  EXPECT_EQ(told.back(), "renamed /disk/d/a to /disk/d/b");
  EXPECT_EQ(events.watchedPaths(), (Paths{{"/disk/d/b", 127}}));
}

TEST_F(Rename, LooksInTheTrashFirst) {
  watchFiles({"/disk/d/a"});
  tree.hardLink("d/a", "Trash/a");
  rename("/disk/d/a", "/disk/d/b");
  EXPECT_EQ(told, Lines{"trashed /disk/d/a as /disk/Trash/a"});
  EXPECT_EQ(events.watchedPaths(), (Paths{{"/disk/d/a", 127}}));
}

TEST_F(Rename, DeeperIntoTheTrashIsNotLookedFor) {
  watchFiles({"/disk/d/a"});
  rename("/disk/d/a", "/disk/Trash/inner/a");
  EXPECT_EQ(told, Lines{"WatchQueueFileRenamedNotification /disk/d/a"});
}

TEST_F(Rename, WithoutATrashIsFollowedAllTheSame) {
  tree.remove("Trash");
  watchFiles({"/disk/d/a"});
  rename("/disk/d/a", "/disk/d/b");
  EXPECT_EQ(told, Lines{"renamed /disk/d/a to /disk/d/b"});
}

TEST_F(Rename, GoesByTheTrashThatThereWasAtTheQueuesBeginning) {
  utility.folders->trashFolder = "/disk/Bin";
  watchFiles({"/disk/d/a", "/disk/d/b"});
  rename("/disk/d/a", "/disk/Bin/a");
  rename("/disk/d/b", "/disk/Trash/b");
  EXPECT_EQ(told, (Lines{"WatchQueueFileRenamedNotification /disk/d/a",
                         "trashed /disk/d/b as /disk/Trash/b"}));
}

TEST_F(Rename, OnItsWayStillArrivesWhenItsPathWasRemoved) {
  watchFiles({"/disk/d/a"});
  tree.move("d/a", "d/b");
  events.happen("/disk/d/a", fileRenamed);
  threads.step();
  queue->removePath("/disk/d/a");
  loop.settle();
  EXPECT_EQ(told, Lines{"renamed /disk/d/a to /disk/d/b"});
}

TEST_F(Rename, OfAnItemThatIsClosedIsAPlainNotification) {
  watchFiles({"/disk/d/a"});
  entry("/disk/d/a")->setWatchedFD(-1);
  tree.move("d/a", "d/b");
  kernel().coming = {FileEvent{kernel().watched.begin()->second.tag, fileRenamed}};
  serve();
  EXPECT_EQ(told, Lines{"WatchQueueFileRenamedNotification /disk/d/a"});
}

}  // namespace
}  // namespace vantile
