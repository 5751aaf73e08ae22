// What a `WatchDownload` watches from the start, and again after a stop.

#include <gtest/gtest.h>

#include <cerrno>
#include <string>

#include "unit/watchers/download_fixture.h"

namespace vantile::testing {
namespace {

using DownloadStart = Downloads;

TEST_F(DownloadStart, ThereIsOneSharedWatcherAndNoneOfTheOthersIsIt) {
  EXPECT_EQ(WatchDownload::singleton(), WatchDownload::singleton());
  EXPECT_NE(WatchDownload::init(), WatchDownload::singleton());
  EXPECT_NE(WatchDownload::init(), WatchDownload::init());
}

TEST_F(DownloadStart, ANewWatcherWatchesNothingAndAsksNobody) {
  saves(chromeList, downloads);
  const auto watcher = WatchDownload::init();
  EXPECT_TRUE(watched().empty());
  EXPECT_TRUE(ports.browsers->asked.empty());
  EXPECT_EQ(watcher->delegate(), nullptr);
  EXPECT_EQ(events.queues.size(), 1u);
}

TEST_F(DownloadStart, ThePreferencesFolderIsWatchedForWrites) {
  started();
  EXPECT_EQ(bitsOf(preferences), 0x02u);
}

TEST_F(DownloadStart, SafarisFolderIsWatchedForWritesWhereThereIsOne) {
  started();
  EXPECT_EQ(bitsOf(safari), 0x02u);
}

TEST_F(DownloadStart, WithoutASafariNoFolderOfItIsWatched) {
  ports.browsers->hasSafari = false;
  started();
  EXPECT_EQ(watched(), (Watched{{preferences, asPreferences}}));
  EXPECT_EQ(timesOpened(safari), 0);
}

TEST_F(DownloadStart, WhatIsUnfinishedInADownloadFolderIsWatchedForItsEndAndANewName) {
  const auto desk = home + "/Desk";
  for (const auto* name : {"/a.download", "/b.crdownload", "/c.part", "/d.opdownload"})
    file(downloads + name);
  folder(desk + "/e.download");
  saves(safariList, desk);
  startedWithChrome();
  for (const auto* name : {"/a.download", "/b.crdownload", "/c.part", "/d.opdownload"})
    EXPECT_EQ(bitsOf(downloads + name), 0x21u) << name;
  EXPECT_EQ(bitsOf(desk + "/e.download"), 0x21u);
}

TEST_F(DownloadStart, WhatIsFinishedOrFurtherDownIsNotWatched) {
  file(downloads + "/a.zip");
  file(downloads + "/part");
  file(downloads + "/.part");
  file(downloads + "/below/b.part");
  startedWithChrome();
  EXPECT_EQ(watched(), (Watched{{preferences, asPreferences},
                                {safari, asPreferences},
                                {downloads, asDownloadFolder}}));
}

TEST_F(DownloadStart, NothingThatIsThereFromTheStartIsReported) {
  file(downloads + "/a.part");
  file(downloads + "/b.pdf");
  startedWithChrome();
  settle();
  EXPECT_TRUE(completed.empty());
}

TEST_F(DownloadStart, ARaisedStopFlagEndsTheSearchButNotTheWatch) {
  file(downloads + "/a.part");
  stop = 1;
  startedWithChrome();
  EXPECT_EQ(bitsOf(downloads), asDownloadFolder);
  EXPECT_EQ(bitsOf(downloads + "/a.part"), 0u);
  stop = 0;
  written(downloads);
  EXPECT_EQ(bitsOf(downloads + "/a.part"), asUnfinished);
}

TEST_F(DownloadStart, ANullStopFlagNeverStops) {
  file(downloads + "/a.part");
  saves(chromeList, downloads);
  watcher()->startWatch(nullptr);
  EXPECT_EQ(bitsOf(downloads + "/a.part"), asUnfinished);
  watcher()->stopWatch();
  EXPECT_TRUE(watched().empty());
}

TEST_F(DownloadStart, TheStopFlagIsReadInLaterSearchesToo) {
  startedWithChrome();
  stop = 1;
  put(downloads + "/a.part");
  EXPECT_EQ(bitsOf(downloads + "/a.part"), 0u);
}

TEST_F(DownloadStart, WhatWasFoundBeforeIsForgottenWhenTheSearchBegins) {
  file(home + "/a.part");
  watcher()->fillDownloadPath(home + "/a.part");
  startedWithChrome();
  written(downloads);
  EXPECT_EQ(bitsOf(home + "/a.part"), 0u);
}

TEST_F(DownloadStart, AgainWithoutAChangeOfPreferencesLeavesTheDownloadFoldersAlone) {
  const auto watcher = startedWithChrome();
  watcher->stopWatch();
  watcher->startWatch(&stop);
  EXPECT_EQ(watched(), (Watched{{preferences, asPreferences}, {safari, asPreferences}}));
}

TEST_F(DownloadStart, AgainAfterAChangeWatchesAllFoldersAnewAndLooksThroughThem) {
  const auto desk = home + "/Desk";
  folder(desk);
  const auto watcher = startedWithChrome();
  watcher->stopWatch();
  stop = 0;
  file(downloads + "/a.part");
  file(desk + "/b.part");
  saves(firefoxList, desk);
  watcher->startWatch(&stop);
  EXPECT_EQ(bitsOf(downloads), asDownloadFolder);
  EXPECT_EQ(bitsOf(desk), asDownloadFolder);
  EXPECT_EQ(bitsOf(downloads + "/a.part"), asUnfinished);
  EXPECT_EQ(bitsOf(desk + "/b.part"), asUnfinished);
}

TEST_F(DownloadStart, AgainWithoutAStopDropsFoldersThatAreNotUsedAnyMore) {
  const auto desk = home + "/Desk";
  folder(desk);
  saves(firefoxList, desk);
  const auto watcher = startedWithChrome();
  lacks(firefoxList);
  watcher->startWatch(&stop);
  EXPECT_EQ(bitsOf(desk), 0u);
  EXPECT_EQ(bitsOf(downloads), asDownloadFolder);
  put(desk + "/a.part");
  EXPECT_EQ(bitsOf(desk + "/a.part"), 0u);
  saves(firefoxList, desk);
  preferencesChange();
  EXPECT_EQ(bitsOf(desk), asDownloadFolder);
}

TEST_F(DownloadStart, AgainWithoutAnyBrowserLeftKeepsTheOldFolders) {
  saves(firefoxList, downloads);
  const auto watcher = started();
  lacks(firefoxList);
  watcher->startWatch(&stop);
  EXPECT_EQ(bitsOf(downloads), asDownloadFolder);
  saves(firefoxList, home);
  preferencesChange();  // they are still listed, and go now
  EXPECT_EQ(bitsOf(downloads), 0u);
}

TEST_F(DownloadStart, AgainDoesNotWatchAnewWhatWasListedAsUnfinishedBeforeTheStop) {
  file(downloads + "/old.part");
  const auto watcher = startedWithChrome();
  watcher->stopWatch();
  file(downloads + "/new.part");
  stop = 0;
  saves(chromeList, "~/Desk");
  saves(firefoxList, downloads);
  watcher->startWatch(&stop);
  EXPECT_EQ(bitsOf(downloads), asDownloadFolder);
  EXPECT_EQ(bitsOf(downloads + "/new.part"), asUnfinished);
  EXPECT_EQ(bitsOf(downloads + "/old.part"), 0u);
}

TEST_F(DownloadStart, WhatCouldNotBeWatchedIsTriedAgain) {
  startedWithChrome();
  events.openError = EMFILE;
  put(downloads + "/a.part");
  ASSERT_EQ(bitsOf(downloads + "/a.part"), 0u);
  events.openError = 0;
  written(downloads);
  EXPECT_EQ(bitsOf(downloads + "/a.part"), asUnfinished);
}

TEST_F(DownloadStart, AgainTakesTheFlagThatIsGivenThen) {
  std::int32_t second = 0;
  const auto watcher = startedWithChrome();
  watcher->startWatch(&second);
  watcher->stopWatch();
  EXPECT_EQ(stop, 0);
  EXPECT_EQ(second, 1);
}

TEST_F(DownloadStart, AReadingThatTheHostAskedForBeforeTakesTheChangeAway) {
  saves(chromeList, downloads);
  watcher()->profileMonitor();
  started();
  EXPECT_EQ(watched(), (Watched{{preferences, asPreferences}, {safari, asPreferences}}));
}

TEST_F(DownloadStart, AFolderThatIsMissingIsLoggedAndLeavesTheRestWatched) {
  saves(firefoxList, home + "/gone");
  startedWithChrome();
  EXPECT_EQ(bitsOf(downloads), asDownloadFolder);
  ASSERT_EQ(log.lines.size(), 1u);
  EXPECT_NE(log.lines.at(0).find("tried to add the path /disk/home/gone to"), std::string::npos);
}

TEST_F(DownloadStart, NamesThatAreNotUTF8ArePaths) {
  const std::string odd = downloads + "/\xFF\xFE caf\xE9.part";
  file(odd);
  startedWithChrome();
  EXPECT_EQ(bitsOf(odd), asUnfinished);
  rename(odd, downloads + "/\xFF.pdf");
  EXPECT_EQ(completed, Paths{downloads + "/\xFF.pdf"});
}

TEST_F(DownloadStart, AFolderWhoseNameIsNotUTF8IsWatched) {
  const std::string odd = home + "/\xFF\xC0";
  folder(odd);
  saves(firefoxList, odd);
  started();
  put(odd + "/a.part");
  EXPECT_EQ(bitsOf(odd), asDownloadFolder);
  EXPECT_EQ(bitsOf(odd + "/a.part"), asUnfinished);
}

}  // namespace
}  // namespace vantile::testing
