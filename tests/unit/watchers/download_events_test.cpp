// What a `WatchDownload` does with each event of its queue.

#include <gtest/gtest.h>

#include <string>

#include "unit/watchers/download_fixture.h"

namespace vantile::testing {
namespace {

/// Chrome saves to `downloads`, where one download is unfinished.
class DownloadEvents : public Downloads {
 protected:
  DownloadEvents() {
    file(film);
    shared = startedWithChrome();
  }
  /// As the queue tells it, from a queue that watches nothing.
  void told(const char* notification, const std::string& path) {
    shared->WatchQueueReceivedNotificationForPath(*other, notification, path);
  }

  const std::string film = downloads + "/film.mp4.crdownload", finished = downloads + "/film.mp4";
  const std::shared_ptr<FSWatchQueue> other = FSWatchQueue::init();
  std::shared_ptr<WatchDownload> shared;
};

TEST_F(DownloadEvents, AWriteInADownloadFolderFindsWhatIsUnfinishedThere) {
  put(downloads + "/a.part");
  EXPECT_EQ(bitsOf(downloads + "/a.part"), asUnfinished);
}

TEST_F(DownloadEvents, WhatIsWatchedAlreadyIsNotWatchedAnew) {
  put(downloads + "/a.part");
  put(downloads + "/b.part");
  EXPECT_EQ(timesOpened(film), 1);
  EXPECT_EQ(timesOpened(downloads + "/a.part"), 1);
}

TEST_F(DownloadEvents, WhatASearchFoundIsForgottenAfterwards) {
  put(downloads + "/a.part");
  remove(downloads + "/a.part");
  shared->WatchQueueRemoveToTrashForPath(*other, trash + "/a.part", downloads + "/a.part");
  written(downloads);
  EXPECT_EQ(timesOpened(downloads + "/a.part"), 1);
}

TEST_F(DownloadEvents, OfASearchWithoutANewFindNothingIsKeptEither) {
  written(downloads);  // finds the film, which is known
  rename(film, finished);
  written(downloads);
  EXPECT_EQ(timesOpened(film), 1);
}

TEST_F(DownloadEvents, AWriteToAPathThatIsGoneEndsItsWatchOnly) {
  remove("/disk/home/Down");
  written(downloads);
  EXPECT_EQ(bitsOf(downloads), 0u);
  EXPECT_TRUE(completed.empty());
  EXPECT_EQ(bitsOf(film), asUnfinished);
}

TEST_F(DownloadEvents, OfAPreferencesFolderThatIsGoneNothingIsRead) {
  ports.browsers->asked.clear();
  remove(preferences);
  written(preferences);
  EXPECT_EQ(bitsOf(preferences), 0u);
  EXPECT_TRUE(ports.browsers->asked.empty());
}

TEST_F(DownloadEvents, OfASafariFolderThatIsGoneNothingIsLookedUp) {
  remove(safari);
  written(safari);
  EXPECT_EQ(bitsOf(safari), 0u);
  EXPECT_TRUE(workers.waiting.empty());
}

TEST_F(DownloadEvents, AnyEventOfAPathThatIsGoneEndsItsWatchInTheQueueThatTells) {
  file(finished + ".part");
  other->addPath(finished + ".part");
  ASSERT_EQ(other->numberOfWatchedPaths(), 1u);
  remove(finished + ".part");
  told(WatchQueueAttributeChangeNotification, finished + ".part");
  EXPECT_EQ(other->numberOfWatchedPaths(), 0u);
}

TEST_F(DownloadEvents, OnlyWritesCount) {
  file(downloads + "/a.part");
  saves(chromeList, home);
  for (const auto* name :
       {WatchQueueRenameNotification, WatchQueueDeleteNotification,
        WatchQueueAttributeChangeNotification, WatchQueueSizeIncreaseNotification,
        WatchQueueLinkCountChangeNotification, WatchQueueAccessRevocationNotification}) {
    told(name, downloads);
    told(name, preferences);
    told(name, safari);
  }
  EXPECT_EQ(timesOpened(downloads + "/a.part"), 0);
  EXPECT_EQ(bitsOf(home), 0u);
  told("WatchQueueFileWrittenToNotification", preferences);
  told("WatchQueueFileWrittenToNotification", downloads);
  EXPECT_EQ(timesOpened(downloads + "/a.part"), 1);
  EXPECT_EQ(timesOpened(home), 1);
}

TEST_F(DownloadEvents, AWriteInThePreferencesFolderIsNoReasonToLookForDownloads) {
  put(preferences + "/a.part");
  EXPECT_EQ(bitsOf(preferences + "/a.part"), 0u);
}

TEST_F(DownloadEvents, NorIsItWhereABrowserSavesThere) {
  saves(firefoxList, preferences);
  preferencesChange();
  put(preferences + "/a.part");
  EXPECT_EQ(bitsOf(preferences + "/a.part"), 0u);
}

TEST_F(DownloadEvents, AWriteInSafarisFolderIsNoReasonToLookForDownloads) {
  ports.browsers->asked.clear();
  put(safari + "/a.part");
  EXPECT_EQ(bitsOf(safari + "/a.part"), 0u);
  EXPECT_TRUE(ports.browsers->asked.empty());
}

TEST_F(DownloadEvents, AnUnfinishedItemThatIsRenamedIsComplete) {
  rename(film, finished);
  EXPECT_EQ(completed, Paths{finished});
}

TEST_F(DownloadEvents, AnUnfinishedItemThatIsRemovedBesideTheFinishedOneIsComplete) {
  file(finished);
  erase(film);
  EXPECT_EQ(completed, Paths{finished});
  EXPECT_EQ(bitsOf(film), 0u);
}

TEST_F(DownloadEvents, OfARemovedItemOnlyTheLastExtensionIsTakenOff) {
  file(downloads + "/report.pdf");
  put(downloads + "/report.pdf.crdownload");
  erase(downloads + "/report.pdf.crdownload");
  EXPECT_EQ(completed, Paths{downloads + "/report.pdf"});
}

TEST_F(DownloadEvents, AnAbandonedDownloadIsNotReported) {
  erase(film);
  EXPECT_TRUE(completed.empty());
}

TEST_F(DownloadEvents, ADownloadIsReportedOnceWhateverHappensToItLater) {
  rename(film, finished);
  EXPECT_EQ(bitsOf(finished), asUnfinished);  // the queue followed it
  EXPECT_EQ(bitsOf(film), 0u);
  rename(finished, downloads + "/better.mp4");
  erase(downloads + "/better.mp4");
  EXPECT_EQ(completed, Paths{finished});
}

TEST_F(DownloadEvents, ADownloadOfTheSameNameIsReportedAgain) {
  rename(film, finished);
  remove(finished);
  put(film);
  rename(film, finished);
  EXPECT_EQ(completed, (Paths{finished, finished}));
}

TEST_F(DownloadEvents, ADownloadHasLeftTheListBeforeItIsReported) {
  delegate->downloadFileCompleted = [this](const auto& path) {
    completed.push_back(path);
    shared->WatchQueueRenameForPath(*other, finished, film);
    shared->WatchQueueDeletedForPath(*other, film);
  };
  rename(film, finished);
  EXPECT_EQ(completed.size(), 1u);
}

TEST_F(DownloadEvents, AnotherDownloadThatTookTheNameMeanwhileIsWatched) {
  move(film, finished);
  file(film);
  happen(film, fileRenamed);
  EXPECT_EQ(completed, Paths{finished});
  EXPECT_EQ(bitsOf(film), asUnfinished);
  remove(film);
  file(film);
  happen(film, fileDeleted);
  EXPECT_EQ(bitsOf(film), asUnfinished);
  rename(film, downloads + "/film 2.mp4");
  EXPECT_EQ(completed, (Paths{finished, finished, downloads + "/film 2.mp4"}));
}

TEST_F(DownloadEvents, AnItemThatIsMovedToTheTrashIsNotReportedAndNotWatched) {
  move(film, trash + "/film.mp4.crdownload");
  file(finished);
  happen(film, fileRenamed);
  EXPECT_EQ(bitsOf(film), 0u);
  happen(film, fileDeleted);
  shared->WatchQueueDeletedForPath(*other, film);
  EXPECT_TRUE(completed.empty());
}

TEST_F(DownloadEvents, AnItemThatIsMovedElsewhereIsNotReported) {
  move(film, home + "/film.mp4");
  happen(film, fileRenamed);
  EXPECT_EQ(bitsOf(film), 0u);
  EXPECT_TRUE(completed.empty());
}

TEST_F(DownloadEvents, AnItemThatWasMovedElsewhereStaysListed) {
  move(film, home + "/film.mp4");
  happen(film, fileRenamed);
  put(film);
  EXPECT_EQ(bitsOf(film), 0u);
}

TEST_F(DownloadEvents, AnotherDownloadThatTookTheNameOfAMovedOneIsWatched) {
  move(film, home + "/film.mp4");
  file(film);
  happen(film, fileRenamed);
  rename(film, finished);
  EXPECT_EQ(completed, Paths{finished});
}

TEST_F(DownloadEvents, WhatIsInNeitherListIsNotReported) {
  file(downloads + "/a.pdf");
  shared->WatchQueueRenameForPath(*other, downloads + "/a.pdf", downloads + "/a.pdf.part");
  shared->WatchQueueDeletedForPath(*other, downloads + "/a.pdf.part");
  shared->WatchQueueRemoveToTrashForPath(*other, trash + "/a.pdf", downloads + "/a.pdf");
  EXPECT_TRUE(completed.empty());
}

TEST_F(DownloadEvents, ARenamedDownloadFolderIsFollowedButNotListedAnyMore) {
  ports.browsers->hasSafari = false;
  move(downloads, home + "/Down2");
  happen(downloads, fileRenamed);
  EXPECT_EQ(bitsOf(home + "/Down2"), asDownloadFolder);
  EXPECT_EQ(bitsOf(downloads), 0u);
  EXPECT_TRUE(completed.empty());
  put(home + "/Down2/a.part");
  EXPECT_EQ(bitsOf(home + "/Down2/a.part"), asUnfinished);
  saves(chromeList, preferences);  // had it been listed, it would go now
  preferencesChange();
  EXPECT_EQ(bitsOf(home + "/Down2"), asDownloadFolder);
}

TEST_F(DownloadEvents, ADeletedDownloadFolderIsWatchedNoLonger) {
  remove(downloads);
  happen(downloads, fileDeleted);
  EXPECT_EQ(bitsOf(downloads), 0u);
  EXPECT_TRUE(completed.empty());
}

TEST_F(DownloadEvents, ADownloadFolderThatIsMovedToTheTrashIsWatchedNoLonger) {
  move(downloads, trash + "/Down");
  happen(downloads, fileRenamed);
  EXPECT_EQ(bitsOf(downloads), 0u);
  EXPECT_EQ(bitsOf(trash + "/Down"), 0u);
  EXPECT_TRUE(completed.empty());
}

/// A folder that one browser saves into is an unfinished download of another.
class FolderThatIsBoth : public DownloadEvents {
 protected:
  FolderThatIsBoth() {
    folder(both);
    saves(firefoxList, both);
    shared->startWatch(&stop);
    file(finished);
  }
  void willBeReported(bool yes) {
    shared->WatchQueueDeletedForPath(*other, both);
    EXPECT_EQ(completed, yes ? Paths{finished} : Paths{});
  }

