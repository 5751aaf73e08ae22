// The folders besides the user's own in which browsers keep their preferences.

#include <gtest/gtest.h>

#include <string>

#include "unit/watchers/download_fixture.h"

namespace vantile::testing {
namespace {

/// Where browsers keep their preferences elsewhere, too.
class PreferenceFolders : public Downloads {
 protected:
  PreferenceFolders() { ports.browsers->folders = {extra, home + "/opera/profile"}; }

  const std::string extra = home + "/firefox";
};

TEST_F(PreferenceFolders, AreWatchedLikeTheUsersOwnFolder) {
  folder(extra);
  folder(home + "/opera/profile");
  started();
  EXPECT_EQ(watched(), (Watched{{preferences, asPreferences},
                                {safari, asPreferences},
                                {extra, asPreferences},
                                {home + "/opera/profile", asPreferences}}));
}

TEST_F(PreferenceFolders, AreFollowedLikeTheUsersOwnFolder) {
  folder(extra);
  started();
  saves(firefoxList, downloads);
  written(extra);
  EXPECT_EQ(bitsOf(downloads), asDownloadFolder);
}

TEST_F(PreferenceFolders, AreNoReasonToLookForDownloads) {
  folder(extra);
  started();
  put(extra + "/a.part");
  EXPECT_EQ(bitsOf(extra + "/a.part"), 0u);
}

TEST_F(PreferenceFolders, ThatAreMissingAreAwaitedInTheNearestFolderAbove) {
  folder(home + "/opera");
  started();
  EXPECT_EQ(bitsOf(home), asPreferences);
  EXPECT_EQ(bitsOf(home + "/opera"), asPreferences);
  EXPECT_EQ(bitsOf(extra), 0u);
}

TEST_F(PreferenceFolders, ThatAppearAreReadAndWatched) {
  folder(home + "/opera/profile");
  started();
  folder(extra);
  saves(firefoxList, downloads);
  written(home);
  EXPECT_EQ(bitsOf(downloads), asDownloadFolder);
  EXPECT_EQ(bitsOf(extra), asPreferences);
  EXPECT_EQ(bitsOf(home), 0u);
}

TEST_F(PreferenceFolders, MayBeOthersEachTime) {
  folder(extra);
  folder(home + "/opera/profile");
  started();
  ports.browsers->folders = {home + "/profile2"};
  folder(home + "/profile2");
  written(extra);
  EXPECT_EQ(bitsOf(extra), 0u);
  EXPECT_EQ(bitsOf(home + "/profile2"), asPreferences);
  EXPECT_EQ(bitsOf(preferences), asPreferences);
}

TEST_F(PreferenceFolders, MayBeTheUsersOwnFolder) {
  ports.browsers->folders = {preferences, preferences + "/firefox"};
  started();
  EXPECT_EQ(watched(), (Watched{{preferences, asPreferences}, {safari, asPreferences}}));
  ports.browsers->folders = {};
  preferencesChange();
  EXPECT_EQ(bitsOf(preferences), asPreferences);
}

TEST_F(PreferenceFolders, ThatAreDownloadFoldersTooAreReadAndLookedThrough) {
  saves(firefoxList, extra);
  folder(extra);
  started();
  EXPECT_EQ(bitsOf(extra), asDownloadFolder);
  saves(chromeList, downloads);
  put(extra + "/a.part");
  EXPECT_EQ(bitsOf(downloads), asDownloadFolder);
  EXPECT_EQ(bitsOf(extra + "/a.part"), asUnfinished);
}

TEST_F(PreferenceFolders, ThatBecomeDownloadFoldersAreWatchedForMore) {
  folder(extra);
  started();
  saves(firefoxList, extra);
  written(extra);
  EXPECT_EQ(bitsOf(extra), asDownloadFolder);
  put(extra + "/a.part");
  EXPECT_EQ(bitsOf(extra + "/a.part"), asUnfinished);
}

TEST_F(PreferenceFolders, ThatAreDownloadFoldersNoMoreAreStillFollowed) {
  saves(firefoxList, extra);
  folder(extra);
  started();
  saves(firefoxList, downloads);
  written(extra);
  EXPECT_EQ(bitsOf(extra), asPreferences);
  saves(firefoxList, home);
  written(extra);
  EXPECT_EQ(bitsOf(home), asDownloadFolder);
}

TEST_F(PreferenceFolders, OfTheUserThatAreMissingAreAwaited) {
  ports.browsers->folders = {preferences + "/firefox"};
  remove(preferences);
  started();
  EXPECT_EQ(bitsOf(home), asPreferences);
  folder(preferences);
  written(home);
  EXPECT_EQ(bitsOf(preferences), asPreferences);
  folder(preferences + "/firefox");
  saves(firefoxList, downloads);
  preferencesChange();
  EXPECT_EQ(bitsOf(preferences + "/firefox"), asPreferences);
  EXPECT_EQ(bitsOf(downloads), asDownloadFolder);
}

TEST_F(PreferenceFolders, OfTheUserThatGoAreAwaited) {
  ports.browsers->folders = {};
  started();
  remove(preferences);
  preferencesChange();
  EXPECT_EQ(bitsOf(home), asPreferences);
  folder(preferences);
  saves(firefoxList, downloads);
  written(home);
  EXPECT_EQ(bitsOf(preferences), asPreferences);
  EXPECT_EQ(bitsOf(downloads), asDownloadFolder);
}

TEST_F(PreferenceFolders, ThatAreReplacedAreWatchedAnew) {
  folder(extra);
  folder(home + "/opera/profile");
  started();
  remove(extra);
  written(extra);
  EXPECT_EQ(bitsOf(extra), 0u);
  EXPECT_EQ(bitsOf(home), asPreferences);
  folder(extra);
  written(home);
  EXPECT_EQ(bitsOf(extra), asPreferences);
}

TEST_F(PreferenceFolders, AreWatchedAgainAfterAStop) {
  folder(extra);
  folder(home + "/opera/profile");
  const auto watcher = started();
  watcher->stopWatch();
  EXPECT_TRUE(watched().empty());
  watcher->startWatch(&stop);
  EXPECT_EQ(bitsOf(extra), asPreferences);
  EXPECT_EQ(bitsOf(home + "/opera/profile"), asPreferences);
}

}  // namespace
}  // namespace vantile::testing
