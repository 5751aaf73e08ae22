// Download folders that are not there, or not yet: the nearest folder above is watched for them.

#include <gtest/gtest.h>

#include <string>

#include "unit/watchers/download_fixture.h"

namespace vantile::testing {
namespace {

class MissingDownloadFolder : public Downloads {
 protected:
  /// The folder "new" comes in a download folder, with a download of that one's own.
  void expectBothServed(const std::string& around) {
    file(around + "/a.part");
    folder(around + "/new");
    written(around);
    EXPECT_EQ(bitsOf(around), asDownloadFolder);
    EXPECT_EQ(bitsOf(around + "/a.part"), asUnfinished);
    EXPECT_EQ(bitsOf(around + "/new"), asDownloadFolder);
  }
};

TEST_F(MissingDownloadFolder, IsAwaitedInTheNearestFolderAbove) {
  saves(chromeList, home + "/new/deep");
  started();
  EXPECT_EQ(bitsOf(home), asPreferences);
  EXPECT_EQ(bitsOf(home + "/new/deep"), 0u);
}

TEST_F(MissingDownloadFolder, IsWatchedAndLookedThroughWhenItAppears) {
  saves(chromeList, home + "/new");
  started();
  file(home + "/new/a.part");
  written(home);
  EXPECT_EQ(bitsOf(home + "/new"), asDownloadFolder);
  EXPECT_EQ(bitsOf(home + "/new/a.part"), asUnfinished);
  EXPECT_EQ(bitsOf(home), 0u);  // it has nothing more to tell
}

TEST_F(MissingDownloadFolder, IsFollowedFolderByFolder) {
  saves(chromeList, home + "/new/deep");
  started();
  folder(home + "/new");
  written(home);
  EXPECT_EQ(bitsOf(home), 0u);
  EXPECT_EQ(bitsOf(home + "/new"), asPreferences);
  folder(home + "/new/deep");
  written(home + "/new");
  EXPECT_EQ(bitsOf(home + "/new"), 0u);
  EXPECT_EQ(bitsOf(home + "/new/deep"), asDownloadFolder);
}

TEST_F(MissingDownloadFolder, IsFoundWhoeverTellsOfAChange) {
  saves(chromeList, home + "/new");
  started();
  folder(home + "/new");
  preferencesChange();
  EXPECT_EQ(bitsOf(home + "/new"), asDownloadFolder);
}

TEST_F(MissingDownloadFolder, ThatPreferencesNameLaterIsAwaitedToo) {
  startedWithChrome();
  saves(chromeList, home + "/new");
  preferencesChange();
  EXPECT_EQ(bitsOf(home), asPreferences);
  put(home + "/new/a.part");
  written(home);
  EXPECT_EQ(bitsOf(home + "/new/a.part"), asUnfinished);
}

TEST_F(MissingDownloadFolder, ThatIsNotWantedAnyMoreIsNotAwaited) {
  saves(firefoxList, home + "/new");
  started();
  folder(home + "/new");
  saves(firefoxList, downloads);
  preferencesChange();
  EXPECT_EQ(bitsOf(home), 0u);
  EXPECT_EQ(bitsOf(home + "/new"), 0u);
  EXPECT_EQ(bitsOf(downloads), asDownloadFolder);
}

TEST_F(MissingDownloadFolder, ThatWasDeletedComesBack) {
  startedWithChrome();
  remove(downloads);
  happen(downloads, fileDeleted);
  EXPECT_EQ(bitsOf(home), asPreferences);
  file(downloads + "/a.part");
  written(home);
  EXPECT_EQ(bitsOf(downloads), asDownloadFolder);
  EXPECT_EQ(bitsOf(downloads + "/a.part"), asUnfinished);
  rename(downloads + "/a.part", downloads + "/a");
  EXPECT_EQ(completed, Paths{downloads + "/a"});
}

TEST_F(MissingDownloadFolder, ThatIsReplacedBeforeItsDeletionIsToldIsWatchedAnew) {
  startedWithChrome();
  remove(downloads);
  file(downloads + "/a.part");
  happen(downloads, fileDeleted);
  EXPECT_EQ(bitsOf(downloads), asDownloadFolder);
  EXPECT_EQ(bitsOf(downloads + "/a.part"), asUnfinished);
}

TEST_F(MissingDownloadFolder, ThatComesBackBeforeItsDeletionIsToldIsWatchedAsTheNewOne) {
  startedWithChrome();
  remove(downloads);
  preferencesChange();
  folder(downloads);
  preferencesChange();
  EXPECT_EQ(timesOpened(downloads), 2);
  EXPECT_EQ(bitsOf(downloads), asDownloadFolder);
}

TEST_F(MissingDownloadFolder, ThatWasRenamedComesBack) {
  startedWithChrome();
  move(downloads, home + "/Old");
  happen(downloads, fileRenamed);
  file(downloads + "/a.part");
  written(home);
  EXPECT_EQ(bitsOf(home + "/Old"), asDownloadFolder);
  EXPECT_EQ(bitsOf(downloads), asDownloadFolder);
  EXPECT_EQ(bitsOf(downloads + "/a.part"), asUnfinished);
}

TEST_F(MissingDownloadFolder, ThatIsReplacedBeforeItsRenameIsToldIsWatchedAnew) {
  startedWithChrome();
  move(downloads, home + "/Old");
  file(downloads + "/a.part");
  happen(downloads, fileRenamed);
  EXPECT_EQ(bitsOf(downloads), asDownloadFolder);
  EXPECT_EQ(bitsOf(downloads + "/a.part"), asUnfinished);
}

TEST_F(MissingDownloadFolder, ThatWasMovedToTheTrashComesBack) {
  startedWithChrome();
  move(downloads, trash + "/Down");
  happen(downloads, fileRenamed);
  folder(downloads);
  written(home);
  EXPECT_EQ(bitsOf(downloads), asDownloadFolder);
}

TEST_F(MissingDownloadFolder, ThatVanishedUnseenComesBack) {
  startedWithChrome();
  remove(downloads);
  written(downloads);  // a write that was on its way
  EXPECT_EQ(bitsOf(home), asPreferences);
  folder(downloads);
  written(home);
  EXPECT_EQ(bitsOf(downloads), asDownloadFolder);
}

TEST_F(MissingDownloadFolder, IsWatchedOverAgainHoweverOftenItGoes) {
  startedWithChrome();
  for (int round = 0; round < 3; ++round) {
    remove(downloads);
    happen(downloads, fileDeleted);
    folder(downloads);
    written(home);
    EXPECT_EQ(bitsOf(downloads), asDownloadFolder);
  }
}

TEST_F(MissingDownloadFolder, AwaitedInADownloadFolderLeavesThatAsItIs) {
  saves(firefoxList, downloads + "/new");
  startedWithChrome();
  EXPECT_EQ(bitsOf(downloads), asDownloadFolder);
  expectBothServed(downloads);
}

TEST_F(MissingDownloadFolder, AwaitedWhereAnotherBrowserThenSavesIsStillAwaited) {
  saves(firefoxList, home + "/new");
  startedWithChrome();
  ASSERT_EQ(bitsOf(home), asPreferences);
  saves(chromeList, home);
  preferencesChange();
  EXPECT_EQ(bitsOf(home), asDownloadFolder);
  expectBothServed(home);
}

TEST_F(MissingDownloadFolder, IsAwaitedWhereABrowserSavesNoMore) {
  saves(firefoxList, home + "/new");
  saves(chromeList, home);
  started();
  saves(chromeList, downloads);
  preferencesChange();
  EXPECT_EQ(bitsOf(home), asPreferences);
  folder(home + "/new");
  written(home);
  EXPECT_EQ(bitsOf(home + "/new"), asDownloadFolder);
}

TEST_F(MissingDownloadFolder, AwaitedInSafarisFolderLeavesTheHistoryFollowed) {
  saves(chromeList, safari + "/new");
  started();
  file(history);
  written(safari);
  EXPECT_EQ(workers.waiting.size(), 1u);
  folder(safari + "/new");
  written(safari);
  EXPECT_EQ(bitsOf(safari), asPreferences);
  EXPECT_EQ(bitsOf(safari + "/new"), asDownloadFolder);
}

TEST_F(MissingDownloadFolder, ThatIsNoAbsolutePathIsTriedOnceAndNotAwaited) {
  saves(firefoxList, "Desk/deep");
  startedWithChrome();
  preferencesChange();
  EXPECT_EQ(log.lines.size(), 1u);
  EXPECT_EQ(bitsOf(downloads), asDownloadFolder);
}

TEST_F(MissingDownloadFolder, ThatAppearsWhileItsPlaceIsBeginningToBeWatchedIsFound) {
  const auto find = events.find;
  events.find = [this, find](const std::string& path) {
    if (path == home) file(home + "/new/a.part");
    return find(path);
  };
  saves(chromeList, home + "/new");
  started();
  EXPECT_EQ(bitsOf(home + "/new"), asDownloadFolder);
  EXPECT_EQ(bitsOf(home + "/new/a.part"), asUnfinished);
}

TEST_F(MissingDownloadFolder, AboveThePreferencesIsADownloadFolderLikeAnother) {
  saves(chromeList, home);
  started();
  EXPECT_EQ(bitsOf(home), asDownloadFolder);
  EXPECT_EQ(bitsOf(preferences), asPreferences);
  ports.browsers->asked.clear();
  put(home + "/a.part");
  EXPECT_EQ(bitsOf(home + "/a.part"), asUnfinished);
  saves(chromeList, downloads);
  preferencesChange();
  EXPECT_EQ(bitsOf(home), 0u);
  EXPECT_EQ(bitsOf(downloads), asDownloadFolder);
}

}  // namespace
}  // namespace vantile::testing
