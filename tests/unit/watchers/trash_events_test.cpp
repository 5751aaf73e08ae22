// What a `WatchTrash` does with deletions and renames, and with folders that were moved there.

#include <gtest/gtest.h>

#include <string>

#include "unit/watchers/trash_fixture.h"

namespace vantile::testing {
namespace {

/// Gives access to a member that nothing tells of.
const PathList& applicationsOf(const WatchTrash& watcher);
template <auto member>
struct Reveal {
  friend const PathList& applicationsOf(const WatchTrash& watcher) { return watcher.*member; }
};
template struct Reveal<&WatchTrash::_watchApps>;

class TrashEvents : public Trash {
 protected:
  void told(const char* notification, const std::string& path) {
    watcher()->WatchQueueReceivedNotificationForPath(*other, notification, path);
  }
  void renamed(const std::string& to, const std::string& path) {
    watcher()->WatchQueueRenameForPath(*other, to, path);
  }
  Paths known() { return applicationsOf(*watcher()).paths(); }
  /// Whether the application is reported as new when it is found.
  bool isNew(const std::string& path) {
    folder(path);
    takeAdded();
    told(WatchQueueWriteNotification, trash);
    return std::count(added.begin(), added.end(), path) == 1;
  }

  const std::shared_ptr<FSWatchQueue> other = FSWatchQueue::init();
};

TEST_F(TrashEvents, ADeletionByNameForgetsThePathAndNothingElse) {
  folder(trash + "/A.app");
  folder(trash + "/B.app");
  started();
  file(trash + "/a", 5);
  told("WatchQueueFileDeletedNotification", trash + "/A.app");
  EXPECT_TRUE(added.empty());
  EXPECT_TRUE(sizes.empty());
  told("WatchQueueFileWrittenToNotification", trash);
  EXPECT_EQ(added, Paths{trash + "/A.app"});
  EXPECT_EQ(sizes, Sizes{5});
}

TEST_F(TrashEvents, OtherNamesAreIgnored) {
  started();
  file(trash + "/A.app/data", 5);
  for (const auto* name :
       {WatchQueueRenameNotification, WatchQueueAttributeChangeNotification,
        WatchQueueSizeIncreaseNotification, WatchQueueLinkCountChangeNotification,
        WatchQueueAccessRevocationNotification})
    told(name, trash);
  EXPECT_TRUE(Trash::told.empty());
}

TEST_F(TrashEvents, AWriteToWhateverIsWatchedLooksThroughTheTrash) {
  started();
  file(trash + "/A.app/data", 5);
  told(WatchQueueWriteNotification, "/disk/elsewhere");
  EXPECT_EQ(Trash::told, (Paths{trash + "/A.app", "5"}));
}

TEST_F(TrashEvents, WhatWasFoundBeforeIsForgottenWhenTheSearchBegins) {
  started();
  watcher()->fillAppByPath(trash + "/Ghost.app");
  told(WatchQueueWriteNotification, trash);
  EXPECT_TRUE(added.empty());
}

TEST_F(TrashEvents, ARenamedApplicationIsKnownUnderItsNewNameAlone) {
  folder(trash + "/A.app");
  started();
  move(trash + "/A.app", trash + "/B.app");
  renamed(trash + "/B.app", trash + "/A.app");
  EXPECT_EQ(known(), Paths{trash + "/B.app"});
  EXPECT_FALSE(isNew(trash + "/B.app"));
  EXPECT_TRUE(isNew(trash + "/A.app"));
}

TEST_F(TrashEvents, ARenamedApplicationIsKnownEvenIfTheOldOneWasNot) {
  started();
  folder(trash + "/B.app");
  renamed(trash + "/B.app", trash + "/A.app");
  EXPECT_FALSE(isNew(trash + "/B.app"));
}

TEST_F(TrashEvents, ARenameToTheSameObjectIsNone) {
  started();
  const auto path = trash + "/A.app", equal = path;
  folder(path);
  renamed(equal, path);  // equal text, another object
  EXPECT_FALSE(isNew(path));
  remove(path);
  told(WatchQueueWriteNotification, trash);
  folder(path);
  renamed(path, path);
  EXPECT_TRUE(isNew(path));
}

TEST_F(TrashEvents, ARenameOfWhatIsNoApplicationIsIgnored) {
  started();
  for (const auto* name : {"/A", "/A.zip", "/.app", "/A."}) {
    folder(trash + "/B.app");
    renamed(trash + "/B.app", trash + name);
    EXPECT_TRUE(isNew(trash + "/B.app")) << name;
    remove(trash + "/B.app");
    told(WatchQueueWriteNotification, trash);
  }
}

TEST_F(TrashEvents, WhatIsKnownWithoutAnApplicationsExtensionStaysKnown) {
  started();
  renamed(trash + "/A", trash + "/A.app");
  told(WatchQueueWriteNotification, trash);  // not among the found, and not dropped
  EXPECT_EQ(known(), Paths{trash + "/A"});
  told("WatchQueueFileDeletedNotification", trash + "/A");
  EXPECT_TRUE(known().empty());
}

using MovedApplications = TrashEvents;

TEST_F(MovedApplications, AreReportedAndWatchedForTheirEndAndANewName) {
  folder(trash + "/Tools/A.app");
  started()->notifyMovedApp(trash + "/Tools/A.app");
  EXPECT_EQ(added, Paths{trash + "/Tools/A.app"});
  EXPECT_EQ(watched(), (Watched{{trash, 0x02}, {trash + "/Tools/A.app", 0x21}}));
}

TEST_F(MovedApplications, AreWatchedAndKnownBeforeTheyAreReported) {
  folder(trash + "/A.app");
  const auto watcher = started();
  std::uint32_t bits = 0;
  delegate->trashAddedApp = [&](const std::string& path) {
    added.push_back(path);
    bits = bitsOf(path);
    written(trash);
  };
  watcher->notifyMovedApp(trash + "/A.app");
  EXPECT_EQ(bits, 0x21u);
  EXPECT_EQ(added.size(), 1u);
}

TEST_F(MovedApplications, AreReportedEachTime) {
  started();
  watcher()->notifyMovedApp(trash + "/A.app");
  watcher()->notifyMovedApp(trash + "/A.app");
  EXPECT_EQ(added.size(), 2u);
}

TEST_F(MovedApplications, AreThoseWithTheExtensionAlone) {
  started();
  for (const auto* name : {"/A", "/A.zip", "/.app", "/A.", "/app", "/A.app/data"}) {
    file(trash + "/elsewhere" + name);
    watcher()->notifyMovedApp(trash + "/elsewhere" + name);
  }
  EXPECT_TRUE(added.empty());
  EXPECT_EQ(watched(), (Watched{{trash, 0x02}}));
}

TEST_F(MovedApplications, OfTheTrashItselfAreKnownFromThenOn) {
  folder(trash + "/A.app");
  remove(trash + "/A.app");
  started();
  folder(trash + "/A.app");
  watcher()->notifyMovedApp(trash + "/A.app");
  EXPECT_FALSE(isNew(trash + "/A.app"));
}

TEST_F(MovedApplications, OfAFolderAreFoundAtEveryDepthAndLogged) {
  folder(trash + "/Tools/A.app/Inner.app");
  folder(trash + "/Tools/deep/B.app");
  folder(trash + "/Other.app");
  started()->moveToTrash(trash + "/Tools");
  EXPECT_EQ(added, (Paths{trash + "/Tools/A.app", trash + "/Tools/deep/B.app"}));
  EXPECT_EQ(log.lines, (Paths{"Path add is A.app", "Path add is B.app"}));
  EXPECT_EQ(watched(), (Watched{{trash, 0x02},
                                {trash + "/Tools/A.app", 0x21},
                                {trash + "/Tools/deep/B.app", 0x21}}));
}

TEST_F(MovedApplications, AreReportedBeforeTheyAreLogged) {
  folder(trash + "/Tools/A.app");
  delegate->trashAddedApp = [this](const std::string&) { EXPECT_TRUE(log.lines.empty()); };
  started()->moveToTrash(trash + "/Tools");
  EXPECT_EQ(log.lines.size(), 1u);
}

TEST_F(MovedApplications, AreReportedBeforeAStartToo) {
  folder(trash + "/Tools/A.app");
  watcher()->moveToTrash(trash + "/Tools");
  EXPECT_EQ(added, Paths{trash + "/Tools/A.app"});
}

TEST_F(MovedApplications, AreNotLookedForOnceTheStopFlagIsRaised) {
  folder(trash + "/Tools/A.app");
  const auto watcher = started();
  stop = 1;
  watcher->moveToTrash(trash + "/Tools");
  EXPECT_TRUE(added.empty());
}

TEST_F(MovedApplications, OfAFolderThatIsGoneAreNone) {
  started()->moveToTrash(trash + "/Tools");
  EXPECT_TRUE(added.empty());
  EXPECT_TRUE(log.lines.empty());
}

TEST_F(MovedApplications, InFoldersAreDroppedAtTheNextWriteInTheTrash) {
  folder(trash + "/Tools/A.app");
  started()->moveToTrash(trash + "/Tools");
  takeAdded();
  EXPECT_EQ(known(), Paths{trash + "/Tools/A.app"});
  written(trash);  // the Trash's own search does not come so deep
  EXPECT_EQ(known(), Paths{});
}

TEST_F(MovedApplications, InTheTrashItselfThatAreRenamedAreFoundAsNew) {
  folder(trash + "/A.app");
  started()->notifyMovedApp(trash + "/A.app");
  takeAdded();
  move(trash + "/A.app", trash + "/B.app");
  happen(trash + "/A.app", fileRenamed);
  EXPECT_EQ(known(), Paths{trash + "/A.app"});  // the queue takes it for a move to the Trash
  written(trash);
  EXPECT_EQ(known(), Paths{trash + "/B.app"});
  EXPECT_EQ(added, Paths{trash + "/B.app"});
}

TEST_F(MovedApplications, InFoldersThatAreRenamedAreFollowed) {
  folder(trash + "/Tools/A.app");
  started()->moveToTrash(trash + "/Tools");
  move(trash + "/Tools/A.app", trash + "/Tools/B.app");
  happen(trash + "/Tools/A.app", fileRenamed);
  EXPECT_EQ(known(), Paths{trash + "/Tools/B.app"});
  EXPECT_EQ(bitsOf(trash + "/Tools/B.app"), 0x21u);
  EXPECT_EQ(bitsOf(trash + "/Tools/A.app"), 0u);
}

TEST_F(MovedApplications, ThatAreDeletedAreForgottenAtTheNextWriteOnly) {
  folder(trash + "/A.app");
  const auto watcher = started();
  watcher->notifyMovedApp(trash + "/A.app");
  takeAdded();
  remove(trash + "/A.app");
  happen(trash + "/A.app", fileDeleted);
  folder(trash + "/A.app");
  written(trash);
  EXPECT_TRUE(added.empty());  // it is still known
  remove(trash + "/A.app");
  written(trash);
  folder(trash + "/A.app");
  written(trash);
  EXPECT_EQ(added, Paths{trash + "/A.app"});
}

TEST_F(MovedApplications, WithNamesThatAreNotUTF8AreReportedAndLogged) {
  folder(trash + "/Tools/\xFF.app");
  started()->moveToTrash(trash + "/Tools");
  EXPECT_EQ(added, Paths{trash + "/Tools/\xFF.app"});
  EXPECT_EQ(log.lines, Paths{"Path add is \xFF.app"});
}

}  // namespace
}  // namespace vantile::testing
