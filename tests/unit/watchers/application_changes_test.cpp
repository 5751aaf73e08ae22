// What a `WatchApplication` does with renames, deletions and moves to the Trash, and how it
// compares what it knows with what is there.

#include <gtest/gtest.h>

#include <string>

#include "unit/watchers/application_fixture.h"

namespace vantile::testing {
namespace {

class ApplicationChanges : public Applications {
 protected:
  void renamed(const std::string& to, const std::string& path) {
    watcher()->WatchQueueRenameForPath(*other, to, path);
  }
  void deleted(const std::string& path) { watcher()->WatchQueueDeletedForPath(*other, path); }
  void toTrash(const std::string& to, const std::string& path) {
    watcher()->WatchQueueRemoveToTrashForPath(*other, to, path);
  }
  void writtenIn(const std::string& path) {
    watcher()->WatchQueueReceivedNotificationForPath(*other, WatchQueueWriteNotification, path);
  }
  /// Whether the application at the path is reported as new when it is found.
  bool isNew(const std::string& path) {
    folder(path);
    takeAdded();
    writtenIn(withoutLastPathComponent(path));
    return std::count(added.begin(), added.end(), path) == 1;
  }

  const std::shared_ptr<FSWatchQueue> other = FSWatchQueue::init();
};

TEST_F(ApplicationChanges, ARenamedApplicationIsKnownUnderItsNewNameAlone) {
  folder(apps + "/A.app");
  started();
  move(apps + "/A.app", apps + "/B.app");
  renamed(apps + "/B.app", apps + "/A.app");
  EXPECT_FALSE(isNew(apps + "/B.app"));
  EXPECT_TRUE(isNew(apps + "/A.app"));
}

TEST_F(ApplicationChanges, ARenamedApplicationIsKnownEvenIfTheOldOneWasNot) {
  started();
  renamed(apps + "/B.app", apps + "/A.app");
  EXPECT_FALSE(isNew(apps + "/B.app"));
}

TEST_F(ApplicationChanges, ARenameToTheSameObjectIsNone) {
  started();
  const auto path = apps + "/A.app", equal = path;
  renamed(path, path);
  EXPECT_TRUE(isNew(path));
  watcher()->stopWatch();
  started();
  remove(path);
  written(apps);
  renamed(equal, path);  // equal text, another object
  EXPECT_FALSE(isNew(path));
}

TEST_F(ApplicationChanges, TheOldNamesExtensionDecidesWhatWasRenamed) {
  started();
  renamed(apps + "/B.app", apps + "/Folder");  // goes to the folders
  EXPECT_TRUE(isNew(apps + "/B.app"));
  renamed(apps + "/C", apps + "/C.app");  // goes to the applications
  watcher()->fillAppByPath(apps + "/C");
  takeAdded();
  writtenIn(apps);
  EXPECT_TRUE(added.empty());
}

TEST_F(ApplicationChanges, ADeletedApplicationIsForgottenWithoutAReport) {
  folder(apps + "/A.app");
  started();
  deleted(apps + "/A.app");
  EXPECT_TRUE(trashed.empty());
  EXPECT_TRUE(isNew(apps + "/A.app"));
}

TEST_F(ApplicationChanges, ADeletedFolderIsNoApplication) {
  started();
  renamed(apps + "/C", apps + "/C.app");  // an application without the extension
  deleted(apps + "/C");
  watcher()->fillAppByPath(apps + "/C");
  writtenIn(apps);
  EXPECT_TRUE(added.empty());
}

TEST_F(ApplicationChanges, AnApplicationThatIsMovedToTheTrashIsForgottenAndReported) {
  folder(apps + "/A.app");
  started();
  toTrash(trash + "/A 2.app", apps + "/A.app");
  EXPECT_EQ(trashed, Paths{trash + "/A 2.app"});
  EXPECT_TRUE(isNew(apps + "/A.app"));
}

TEST_F(ApplicationChanges, WhatWasNotKnownIsReportedInTheTrashAllTheSame) {
  started();
  toTrash(trash + "/A.app", apps + "/A.app");
  toTrash(trash + "/Tools", apps + "/Tools");
  EXPECT_EQ(trashed, (Paths{trash + "/A.app", trash + "/Tools"}));
}

/// The shared Trash watcher beside it.
class MovedFolders : public ApplicationChanges {
 protected:
  MovedFolders() {
    trashDelegate->trashAddedApp = [this](const std::string& path) { told.push_back(path); };
    WatchTrash::singleton()->setDelegate(trashDelegate);
    delegate->movedToTrash = [this](const std::string& path) { told.push_back("moved " + path); };
    folder(trash + "/Tools/A.app");
    folder(trash + "/Tools/deep/B.app");
  }

  const std::shared_ptr<TrashWatchDelegate> trashDelegate = std::make_shared<TrashWatchDelegate>();
  Paths told;
};

TEST_F(MovedFolders, AreLookedThroughByTheTrashWatcherFirst) {
  started();
  toTrash(trash + "/Tools", apps + "/Tools");
  EXPECT_EQ(told, (Paths{trash + "/Tools/A.app", trash + "/Tools/deep/B.app",
                         "moved " + trash + "/Tools"}));
}

TEST_F(MovedFolders, AreThoseWhoseOldNameIsNoApplications) {
  started();
  toTrash(trash + "/Tools", apps + "/Tools.app");
  EXPECT_EQ(told, Paths{"moved " + trash + "/Tools"});
}

TEST_F(MovedFolders, AreLookedThroughWithoutADelegateToo) {
  const auto shared = started();
  shared->setDelegate(nullptr);
  shared->WatchQueueRemoveToTrashForPath(*other, trash + "/Tools", apps + "/Tools");
  EXPECT_EQ(told.size(), 2u);
}

TEST_F(ApplicationChanges, KnownApplicationsElsewhereStayKnown) {
  folder("/disk/other/A.app");
  started();
  renamed("/disk/other/A.app", "/disk/other/B.app");
  install("/C.app");  // a write elsewhere
  EXPECT_FALSE(isNew("/disk/other/A.app"));
}

TEST_F(ApplicationChanges, KnownApplicationsBelowAreThoseWhosePathBeginsWithTheFolders) {
  started();
  renamed("/disk/apps-old/A.app", "/disk/apps-old/B.app");
  written(apps);  // "/disk/apps" is how it begins, and it was not found
  EXPECT_TRUE(isNew("/disk/apps-old/A.app"));
}

TEST_F(ApplicationChanges, KnownApplicationsBelowAreFoundWhateverTheCaseAndDiacritics) {
  started();
  folder("/disk/caf\u00e9");
  renamed("/disk/CAFE/A.app", "/disk/x.app");
  writtenIn("/disk/caf\u00e9");
  EXPECT_TRUE(isNew("/disk/CAFE/A.app"));
}

TEST_F(ApplicationChanges, AFolderWithAnOddNameIsBelowItself) {
  folder("/disk/\xFF/A.app");
  started();
  writtenIn("/disk/\xFF");
  remove("/disk/\xFF/A.app");
  writtenIn("/disk/\xFF");
  EXPECT_TRUE(isNew("/disk/\xFF/A.app"));
}

}  // namespace
}  // namespace vantile::testing
