// Nothing is reported after a stop, wherever it comes from; and watchers without a queue.

#include <gtest/gtest.h>

#include <cerrno>
#include <string>

#include "vantile/watchers/browser_table.h"

#include "unit/watchers/application_fixture.h"
#include "unit/watchers/download_fixture.h"
#include "unit/watchers/trash_fixture.h"

namespace vantile::testing {
namespace {

using DownloadStop = Downloads;
using ApplicationStop = Applications;
using TrashStop = Trash;

TEST_F(DownloadStop, EndsAllWatchesAndRaisesTheFlag) {
  file(downloads + "/a.part");
  const auto watcher = startedWithChrome();
  ASSERT_EQ(stop, 0);
  watcher->stopWatch();
  EXPECT_TRUE(watched().empty());
  EXPECT_EQ(stop, 1);
}

TEST_F(DownloadStop, MayComeFirstOrTwice) {
  watcher()->stopWatch();
  const auto shared = started();
  shared->stopWatch();
  stop = 0;
  shared->stopWatch();
  EXPECT_EQ(stop, 1);
}

TEST_F(DownloadStop, LetsEventsThatAreOnTheirWayGoBy) {
  const auto other = FSWatchQueue::init();
  file(downloads + "/a.part");
  const auto watcher = startedWithChrome();
  move(downloads + "/a.part", downloads + "/a");
  events.happen(downloads + "/a.part", fileRenamed);
  events.happen(preferences, fileWritten);
  queue.threads->step();
  watcher->stopWatch();
  ports.browsers->asked.clear();
  stop = 0;
  file(downloads + "/a.part");
  file(downloads + "/b.part");
  watcher->WatchQueueReceivedNotificationForPath(*other, WatchQueueWriteNotification, downloads);
  watcher->WatchQueueRenameForPath(*other, downloads + "/a", downloads + "/a.part");
  watcher->WatchQueueDeletedForPath(*other, downloads + "/a.part");
  watcher->WatchQueueRemoveToTrashForPath(*other, trash + "/a", downloads + "/a.part");
  settle();
  EXPECT_TRUE(completed.empty());
  EXPECT_EQ(bitsOf(downloads), 0u);
  EXPECT_EQ(bitsOf(downloads + "/a.part"), 0u);
  EXPECT_EQ(bitsOf(downloads + "/b.part"), 0u);
  EXPECT_TRUE(ports.browsers->asked.empty());
}

TEST_F(DownloadStop, LeavesTheListsAsTheyAre) {
  const auto other = FSWatchQueue::init();
  file(downloads + "/a.part");
  const auto watcher = startedWithChrome();
  watcher->stopWatch();
  watcher->WatchQueueDeletedForPath(*other, downloads);
  watcher->WatchQueueDeletedForPath(*other, downloads + "/a.part");
  stop = 0;
  watcher->startWatch(&stop);
  watcher->WatchQueueRenameForPath(*other, downloads + "/a.part", downloads + "/a.part");
  EXPECT_EQ(completed.size(), 1u);
}

TEST_F(DownloadStop, ReportsNoArchiveThatWaits) {
  file(downloads + "/a.zip");
  const auto watcher = startedWithChrome();
  watcher->notifyDownloadCompletedWithBrowserType(downloads + "/a.zip", unknownBrowserCode);
  loop.advance(std::chrono::seconds(1));
  watcher->stopWatch();
  loop.advance(std::chrono::seconds(5));
  EXPECT_TRUE(completed.empty());
}

TEST_F(DownloadStop, OfAnArchiveThatWaitsHoldsAfterANewStart) {
  file(downloads + "/a.zip");
  watcher()->notifyDownloadCompletedWithBrowserType(downloads + "/a.zip", unknownBrowserCode);
  watcher()->stopWatch();
  watcher()->startWatch(&stop);
  loop.advance(std::chrono::seconds(2));
  EXPECT_TRUE(completed.empty());
}

TEST_F(DownloadStop, ReportsNothingOfSafarisHistory) {
  const auto watcher = started();
  watcher->notifyDownloadCompletedWithBrowserType(downloads + "/x.zip", safariCode);
  auto entry = std::make_shared<Dictionary>();
  entry->set("DownloadEntryPath", "x.zip");
  entry->set("DownloadEntryPostPath", "/x");
  auto list = std::make_shared<Dictionary>();
  list->set("DownloadHistory", std::make_shared<Array>(Array{Value(entry)}));
  ports.lists->lists[history] = list;
  file(history);
  written(safari);
  ASSERT_EQ(workers.waiting.size(), 1u);
  watcher->stopWatch();
  workers.runOne();
  EXPECT_TRUE(completed.empty());
}

TEST_F(DownloadStop, MayComeFromInsideACallOfTheDelegate) {
  file(downloads + "/a.part");
  file(downloads + "/b.part");
  const auto watcher = startedWithChrome();
  delegate->downloadFileCompleted = [&](const auto& path) {
    completed.push_back(path);
    watcher->stopWatch();
  };
  move(downloads + "/a.part", downloads + "/a");
  move(downloads + "/b.part", downloads + "/b");
  events.happen(downloads + "/a.part", fileRenamed);
  events.happen(downloads + "/b.part", fileRenamed);
  settle();
  EXPECT_EQ(completed, Paths{downloads + "/a"});
  EXPECT_EQ(bitsOf(downloads), 0u);
  EXPECT_EQ(bitsOf(downloads + "/a"), 0u);
  EXPECT_EQ(stop, 1);
}

TEST_F(DownloadStop, IsOverAtTheNextStart) {
  const auto watcher = startedWithChrome();
  watcher->stopWatch();
  stop = 0;
  saves(firefoxList, home);
  watcher->startWatch(&stop);
  put(downloads + "/a.part");
  rename(downloads + "/a.part", downloads + "/a");
  EXPECT_EQ(completed, Paths{downloads + "/a"});
}

TEST_F(DownloadStop, WithoutAQueueTheRestWorks) {
  const auto other = FSWatchQueue::init();
  events.queueError = EMFILE;
  file(downloads + "/a.pdf");
  file(downloads + "/b.pdf.part");
  const auto watcher = startedWithChrome();
  watcher->notifyDownloadCompletedWithBrowserType(downloads + "/a.pdf", unknownBrowserCode);
  EXPECT_EQ(completed, Paths{downloads + "/a.pdf"});
  move(downloads + "/b.pdf.part", downloads + "/b.pdf");
  watcher->WatchQueueRenameForPath(*other, downloads + "/b.pdf", downloads + "/b.pdf.part");
  EXPECT_EQ(completed, (Paths{downloads + "/a.pdf", downloads + "/b.pdf"}));
  watcher->stopWatch();
  EXPECT_EQ(stop, 1);
  EXPECT_TRUE(events.opened.empty());
}

TEST_F(ApplicationStop, EndsTheWatchAndRaisesTheFlag) {
  const auto watcher = started();
  watcher->stopWatch();
  EXPECT_TRUE(watched().empty());
  EXPECT_EQ(stop, 1);
  watcher->stopWatch();
}

TEST_F(ApplicationStop, MayComeFirst) {
  watcher()->stopWatch();
  started();
  install("/A.app");
  EXPECT_EQ(added.size(), 1u);
}

TEST_F(ApplicationStop, ForgetsWhatWasKnown) {
  folder(apps + "/A.app");
  const auto watcher = started();
  watcher->stopWatch();
  remove(apps + "/A.app");
  stop = 0;
  watcher->startWatch(&stop);
  install("/A.app");
  EXPECT_EQ(added, Paths{apps + "/A.app"});
}

TEST_F(ApplicationStop, WhatComesMeanwhileIsKnownAtTheNextStart) {
  const auto watcher = started();
  watcher->stopWatch();
  folder(apps + "/A.app");
  stop = 0;
  watcher->startWatch(&stop);
  written(apps);
  EXPECT_TRUE(added.empty());
}

TEST_F(ApplicationStop, LetsEventsThatAreOnTheirWayGoBy) {
  const auto other = FSWatchQueue::init();
  const auto watcher = started();
  folder(apps + "/A.app");
  watcher->stopWatch();
  stop = 0;
  watcher->WatchQueueReceivedNotificationForPath(*other, WatchQueueWriteNotification, apps);
  watcher->WatchQueueRemoveToTrashForPath(*other, trash + "/A.app", apps + "/A.app");
  EXPECT_TRUE(added.empty());
  EXPECT_TRUE(trashed.empty());
}

TEST_F(ApplicationStop, KeepsWhatComesMeanwhileOutOfTheLists) {
  const auto other = FSWatchQueue::init();
  const auto watcher = started();
  watcher->stopWatch();
  stop = 0;
  folder(apps + "/A.app");
  watcher->WatchQueueReceivedNotificationForPath(*other, WatchQueueWriteNotification, apps);
  remove(apps + "/A.app");
  watcher->startWatch(&stop);
  install("/A.app");
  EXPECT_EQ(added, Paths{apps + "/A.app"});
}

TEST_F(ApplicationStop, HoldsBackTheSearchOfAMovedFolder) {
  const auto other = FSWatchQueue::init();
  const auto trashDelegate = std::make_shared<TrashWatchDelegate>();
  trashDelegate->trashAddedApp = [this](const std::string& path) { trashed.push_back(path); };
  WatchTrash::singleton()->setDelegate(trashDelegate);
  folder(trash + "/Tools/A.app");
  const auto watcher = started();
  watcher->stopWatch();
  stop = 0;
  watcher->WatchQueueRemoveToTrashForPath(*other, trash + "/Tools", apps + "/Tools");
  EXPECT_TRUE(trashed.empty());
}

TEST_F(ApplicationStop, KeepsRenamesAndDeletionsOutOfTheLists) {
  const auto other = FSWatchQueue::init();
  const auto watcher = started();
  watcher->stopWatch();
  watcher->WatchQueueRenameForPath(*other, apps + "/B.app", apps + "/A.app");
  stop = 0;
  watcher->startWatch(&stop);
  install("/B.app");
  EXPECT_EQ(added, Paths{apps + "/B.app"});
}

TEST_F(ApplicationStop, MayComeFromInsideACallOfTheDelegate) {
  const auto watcher = started();
  delegate->appAdded = [&](const std::string& path) {
    added.push_back(path);
    watcher->stopWatch();
  };
  folder(apps + "/A.app");
  install("/B.app");
  EXPECT_EQ(added.size(), 1u);
}

TEST_F(ApplicationStop, FromInsideTheTrashWatchersDelegateHoldsBackTheReport) {
  const auto other = FSWatchQueue::init();
  const auto trashDelegate = std::make_shared<TrashWatchDelegate>();
  trashDelegate->trashAddedApp = [this](const std::string&) { watcher()->stopWatch(); };
  WatchTrash::singleton()->setDelegate(trashDelegate);
  folder(trash + "/Tools/A.app");
  started()->WatchQueueRemoveToTrashForPath(*other, trash + "/Tools", apps + "/Tools");
  EXPECT_TRUE(trashed.empty());
}

TEST_F(ApplicationStop, WithoutAQueueTheRestWorks) {
  const auto other = FSWatchQueue::init();
  events.queueError = EMFILE;
  const auto watcher = started();
  folder(apps + "/A.app");
  watcher->WatchQueueReceivedNotificationForPath(*other, WatchQueueWriteNotification, apps);
  EXPECT_EQ(added.size(), 1u);
  watcher->stopWatch();
  EXPECT_EQ(stop, 1);
}

TEST_F(TrashStop, EndsAllWatchesAndRaisesTheFlag) {
  folder(trash + "/A.app");
  const auto watcher = started();
  watcher->notifyMovedApp(trash + "/A.app");
  watcher->stopWatch();
  EXPECT_TRUE(watched().empty());
  EXPECT_EQ(stop, 1);
  watcher->stopWatch();
}

TEST_F(TrashStop, KeepsWhatIsKnown) {
  folder(trash + "/A.app");
  const auto watcher = started();
  watcher->stopWatch();
  remove(trash + "/A.app");
  stop = 0;
  watcher->startWatch(&stop);
  folder(trash + "/A.app");
  written(trash);
  EXPECT_TRUE(added.empty());
}

TEST_F(TrashStop, LetsEventsThatAreOnTheirWayGoBy) {
  const auto other = FSWatchQueue::init();
  const auto watcher = started();
  file(trash + "/A.app/data", 5);
  watcher->stopWatch();
  stop = 0;
  watcher->WatchQueueReceivedNotificationForPath(*other, WatchQueueWriteNotification, trash);
  EXPECT_TRUE(told.empty());
  watcher->startWatch(&stop);
  EXPECT_EQ(told, Paths{"5"});
}

TEST_F(TrashStop, KeepsWhatComesMeanwhileOutOfTheList) {
  const auto other = FSWatchQueue::init();
  const auto watcher = started();
  watcher->stopWatch();
  stop = 0;
  folder(trash + "/A.app");
  watcher->WatchQueueReceivedNotificationForPath(*other, WatchQueueWriteNotification, trash);
  watcher->WatchQueueRenameForPath(*other, trash + "/B.app", trash + "/C.app");
  remove(trash + "/A.app");
  watcher->startWatch(&stop);
  folder(trash + "/A.app");
  folder(trash + "/B.app");
  written(trash);
  EXPECT_EQ(added, (Paths{trash + "/A.app", trash + "/B.app"}));
}

TEST_F(TrashStop, FromInsideACallOfTheDelegateHoldsBackTheSize) {
  const auto watcher = started();
  delegate->trashAddedApp = [&](const std::string&) { watcher->stopWatch(); };
  throwAway("/A.app", 5);
  EXPECT_TRUE(sizes.empty());
}

TEST_F(TrashStop, FromAnotherThreadHoldsBackTheFirstSize) {
  const auto watcher = Trash::watcher();
  file(trash + "/a", 5);
  // As it would be by the time that the size was measured.
  tree.beforeFacts = [&](const std::string&) { watcher->stopWatch(); };
  watcher->startWatch(&stop);
  EXPECT_TRUE(sizes.empty());
}

TEST_F(TrashStop, HoldsBackWhatIsMovedThere) {
  folder(trash + "/Tools/A.app");
  const auto watcher = started();
  watcher->stopWatch();
  stop = 0;
  watcher->moveToTrash(trash + "/Tools");
  watcher->notifyMovedApp(trash + "/Tools/A.app");
  EXPECT_TRUE(added.empty());
  EXPECT_TRUE(watched().empty());
}

TEST_F(TrashStop, MayComeFromInsideACallOfTheDelegate) {
  const auto watcher = started();
  delegate->trashAddedApp = [&](const std::string& path) {
    told.push_back(path);
    watcher->stopWatch();
  };
  file(trash + "/A.app/data", 5);
  folder(trash + "/B.app");
  written(trash);
  EXPECT_EQ(told, Paths{trash + "/A.app"});
  EXPECT_TRUE(watched().empty());
}

TEST_F(TrashStop, WithoutAQueueTheRestWorks) {
  events.queueError = EMFILE;
  file(trash + "/Tools/A.app/data", 5);
  const auto watcher = Trash::watcher();
  watcher->startWatch(&stop);
  watcher->moveToTrash(trash + "/Tools");
  EXPECT_EQ(told, (Paths{"5", trash + "/Tools/A.app"}));
  watcher->stopWatch();
  EXPECT_EQ(stop, 1);
}

}  // namespace
}  // namespace vantile::testing