  const std::string both = downloads + "/film.mp4.part";
};

TEST_F(FolderThatIsBoth, CountsAsADownloadFolderWhenItIsRenamed) {
  shared->WatchQueueRenameForPath(*other, finished, both);
  EXPECT_TRUE(completed.empty());
}

TEST_F(FolderThatIsBoth, CountsAsADownloadFolderAloneWhenItIsDeleted) {
  remove(both);
  willBeReported(false);
  willBeReported(true);  // it was listed as a download folder once, and still is as unfinished
}

TEST_F(FolderThatIsBoth, CountsAsADownloadFolderAloneWhenItIsMovedToTheTrash) {
  move(both, trash + "/film.mp4.part");
  shared->WatchQueueRemoveToTrashForPath(*other, trash + "/film.mp4.part", both);
  EXPECT_EQ(bitsOf(both), 0u);
  willBeReported(true);  // it is still listed as unfinished
}

TEST_F(FolderThatIsBoth, IsForgottenAsUnfinishedAtTheSecondTime) {
  move(both, trash + "/film.mp4.part");
  shared->WatchQueueRemoveToTrashForPath(*other, trash + "/film.mp4.part", both);
  shared->WatchQueueRemoveToTrashForPath(*other, trash + "/film.mp4.part", both);
  willBeReported(false);
}

}  // namespace
}  // namespace vantile::testing
