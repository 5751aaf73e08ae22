#include <gtest/gtest.h>

#include <memory>
#include <stdexcept>
#include <string>
#include <utility>
#include <vector>

#include "vantile/foundation/notification_center.h"

#include "unit/watchqueue/watch_queue_fixture.h"

namespace vantile {
namespace {

/// What the centre posts under each of the seven names.
class WatchQueueNotifications : public testing::WatchQueue {
 protected:
  WatchQueueNotifications() {
    for (const char* const name :
         {WatchQueueRenameNotification, WatchQueueWriteNotification, WatchQueueDeleteNotification,
          WatchQueueAttributeChangeNotification, WatchQueueSizeIncreaseNotification,
          WatchQueueLinkCountChangeNotification, WatchQueueAccessRevocationNotification})
      observe(name, [this](const Notification& notification) {
        ASSERT_NE(notification.userInfo, nullptr);
        const auto* const path = notification.userInfo->text("path");
        posted.push_back(notification.name + " " + (path ? *path : "without a path"));
        objects.push_back(notification.object);
        keys = notification.userInfo->size();
        told.push_back("posted");
      });
    watchFiles({"/disk/d/a"});
  }

  void observe(const char* name, NotificationCenter::Observer observer) {
    registrations.push_back(NotificationCenter::workspace().observe(name, std::move(observer)));
  }

