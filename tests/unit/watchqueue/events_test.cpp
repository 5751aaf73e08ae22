#include <gtest/gtest.h>

#include <memory>
#include <stdexcept>
#include <string>
#include <utility>
#include <vector>

#include "unit/watchqueue/watch_queue_fixture.h"

namespace vantile {
namespace {

using WatchQueueEvents = testing::WatchQueue;

TEST(WatchQueueNames, AreTheseTexts) {
  EXPECT_STREQ(WatchQueueRenameNotification, "WatchQueueFileRenamedNotification");
  EXPECT_STREQ(WatchQueueWriteNotification, "WatchQueueFileWrittenToNotification");
  EXPECT_STREQ(WatchQueueDeleteNotification, "WatchQueueFileDeletedNotification");
  EXPECT_STREQ(WatchQueueAttributeChangeNotification,
               "WatchQueueFileAttributesChangedNotification");
  EXPECT_STREQ(WatchQueueSizeIncreaseNotification, "WatchQueueFileSizeIncreasedNotification");
  EXPECT_STREQ(WatchQueueLinkCountChangeNotification, "WatchQueueLinkCountChangedNotification");
  EXPECT_STREQ(WatchQueueAccessRevocationNotification, "WatchQueueAccessWasRevokedNotification");
}

TEST_F(WatchQueueEvents, EachChangeIsToldByItsName) {
  const std::vector<std::pair<std::uint32_t, const char*>> changes = {
      {0x02, WatchQueueWriteNotification},
      {0x08, WatchQueueAttributeChangeNotification},
      {0x04, WatchQueueSizeIncreaseNotification},
      {0x10, WatchQueueLinkCountChangeNotification},
      {0x40, WatchQueueAccessRevocationNotification}};
  watchFiles({"/disk/d/a"});
  for (const auto& [change, name] : changes) {
    told.clear();
    happen("/disk/d/a", change);
    EXPECT_EQ(told, Lines{std::string(name) + " /disk/d/a"}) << change;
  }
  EXPECT_EQ(queue->numberOfWatchedPaths(), 1u);
  EXPECT_EQ(events.opened.size(), 1u);
}

TEST_F(WatchQueueEvents, ARenameToNowhereIsToldByItsName) {
  watchFiles({"/disk/d/a"});
  tree.remove("d/a");
  happen("/disk/d/a", 0x20);
  EXPECT_EQ(told, Lines{"WatchQueueFileRenamedNotification /disk/d/a"});
}

TEST_F(WatchQueueEvents, ADeletionIsToldByItsOwnCall) {
  watchFiles({"/disk/d/a"});
  happen("/disk/d/a", 0x01);
  EXPECT_EQ(told, Lines{"deleted /disk/d/a"});
}

TEST_F(WatchQueueEvents, AllThatOneEventCarriesIsToldInItsOrder) {
  watchFiles({"/disk/d/a"});
  tree.remove("d/a");
  happen("/disk/d/a", 0x7F);
  EXPECT_EQ(told, (Lines{"WatchQueueFileRenamedNotification /disk/d/a",
                         "WatchQueueFileWrittenToNotification /disk/d/a", "deleted /disk/d/a",
                         "WatchQueueFileAttributesChangedNotification /disk/d/a",
                         "WatchQueueFileSizeIncreasedNotification /disk/d/a",
                         "WatchQueueLinkCountChangedNotification /disk/d/a",
                         "WatchQueueAccessWasRevokedNotification /disk/d/a"}));
}

TEST_F(WatchQueueEvents, AWriteIsToldBeforeTheAttributes) {
  watchFiles({"/disk/d/a"});
  happen("/disk/d/a", 0x0A);
  EXPECT_EQ(told, (Lines{"WatchQueueFileWrittenToNotification /disk/d/a",
                         "WatchQueueFileAttributesChangedNotification /disk/d/a"}));
}

TEST_F(WatchQueueEvents, BitsWithoutANameTellNothing) {
  watchFiles({"/disk/d/a"});
  const auto tag = kernel().watched.begin()->second.tag;
  kernel().coming = {FileEvent{tag, 0xFFFFFF80}, FileEvent{tag, 0x80 | 0x40}};
  serve();
  EXPECT_EQ(desktop.noted.size(), 2u);
  EXPECT_EQ(told, Lines{"WatchQueueAccessWasRevokedNotification /disk/d/a"});
  EXPECT_EQ(desktop.posted.size(), 1u);
}

TEST_F(WatchQueueEvents, AreToldInTheOrderInWhichTheyCome) {
  watchFiles({"/disk/d/a", "/disk/d/b"});
  events.happen("/disk/d/b", fileGrew);
  events.happen("/disk/d/a", attributesChanged);
  events.happen("/disk/d/b", fileWritten);
  serve();
  EXPECT_EQ(told, (Lines{"WatchQueueFileSizeIncreasedNotification /disk/d/b",
                         "WatchQueueFileAttributesChangedNotification /disk/d/a",
                         "WatchQueueFileWrittenToNotification /disk/d/b"}));
}

TEST_F(WatchQueueEvents, EachCallNamesTheQueue) {
  watchFiles({"/disk/d/a", "/disk/d/b", "/disk/d/c"});
  rename("/disk/d/a", "/disk/d/e");
  rename("/disk/d/b", "/disk/Trash/b");
  happen("/disk/d/c", fileWritten | fileDeleted);
  EXPECT_EQ(tellers, std::vector<const FSWatchQueue*>(4, queue.get()));
}

TEST_F(WatchQueueEvents, OperationsThatADelegateLeavesOutAreNotCalled) {
  watchFiles({"/disk/d/a", "/disk/d/b", "/disk/d/c", "/disk/d/e"});
  queue->setDelegate(std::make_shared<FSWatchQueueDelegate>());
  rename("/disk/d/a", "/disk/d/x");
  rename("/disk/d/b", "/disk/Trash/b");
  tree.remove("d/c");
  happen("/disk/d/c", fileRenamed | fileWritten);
  happen("/disk/d/e", fileDeleted);
  EXPECT_TRUE(told.empty());
  EXPECT_TRUE(log.lines.empty());
}

TEST_F(WatchQueueEvents, WithoutADelegateNobodyIsCalled) {
  watchFiles({"/disk/d/a"});
  queue->setDelegate(nullptr);
  happen("/disk/d/a", 0x7F);
  EXPECT_TRUE(told.empty());
  EXPECT_TRUE(log.lines.empty());
}

TEST_F(WatchQueueEvents, ADelegateThatIsTakenAwayIsCalledNoMore) {
  watchFiles({"/disk/d/a"});
  events.happen("/disk/d/a", fileWritten);
  threads.step();
  queue->setDelegate(nullptr);  // the event is on its way
  loop.settle();
  EXPECT_TRUE(told.empty());
  queue->setDelegate(delegate);
  happen("/disk/d/a", fileGrew);
  EXPECT_EQ(told.size(), 1u);
}

TEST_F(WatchQueueEvents, ADelegateThatGoesInsideItsCallHearsNothingMoreOfTheEvent) {
  delegate->WatchQueueReceivedNotificationForPath =
      [this](FSWatchQueue& teller, const std::string& name, const std::string&) {
        told.push_back(name);
        teller.setDelegate(nullptr);
        delegate.reset();
      };
  watchFiles({"/disk/d/a"});
  happen("/disk/d/a", fileWritten | attributesChanged);
  EXPECT_EQ(told, Lines{"WatchQueueFileWrittenToNotification"});
}

TEST_F(WatchQueueEvents, WhatADelegateThrowsIsLoggedAndTheOthersGoOn) {
  delegate->WatchQueueDeletedForPath = [](FSWatchQueue&, const std::string&) {
    throw std::runtime_error("no room");
  };
  watchFiles({"/disk/d/a"});
  happen("/disk/d/a", fileWritten | fileDeleted | attributesChanged);
  EXPECT_EQ(log.lines, Lines{"a delegate threw: no room"});
  EXPECT_EQ(told, (Lines{"WatchQueueFileWrittenToNotification /disk/d/a",
                         "WatchQueueFileAttributesChangedNotification /disk/d/a"}));
  EXPECT_EQ(queue->numberOfWatchedPaths(), 0u);
  EXPECT_EQ(desktop.posted.size(), 3u);
}

TEST_F(WatchQueueEvents, OfARemovedPathStillArriveOnceTheyAreOnTheirWay) {
  watchFiles({"/disk/d/a", "/disk/d/b"});
  events.happen("/disk/d/a", fileWritten | fileDeleted);
  events.happen("/disk/d/b", fileWritten);
  threads.step();
  queue->removePath("/disk/d/a");
  queue->removeAllPaths();
  loop.settle();
  EXPECT_EQ(told, (Lines{"WatchQueueFileWrittenToNotification /disk/d/a", "deleted /disk/d/a",
                         "WatchQueueFileWrittenToNotification /disk/d/b"}));
  EXPECT_EQ(events.openItems(), 0u);
}

TEST_F(WatchQueueEvents, OfARemovedPathThatTheKernelStillHasAreDropped) {
  watchFiles({"/disk/d/a", "/disk/d/b"});
  events.happen("/disk/d/a", fileWritten);
  events.happen("/disk/d/b", fileWritten);
  queue->removePath("/disk/d/a");
  queue->removeAllPaths();
  serve();
  EXPECT_TRUE(told.empty());
  EXPECT_TRUE(desktop.noted.empty());
}

TEST_F(WatchQueueEvents, CarryThePathThatTheirEntryHas) {
  watchFiles({"/disk/d/a"});
  entry("/disk/d/a")->setPath("/disk/d/now");
  happen("/disk/d/a", fileWritten);
  EXPECT_EQ(told, Lines{"WatchQueueFileWrittenToNotification /disk/d/now"});
  EXPECT_EQ(desktop.noted, Lines{"/disk/d/now"});
}

TEST_F(WatchQueueEvents, TellPathsOfAnyBytes) {
  const std::string path = "/disk/d/line\nbreak and \xff\xc3";
  watchFiles({path});
  happen(path, fileWritten | fileDeleted);
  EXPECT_EQ(told, (Lines{"WatchQueueFileWrittenToNotification " + path, "deleted " + path}));
  EXPECT_EQ(desktop.noted, Lines{path});
}

TEST_F(WatchQueueEvents, ADelegateMayChangeWhatIsWatchedInsideItsCall) {
  tree.file("d/b");
  delegate->WatchQueueReceivedNotificationForPath = [](FSWatchQueue& teller, const std::string&,
                                                       const std::string& path) {
    teller.removePath(path);
    teller.addPath("/disk/d/b");
    EXPECT_EQ(teller.numberOfWatchedPaths(), 1u);
  };
  watchFiles({"/disk/d/a"});
  happen("/disk/d/a", fileWritten);
  EXPECT_EQ(events.watchedPaths(), (Paths{{"/disk/d/b", 127}}));
}

TEST_F(WatchQueueEvents, OfAPathThatWasRemovedOnlyWhatIsOnItsWayIsTold) {
  watchFiles({"/disk/d/a"});
  kernel().oneAtATime = true;
  delegate->WatchQueueReceivedNotificationForPath = [this](FSWatchQueue& teller, const std::string&,
                                                           const std::string& path) {
    told.push_back(path);
    teller.removePath(path);
    events.happen(path, fileWritten);  // it goes on being written to
    threads.step();
  };
  happen("/disk/d/a", fileWritten);
  serve();
  EXPECT_EQ(told, Lines{"/disk/d/a"});
}

}  // namespace
}  // namespace vantile
