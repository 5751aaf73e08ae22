// Where the browsers save: what their preferences say, and what follows when they change.

#include <gtest/gtest.h>

#include <string>
#include <utility>
#include <vector>

#include "unit/watchers/download_fixture.h"

namespace vantile::testing {
namespace {

using DownloadPreferences = Downloads;

class OfEachBrowser : public Downloads, public ::testing::WithParamInterface<const char*> {};
INSTANTIATE_TEST_SUITE_P(Browsers, OfEachBrowser,
                         ::testing::Values(safariList, chromeList, firefoxList, operaList));

/// All but Chrome.
class OfMostBrowsers : public OfEachBrowser {};
INSTANTIATE_TEST_SUITE_P(Browsers, OfMostBrowsers,
                         ::testing::Values(safariList, firefoxList, operaList));

TEST_F(DownloadPreferences, AreReadInTheOrderOfTheBrowsers) {
  watcher()->profileMonitor();
  const std::vector<std::pair<std::string, std::string>> expected = {
      {"/disk/home/Prefs/com.apple.Safari.plist", "DownloadsPath"},
      {"/disk/home/Prefs/com.google.Chrome.plist", "NSNavLastRootDirectory"},
      {"/disk/home/Prefs/org.mozilla.firefox.plist", "NSNavLastRootDirectory"},
      {"/disk/home/Prefs/com.operasoftware.Opera.plist", "NSNavLastRootDirectory"}};
  EXPECT_EQ(ports.browsers->asked, expected);
}

TEST_F(DownloadPreferences, WithoutAnyBrowserOnlyThePreferencesAndSafarisFolderAreWatched) {
  started();
  EXPECT_EQ(watched(), (Watched{{preferences, asPreferences}, {safari, asPreferences}}));
}

TEST_P(OfEachBrowser, GiveTheFolderThatIsWatched) {
  folder(home + "/Desk");
  saves(GetParam(), home + "/Desk");
  started();
  EXPECT_EQ(watched(), (Watched{{preferences, asPreferences},
                                {safari, asPreferences},
                                {home + "/Desk", asDownloadFolder}}));
}

TEST_P(OfEachBrowser, WithoutTheKeyMeanTheUsersDownloads) {
  saves(GetParam(), std::nullopt);
  started();
  EXPECT_EQ(bitsOf(downloads), asDownloadFolder);
}

TEST_P(OfEachBrowser, StoreAFolderOfTheHomeWithATilde) {
  folder(home + "/Desk");
  saves(GetParam(), "~/Desk");
  started();
  EXPECT_EQ(bitsOf(home + "/Desk"), asDownloadFolder);
}

TEST_F(DownloadPreferences, OnlyATildeAndASlashMeanTheHome) {
  saves(chromeList, "~");
  saves(firefoxList, "~ada/Desk");
  saves(operaList, "/disk/~/Desk");
  started();
  for (const auto* stored : {"~", "~ada/Desk", "/disk/~/Desk"})
    EXPECT_EQ(timesOpened(stored), 1) << stored;
}

TEST_F(DownloadPreferences, TwoBrowsersThatShareAFolderGiveOneWatch) {
  for (const auto* list : {safariList, chromeList, firefoxList, operaList}) saves(list, "~/Down");
  file(downloads + "/a.part");
  started();
  EXPECT_EQ(bitsOf(downloads), asDownloadFolder);
  EXPECT_EQ(timesOpened(downloads), 1);
  EXPECT_EQ(timesOpened(downloads + "/a.part"), 1);
}

TEST_P(OfEachBrowser, ThatComeLaterAreFollowed) {
  started();
  saves(GetParam(), downloads);
  preferencesChange();
  EXPECT_EQ(bitsOf(downloads), asDownloadFolder);
}

TEST_P(OfEachBrowser, ThatNameAnotherFolderAreFollowed) {
  folder(home + "/Desk");
  saves(GetParam(), downloads);
  started();
  saves(GetParam(), "~/Desk");
  preferencesChange();
  EXPECT_EQ(bitsOf(downloads), 0u);
  EXPECT_EQ(bitsOf(home + "/Desk"), asDownloadFolder);
}

TEST_P(OfEachBrowser, ThatGoBackToAFolderAreFollowedThere) {
  folder(home + "/Desk");
  saves(GetParam(), downloads);
  started();
  saves(GetParam(), "~/Desk");
  preferencesChange();
  saves(GetParam(), downloads);
  preferencesChange();
  EXPECT_EQ(bitsOf(downloads), asDownloadFolder);
  EXPECT_EQ(bitsOf(home + "/Desk"), 0u);
}

TEST_P(OfEachBrowser, ThatStayTheSameChangeNothing) {
  saves(GetParam(), downloads);
  started();
  const auto opened = events.opened.size();
  preferencesChange();
  EXPECT_EQ(events.opened.size(), opened);
  EXPECT_EQ(bitsOf(downloads), asDownloadFolder);
}

TEST_P(OfMostBrowsers, ThatGoEndTheWatch) {
  saves(GetParam(), downloads);
  started();
  lacks(GetParam());
  preferencesChange();
  EXPECT_EQ(watched(), (Watched{{preferences, asPreferences}, {safari, asPreferences}}));
}

TEST_P(OfMostBrowsers, ThatGoLeaveTheFoldersOfTheOthers) {
  folder(home + "/Desk");
  saves(GetParam(), downloads);
  saves(chromeList, home + "/Desk");
  started();
  lacks(GetParam());
  preferencesChange();
  EXPECT_EQ(bitsOf(downloads), 0u);
  EXPECT_EQ(bitsOf(home + "/Desk"), asDownloadFolder);
}

TEST_F(DownloadPreferences, OfChromeThatGoLeaveItsFolderWatchedAtFirst) {
  startedWithChrome();
  lacks(chromeList);
  preferencesChange();
  EXPECT_EQ(bitsOf(downloads), asDownloadFolder);
}

TEST_P(OfMostBrowsers, ThatChangeTakeAlongThatChromesWent) {
  folder(home + "/Desk");
  startedWithChrome();
  lacks(chromeList);
  preferencesChange();
  saves(GetParam(), home + "/Desk");
  preferencesChange();
  EXPECT_EQ(bitsOf(downloads), 0u);
  EXPECT_EQ(bitsOf(home + "/Desk"), asDownloadFolder);
}

TEST_F(DownloadPreferences, OfChromeThatComeBackAreAChange) {
  startedWithChrome();
  lacks(chromeList);
  preferencesChange();
  folder(home + "/Desk");
  saves(chromeList, home + "/Desk");
  preferencesChange();
  EXPECT_EQ(bitsOf(downloads), 0u);
  EXPECT_EQ(bitsOf(home + "/Desk"), asDownloadFolder);
}

TEST_F(DownloadPreferences, AFolderThatAnotherBrowserStillUsesStaysWatched) {
  saves(firefoxList, downloads);
  startedWithChrome();
  lacks(firefoxList);
  preferencesChange();
  EXPECT_EQ(bitsOf(downloads), asDownloadFolder);
  EXPECT_EQ(timesOpened(downloads), 1);
}

TEST_F(DownloadPreferences, AnEmptyFolderCountsAsAChangeEachTime) {
  saves(firefoxList, "");
  startedWithChrome();
  lacks(chromeList);  // not noticed by itself
  preferencesChange();
  EXPECT_EQ(bitsOf(downloads), 0u);
}

TEST_F(DownloadPreferences, AChangeThatWasReadBeforeIsNoneAtTheNextReading) {
  folder(home + "/Desk");
  const auto watcher = startedWithChrome();
  saves(chromeList, home + "/Desk");
  watcher->profileMonitor();
  preferencesChange();
  EXPECT_EQ(bitsOf(home + "/Desk"), 0u);
  EXPECT_EQ(bitsOf(downloads), asDownloadFolder);
  saves(operaList, home + "/Desk");
  preferencesChange();
  EXPECT_EQ(bitsOf(home + "/Desk"), asDownloadFolder);
  EXPECT_EQ(bitsOf(downloads), 0u);
}

TEST_F(DownloadPreferences, AFollowedChangeIsNotFollowedTwice) {
  folder(home + "/Desk");
  const auto watcher = startedWithChrome();
  saves(chromeList, home + "/Desk");
  preferencesChange();
  const auto opened = events.opened.size();
  watcher->profileMonitor();  // nothing new, and the change of before is over
  preferencesChange();
  EXPECT_EQ(events.opened.size(), opened);
}

TEST_F(DownloadPreferences, ANewFolderIsLookedThroughAtItsNextChangeOnly) {
  const auto early = home + "/Desk/early.crdownload", late = home + "/Desk/late.crdownload";
  file(early);
  startedWithChrome();
  saves(chromeList, home + "/Desk");
  preferencesChange();
  EXPECT_EQ(bitsOf(home + "/Desk"), asDownloadFolder);
  EXPECT_EQ(bitsOf(early), 0u);
  put(late);
  EXPECT_EQ(bitsOf(early), asUnfinished);
  EXPECT_EQ(bitsOf(late), asUnfinished);
}

TEST_F(DownloadPreferences, WhatIsUnfinishedInAFolderThatIsNotUsedAnyMoreIsStillReported) {
  folder(home + "/Desk");
  startedWithChrome();
  put(downloads + "/film.mp4.crdownload");
  saves(chromeList, home + "/Desk");
  preferencesChange();
  rename(downloads + "/film.mp4.crdownload", downloads + "/film.mp4");
  EXPECT_EQ(completed, Paths{downloads + "/film.mp4"});
}

TEST_F(DownloadPreferences, AreReadOnceForAChange) {
  startedWithChrome();
  ports.browsers->asked.clear();
  preferencesChange();
  EXPECT_EQ(ports.browsers->asked.size(), 4u);
}

}  // namespace
}  // namespace vantile::testing