  std::vector<NotificationCenter::Registration> registrations;
  Lines posted;
  std::vector<const void*> objects;
  std::size_t keys = 0;  ///< in the latest user info
};

TEST_F(WatchQueueNotifications, ArePostedBesideTheDelegateAndAfterIt) {
  happen("/disk/d/a", fileWritten);
  EXPECT_EQ(told, (Lines{"WatchQueueFileWrittenToNotification /disk/d/a", "posted"}));
}

TEST_F(WatchQueueNotifications, NameTheQueueAndTheWatchedPathAlone) {
  happen("/disk/d/a", fileGrew);
  EXPECT_EQ(posted, Lines{"WatchQueueFileSizeIncreasedNotification /disk/d/a"});
  EXPECT_EQ(objects, std::vector<const void*>{queue.get()});
  EXPECT_EQ(keys, 1u);
}

TEST_F(WatchQueueNotifications, ReachTheDesktopToo) {
  happen("/disk/d/a", fileWritten | fileGrew);
  using Posted = testing::FakeWorkspace::Posted;
  EXPECT_EQ(
      desktop.posted,
      (std::vector<Posted>{{"WatchQueueFileWrittenToNotification", queue.get(), "/disk/d/a"},
                           {"WatchQueueFileSizeIncreasedNotification", queue.get(), "/disk/d/a"}}));
}

TEST_F(WatchQueueNotifications, TellOfEverythingThatAnEventCarriesInItsOrder) {
  tree.remove("d/a");
  happen("/disk/d/a", 0x7F);
  EXPECT_EQ(posted, (Lines{"WatchQueueFileRenamedNotification /disk/d/a",
                           "WatchQueueFileWrittenToNotification /disk/d/a",
                           "WatchQueueFileDeletedNotification /disk/d/a",
                           "WatchQueueFileAttributesChangedNotification /disk/d/a",
                           "WatchQueueFileSizeIncreasedNotification /disk/d/a",
                           "WatchQueueLinkCountChangedNotification /disk/d/a",
                           "WatchQueueAccessWasRevokedNotification /disk/d/a"}));
}

TEST_F(WatchQueueNotifications, ComeBetweenTheCallsOfOneEvent) {
  happen("/disk/d/a", fileWritten | fileDeleted);
  EXPECT_EQ(told, (Lines{"WatchQueueFileWrittenToNotification /disk/d/a", "posted",
                         "deleted /disk/d/a", "posted"}));
}

TEST_F(WatchQueueNotifications, OfADeletionComeWhenThePathIsWatchedNoLonger) {
  std::uint32_t during = 7;
  observe(WatchQueueDeleteNotification,
          [&](const Notification&) { during = queue->numberOfWatchedPaths(); });
  happen("/disk/d/a", fileDeleted);
  EXPECT_EQ(during, 0u);
}

TEST_F(WatchQueueNotifications, OfARenameCarryTheOldPath) {
  rename("/disk/d/a", "/disk/d/b");
  rename("/disk/d/b", "/disk/Trash/b");
  EXPECT_EQ(posted, (Lines{"WatchQueueFileRenamedNotification /disk/d/a",
                           "WatchQueueFileRenamedNotification /disk/d/b"}));
}

TEST_F(WatchQueueNotifications, AreNotPostedWithoutADelegate) {
  queue->setDelegate(nullptr);
  tree.remove("d/a");
  happen("/disk/d/a", 0x7F);
  EXPECT_TRUE(posted.empty());
  EXPECT_TRUE(desktop.posted.empty());
}

TEST_F(WatchQueueNotifications, ArePostedWithoutADelegateWhenAskedFor) {
  queue->setDelegate(nullptr);
  queue->setAlwaysPostNotifications(true);
  EXPECT_TRUE(queue->alwaysPostNotifications());
  happen("/disk/d/a", fileWritten);
  queue->setAlwaysPostNotifications(false);
  happen("/disk/d/a", fileGrew);
  EXPECT_EQ(posted, Lines{"WatchQueueFileWrittenToNotification /disk/d/a"});
  EXPECT_EQ(desktop.posted.size(), 1u);
}

TEST_F(WatchQueueNotifications, ArePostedOnceWhenBothAskForIt) {
  queue->setAlwaysPostNotifications(true);
  happen("/disk/d/a", fileWritten);
  EXPECT_EQ(posted.size(), 1u);
}

TEST_F(WatchQueueNotifications, ArePostedForADelegateThatImplementsNothing) {
  queue->setDelegate(std::make_shared<FSWatchQueueDelegate>());
  happen("/disk/d/a", fileWritten | fileDeleted);
  EXPECT_EQ(posted.size(), 2u);
}

TEST_F(WatchQueueNotifications, AreNotPostedOnceTheDelegateTookItselfAway) {
  delegate->WatchQueueReceivedNotificationForPath = [](FSWatchQueue& teller, const std::string&,
                                                       const std::string&) {
    teller.setDelegate(nullptr);
  };
  happen("/disk/d/a", fileWritten | fileGrew);
  EXPECT_TRUE(posted.empty());
}

TEST_F(WatchQueueNotifications, ArePostedFromTheMainThreadAlone) {
  events.happen("/disk/d/a", fileWritten);
  threads.step();
  EXPECT_TRUE(posted.empty());
  EXPECT_TRUE(desktop.posted.empty());
  loop.settle();
  EXPECT_EQ(posted.size(), 1u);
}

TEST_F(WatchQueueNotifications, GoOnAfterAnObserverOrADelegateThatThrows) {
  registrations.clear();
  observe(WatchQueueWriteNotification,
          [](const Notification&) { throw std::runtime_error("no time"); });
  observe(WatchQueueWriteNotification,
          [this](const Notification& notification) { posted.push_back(notification.name); });
  delegate->WatchQueueReceivedNotificationForPath = [](FSWatchQueue&, const std::string&,
                                                       const std::string&) { throw 1; };
  happen("/disk/d/a", fileWritten);
  EXPECT_EQ(posted, Lines{"WatchQueueFileWrittenToNotification"});
  EXPECT_EQ(log.lines, (Lines{"a delegate threw: something that is not a std::exception",
                              "an observer threw: no time"}));
}

TEST_F(WatchQueueNotifications, CarryPathsOfAnyBytes) {
  const std::string path = "/disk/d/line\nbreak and \xff\xc3";
  watchFiles({path});
  happen(path, fileWritten);
  EXPECT_EQ(posted, Lines{"WatchQueueFileWrittenToNotification " + path});
  EXPECT_EQ(desktop.posted.back().path, path);
}

TEST_F(WatchQueueNotifications, TellQueuesApart) {
  const auto other = FSWatchQueue::init();
  other->setAlwaysPostNotifications(true);
  other->addPath("/disk/d/a");
  happen("/disk/d/a", fileWritten);  // in the latest queue
  EXPECT_EQ(objects, std::vector<const void*>{other.get()});
}

}  // namespace
}  // namespace vantile
