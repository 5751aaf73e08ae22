// The folders that a `WatchApplication` knows below the applications folder.

#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "unit/watchers/application_fixture.h"

namespace vantile::testing {
namespace {

/// Gives access to a member that nothing tells of.
const PathList& foldersOf(const WatchApplication& watcher);
template <auto member>
struct Reveal {
  friend const PathList& foldersOf(const WatchApplication& watcher) { return watcher.*member; }
};

template struct Reveal<&WatchApplication::_watchFolders>;

class KnownFolders : public Applications {
 protected:
  Paths known() { return foldersOf(*watcher()).paths(); }
  void renamed(const std::string& to, const std::string& path) {
    watcher()->WatchQueueRenameForPath(*other, to, path);
  }
  void writtenIn(const std::string& path) {
    watcher()->WatchQueueReceivedNotificationForPath(*other, WatchQueueWriteNotification, path);
  }

  /// Lets the queue tell of the applications folder what it is not watched for.
  void tells(std::uint32_t changes) {
    auto& latest = *events.queues.back();
    latest.coming.emplace_back(FileEvent{latest.watched.begin()->second.tag, changes});
    settle();
  }

  const std::shared_ptr<FSWatchQueue> other = FSWatchQueue::init();
  const std::string tools = apps + "/Tools", deep = tools + "/Deep", more = apps + "/More",
                    elsewhere = "/disk/other/Tools";
};

TEST_F(KnownFolders, AreThoseOfEveryDepthFromTheStart) {
  folder(deep);
  folder(apps + "/A.app/Contents");
  file(apps + "/file");
  started();
  EXPECT_EQ(known(), (Paths{tools, deep}));
}

TEST_F(KnownFolders, AreHandedInOnce) {
  for (const auto& path : {tools, more, tools}) watcher()->fillFolderByPath(path);
  started();
  EXPECT_EQ(known(), (Paths{tools, more}));
}

TEST_F(KnownFolders, FollowWhatIsThere) {
  folder(tools);
  started();
  install("/More");
  EXPECT_EQ(known(), (Paths{tools, more}));
  uninstall("/Tools");
  EXPECT_EQ(known(), Paths{more});
  uninstall("/More");
  EXPECT_TRUE(known().empty());
  EXPECT_TRUE(added.empty());
  EXPECT_TRUE(trashed.empty());
}

TEST_F(KnownFolders, ThatGoBeforeTheFirstWriteAreForgottenAtIt) {
  folder(tools);
  folder(more);
  started();
  uninstall("/Tools");
  EXPECT_EQ(known(), Paths{more});
}

TEST_F(KnownFolders, AreFoundAtAWriteWhereNoneWasKnown) {
  started();
  folder(tools);
  folder(more);
  written(apps);
  EXPECT_EQ(known(), (Paths{tools, more}));
}

TEST_F(KnownFolders, ElsewhereAreForgottenWithThemOnceAnyIsKnownBelow) {
  folder(tools);
  started();
  renamed(elsewhere, "/disk/other/x");
  written(apps);
  EXPECT_EQ(known(), Paths{tools});
}

TEST_F(KnownFolders, ElsewhereStayWhereNoneIsKnownBelow) {
  started();
  renamed(elsewhere, "/disk/other/x");
  install("/Tools");
  EXPECT_EQ(known(), (Paths{elsewhere, tools}));
}

TEST_F(KnownFolders, BelowAreThoseWhosePathBeginsWithTheFoldersInWhateverSpelling) {
  started();
  folder("/disk/caf\u00e9");
  for (const auto* path : {"/disk/CAFE/Tools", "/disk/caf\u00c9-old"}) {
    renamed(path, "/disk/other/x");
    renamed(elsewhere, "/disk/other/x");
    writtenIn("/disk/caf\u00e9");
    EXPECT_TRUE(known().empty()) << path;
  }
}

TEST_F(KnownFolders, ThatWereFoundAreForgottenAfterwards) {
  folder(tools);
  started();
  watcher()->fillFolderByPath(more);  // it is not there
  written(apps);
  EXPECT_EQ(known(), (Paths{tools, more}));
  written(apps);
  EXPECT_EQ(known(), Paths{tools});
}

TEST_F(KnownFolders, AreKeptUnderTheirNewNames) {
  folder(tools);
  started();
  renamed(more, tools);
  EXPECT_EQ(known(), Paths{more});
}

TEST_F(KnownFolders, TakeInTheNewNameOfOneThatWasNotKnown) {
  started();
  renamed(more, tools);
  EXPECT_EQ(known(), Paths{more});
}

TEST_F(KnownFolders, AreNotRenamedByTheSameObject) {
  folder(tools);
  folder(more);
  started();
  renamed(tools, tools);
  EXPECT_EQ(known(), (Paths{tools, more}));
  const auto equal = tools;
  renamed(equal, tools);
  EXPECT_EQ(known(), (Paths{more, tools}));
}

TEST_F(KnownFolders, AreWhatHasNotTheExtensionOfApplications) {
  started();
  for (const auto* name : {"/A", "/A.zip", "/.app", "/A."}) renamed(apps + "/B", apps + name);
  EXPECT_EQ(known(), Paths{apps + "/B"});
  renamed(apps + "/C", apps + "/C.app");
  EXPECT_EQ(known(), Paths{apps + "/B"});
}

TEST_F(KnownFolders, AreForgottenWhenTheyAreDeleted) {
  folder(tools);
  folder(more);
  started();
  watcher()->WatchQueueDeletedForPath(*other, tools);
  watcher()->WatchQueueDeletedForPath(*other, apps + "/gone");
  EXPECT_EQ(known(), Paths{more});
  EXPECT_TRUE(trashed.empty());
}

TEST_F(KnownFolders, AreForgottenWhenTheyAreMovedToTheTrash) {
  folder(tools);
  folder(more);
  started();
  watcher()->WatchQueueRemoveToTrashForPath(*other, trash + "/Tools", tools);
  EXPECT_EQ(known(), Paths{more});
}

TEST_F(KnownFolders, AreForgottenAtAStopAndLeftAloneAfterIt) {
  folder(tools);
  const auto shared = started();
  shared->stopWatch();
  EXPECT_TRUE(known().empty());
  renamed(more, tools);
  EXPECT_TRUE(known().empty());
}

TEST_F(KnownFolders, TakeInWhatTheQueueTells) {
  started();
  move(apps, "/disk/Apps");
  tells(fileRenamed);
  EXPECT_EQ(known(), Paths{"/disk/Apps"});
  tells(fileDeleted);
  EXPECT_TRUE(known().empty());
}

TEST_F(KnownFolders, MayBeToldOfAsMovedToTheTrash) {
  started();
  move(apps, trash + "/apps");
  tells(fileRenamed);
  EXPECT_EQ(trashed, Paths{trash + "/apps"});
}

TEST_F(KnownFolders, AreNotTouchedByAWriteToAFolderThatIsGone) {
  folder(tools);
  started();
  remove(apps);
  written(apps);
  EXPECT_EQ(known(), Paths{tools});
}

}  // namespace
}  // namespace vantile::testing
