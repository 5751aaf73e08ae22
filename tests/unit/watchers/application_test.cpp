// What a `WatchApplication` watches, and the applications that it reports as new.

#include <gtest/gtest.h>

#include <stdexcept>
#include <string>

#include "unit/watchers/application_fixture.h"

namespace vantile::testing {
namespace {

using ApplicationWatch = Applications;

TEST_F(ApplicationWatch, ThereIsOneSharedWatcherAndNoneOfTheOthersIsIt) {
  EXPECT_EQ(WatchApplication::singleton(), WatchApplication::singleton());
  EXPECT_NE(WatchApplication::init(), WatchApplication::singleton());
}

TEST_F(ApplicationWatch, ANewWatcherWatchesNothing) {
  const auto watcher = WatchApplication::init();
  EXPECT_TRUE(watched().empty());
  EXPECT_EQ(watcher->delegate(), nullptr);
}

TEST_F(ApplicationWatch, WatchesTheApplicationsFolderAloneForWrites) {
  folder(apps + "/A.app");
  folder(apps + "/Tools/B.app");
  started();
  EXPECT_EQ(watched(), (Watched{{apps, 0x02}}));
}

TEST_F(ApplicationWatch, WhatIsThereFromTheStartIsKnown) {
  folder(apps + "/A.app");
  folder(apps + "/Tools/B.app");
  started();
  EXPECT_TRUE(added.empty());
  written(apps);
  EXPECT_TRUE(added.empty());
}

TEST_F(ApplicationWatch, ANewApplicationIsReportedOnce) {
  folder(apps + "/A.app");
  started();
  install("/B.app");
  EXPECT_EQ(added, Paths{apps + "/B.app"});
  written(apps);
  EXPECT_EQ(added.size(), 1u);
}

TEST_F(ApplicationWatch, AllThatAreFoundAtTheFirstWriteAreReportedWhereNoneWasKnown) {
  started();
  folder(apps + "/B.app");
  folder(apps + "/A.app");
  folder(apps + "/Tools/C.app");
  written(apps);
  EXPECT_EQ(added, (Paths{apps + "/B.app", apps + "/A.app", apps + "/Tools/C.app"}));
}

TEST_F(ApplicationWatch, AnApplicationInAFolderBelowIsReported) {
  folder(apps + "/Tools");
  started();
  install("/Tools/B.app");
  EXPECT_EQ(added, Paths{apps + "/Tools/B.app"});
}

TEST_F(ApplicationWatch, AnApplicationInsideAnotherIsNot) {
  started();
  install("/A.app/Inner.app");
  EXPECT_EQ(added, Paths{apps + "/A.app"});
}

TEST_F(ApplicationWatch, WhatIsNoApplicationIsNotReported) {
  started();
  install("/Tools");
  file(apps + "/A.app.zip");
  file(apps + "/B.app");  // a file is none
  written(apps);
  EXPECT_TRUE(added.empty());
}

TEST_F(ApplicationWatch, ADeletedApplicationIsDroppedSilentlyAndANewOneReported) {
  folder(apps + "/A.app");
  started();
  remove(apps + "/A.app");
  install("/B.app");
  EXPECT_EQ(added, Paths{apps + "/B.app"});
  EXPECT_TRUE(trashed.empty());
}

TEST_F(ApplicationWatch, AnApplicationThatComesBackIsReportedAgain) {
  folder(apps + "/A.app");
  folder(apps + "/B.app");
  started();
  uninstall("/A.app");
  install("/A.app");
  EXPECT_EQ(added, Paths{apps + "/A.app"});
}

TEST_F(ApplicationWatch, TheLastApplicationThatGoesIsDroppedToo) {
  folder(apps + "/A.app");
  started();
  uninstall("/A.app");
  install("/A.app");
  EXPECT_EQ(added, Paths{apps + "/A.app"});
}

TEST_F(ApplicationWatch, AnApplicationThatIsDraggedToTheTrashIsDroppedSilently) {
  folder(apps + "/A.app");
  started();
  move(apps + "/A.app", trash + "/A.app");
  written(apps);
  EXPECT_TRUE(trashed.empty());
  move(trash + "/A.app", apps + "/A.app");
  written(apps);
  EXPECT_EQ(added, Paths{apps + "/A.app"});
}

TEST_F(ApplicationWatch, AWriteToAPathThatIsGoneEndsItsWatchOnly) {
  folder(apps + "/A.app");
  started();
  remove(apps);
  written(apps);
  EXPECT_EQ(bitsOf(apps), 0u);
  folder(apps + "/A.app");
  const auto other = FSWatchQueue::init();
  watcher()->WatchQueueReceivedNotificationForPath(*other, WatchQueueWriteNotification, apps);
  EXPECT_TRUE(added.empty());  // it is still known
}

TEST_F(ApplicationWatch, AnyEventOfAPathThatIsGoneEndsItsWatchInTheQueueThatTells) {
  const auto other = FSWatchQueue::init();
  folder("/disk/gone");
  other->addPath("/disk/gone");
  remove("/disk/gone");
  watcher()->WatchQueueReceivedNotificationForPath(*other, WatchQueueAttributeChangeNotification,
                                                   "/disk/gone");
  EXPECT_EQ(other->numberOfWatchedPaths(), 0u);
}

TEST_F(ApplicationWatch, OnlyWritesCount) {
  const auto other = FSWatchQueue::init();
  const auto watcher = started();
  folder(apps + "/A.app");
  for (const auto* name :
       {WatchQueueRenameNotification, WatchQueueDeleteNotification,
        WatchQueueAttributeChangeNotification, WatchQueueSizeIncreaseNotification,
        WatchQueueLinkCountChangeNotification, WatchQueueAccessRevocationNotification})
    watcher->WatchQueueReceivedNotificationForPath(*other, name, apps);
  EXPECT_TRUE(added.empty());
  watcher->WatchQueueReceivedNotificationForPath(*other, "WatchQueueFileWrittenToNotification",
                                                 apps);
  EXPECT_EQ(added.size(), 1u);
}

TEST_F(ApplicationWatch, ARaisedStopFlagEndsTheSearch) {
  folder(apps + "/A.app");
  stop = 1;
  started();
  stop = 0;
  written(apps);
  EXPECT_EQ(takeAdded(), Paths{apps + "/A.app"});  // it was not found at the start
  stop = 1;
  install("/B.app");
  EXPECT_TRUE(added.empty());
}

TEST_F(ApplicationWatch, ANullStopFlagNeverStops) {
  watcher()->startWatch(nullptr);
  install("/A.app");
  EXPECT_EQ(added.size(), 1u);
  watcher()->stopWatch();
  EXPECT_TRUE(watched().empty());
}

TEST_F(ApplicationWatch, WhatIsHandedInTwiceIsReportedOnce) {
  const auto watcher = started();
  watcher->fillAppByPath(apps + "/A.app");
  watcher->fillAppByPath(apps + "/A.app");
  install("/A.app");
  EXPECT_EQ(added, Paths{apps + "/A.app"});
}

TEST_F(ApplicationWatch, WhatWasFoundIsForgottenAfterwards) {
  const auto watcher = started();
  watcher->fillAppByPath(apps + "/A.app");
  written(apps);
  ASSERT_EQ(takeAdded(), Paths{apps + "/A.app"});
  written(apps);  // it is not there, and no longer among the found
  watcher->fillAppByPath(apps + "/A.app");
  written(apps);
  EXPECT_EQ(added, Paths{apps + "/A.app"});
}

TEST_F(ApplicationWatch, WhatWasHandedInBeforeTheStartCountsAsKnown) {
  watcher()->fillAppByPath(apps + "/A.app");
  watcher()->fillFolderByPath(apps + "/Tools");
  started();
  install("/A.app");
  EXPECT_TRUE(added.empty());
}

TEST_F(ApplicationWatch, WithoutADelegateAllGoesOn) {
  const auto watcher = started();
  watcher->setDelegate(nullptr);
  install("/A.app");
  watcher->setDelegate(std::make_shared<ApplicationsWatchDelegate>());
  install("/B.app");
  watcher->setDelegate(delegate);
  EXPECT_EQ(watcher->delegate(), delegate);
  install("/C.app");
  EXPECT_EQ(added, Paths{apps + "/C.app"});
}

TEST_F(ApplicationWatch, WhatTheDelegateThrowsIsLoggedAndTheRestStillReported) {
  started();
  delegate->appAdded = [this](const std::string& path) {
    added.push_back(path);
    throw std::runtime_error("mine");
  };
  folder(apps + "/A.app");
  install("/B.app");
  EXPECT_EQ(added, (Paths{apps + "/A.app", apps + "/B.app"}));
  EXPECT_EQ(log.lines, Paths(2, "a delegate threw: mine"));
}

TEST_F(ApplicationWatch, ADelegateMayAskTheWatcherBack) {
  const auto watcher = started();
  delegate->appAdded = [&](const std::string& path) {
    added.push_back(path);
    watcher->fillAppByPath(path);
    written(apps);
  };
  install("/A.app");
  EXPECT_EQ(added, Paths{apps + "/A.app"});
}

TEST_F(ApplicationWatch, NamesThatAreNotUTF8AreReportedAsTheyAre) {
  started();
  install("/\xFF\xC3.app");
  EXPECT_EQ(added, Paths{apps + "/\xFF\xC3.app"});
}

}  // namespace
}  // namespace vantile::testing
