// What a `WatchTrash` watches, and the applications and sizes that it reports.

#include <gtest/gtest.h>

#include <stdexcept>
#include <string>

#include "unit/watchers/trash_fixture.h"

namespace vantile::testing {
namespace {

using TrashWatch = Trash;

TEST_F(TrashWatch, ThereIsOneSharedWatcherAndNoneOfTheOthersIsIt) {
  EXPECT_EQ(WatchTrash::singleton(), WatchTrash::singleton());
  EXPECT_NE(WatchTrash::init(), WatchTrash::singleton());
}

TEST_F(TrashWatch, ANewWatcherWatchesNothingAndMakesNoTrash) {
  const auto watcher = WatchTrash::init();
  EXPECT_TRUE(watched().empty());
  EXPECT_TRUE(watcher->currApps().empty());
  EXPECT_EQ(watcher->delegate(), nullptr);
  EXPECT_EQ(utility.folders->trashesMade, 0);
}

TEST_F(TrashWatch, WatchesTheTrashAloneForWrites) {
  folder(trash + "/A.app");
  started();
  EXPECT_EQ(watched(), (Watched{{trash, 0x02}}));
}

TEST_F(TrashWatch, MakesTheTrashBeforeItIsWatched) {
  remove(trash);
  utility.folders->onMakeTrash = [this] { folder(trash); };
  started();
  EXPECT_EQ(utility.folders->trashesMade, 1);
  EXPECT_EQ(bitsOf(trash), 0x02u);
}

TEST_F(TrashWatch, TellsTheSizeAtTheStart) {
  file(trash + "/a", 100);
  file(trash + "/A.app/b", 20);
  watcher()->startWatch(&stop);
  EXPECT_EQ(sizes, Sizes{120});
  settle();
  EXPECT_EQ(sizes.size(), 1u);
}

TEST_F(TrashWatch, TellsTheSizeOfAnEmptyTrashToo) {
  watcher()->startWatch(&stop);
  EXPECT_EQ(sizes, Sizes{0});
}

TEST_F(TrashWatch, WhatIsThereFromTheStartIsKnown) {
  folder(trash + "/A.app");
  started();
  written(trash);
  EXPECT_TRUE(added.empty());
}

TEST_F(TrashWatch, WhatWasFoundIsForgottenAfterTheStart) {
  folder(trash + "/A.app");
  EXPECT_TRUE(started()->currApps().empty());
}

TEST_F(TrashWatch, WhatWasHandedInBeforeTheStartIsForgotten) {
  file(trash + "/A.app");  // a file is no application
  watcher()->fillAppByPath(trash + "/A.app");
  started();
  remove(trash + "/A.app");
  throwAway("/A.app");
  EXPECT_EQ(added, Paths{trash + "/A.app"});
}

TEST_F(TrashWatch, WhatVanishesDuringTheStartIsNotKnown) {
  folder(trash + "/A.app");
  // It is found by the traversal, and gone before it is looked at.
  utility.applications->onAsked = [this](std::string_view name) {
    if (name == "A.app") remove(trash + "/A.app");
  };
  started();
  utility.applications->onAsked = nullptr;
  folder(trash + "/A.app");
  written(trash);
  EXPECT_EQ(added, Paths{trash + "/A.app"});
}

TEST_F(TrashWatch, ANewApplicationIsReportedOnceAndNotWatchedByItself) {
  started();
  throwAway("/A.app");
  written(trash);
  EXPECT_EQ(added, Paths{trash + "/A.app"});
  EXPECT_EQ(watched(), (Watched{{trash, 0x02}}));
}

TEST_F(TrashWatch, ApplicationsInFoldersAreNotLookedFor) {
  started();
  throwAway("/Tools/A.app");
  EXPECT_TRUE(added.empty());
}

TEST_F(TrashWatch, WhatIsNoApplicationIsNotReported) {
  started();
  throwAway("/Tools");
  file(trash + "/A.app.zip");
  file(trash + "/B.app");
  folder(trash + "/.app");  // has no extension
  written(trash);
  EXPECT_TRUE(added.empty());
}

TEST_F(TrashWatch, AnApplicationThatLeavesIsDroppedSilently) {
  started();
  throwAway("/A.app");
  takeAdded();
  remove(trash + "/A.app");
  written(trash);
  EXPECT_TRUE(added.empty());
  throwAway("/A.app");
  EXPECT_EQ(added, Paths{trash + "/A.app"});
}

TEST_F(TrashWatch, AnEmptiedTrashDropsAllAndTellsItsSize) {
  file(trash + "/A.app/data", 50);
  file(trash + "/B.app/data", 50);
  started();
  remove(trash + "/A.app");
  remove(trash + "/B.app");
  written(trash);
  EXPECT_TRUE(added.empty());
  EXPECT_EQ(sizes, Sizes{0});
  throwAway("/A.app", 100);
  EXPECT_EQ(added, Paths{trash + "/A.app"});
}

TEST_F(TrashWatch, TheSizeOfTheStartStaysTheMeasure) {
  file(trash + "/a", 100);
  started();
  file(trash + "/b", 5);
  written(trash);
  written(trash);
  EXPECT_EQ(sizes, (Sizes{105, 105}));
  remove(trash + "/b");
  written(trash);
  EXPECT_EQ(sizes.size(), 2u);  // as at the start
  file(trash + "/c", 1);
  written(trash);
  EXPECT_EQ(sizes, (Sizes{105, 105, 101}));
}

TEST_F(TrashWatch, AWriteThatLeavesTheSizeTellsNone) {
  started();
  throwAway("/A.app", 0);
  EXPECT_EQ(added.size(), 1u);
  EXPECT_TRUE(sizes.empty());
}

TEST_F(TrashWatch, ASecondStartMeasuresAnew) {
  file(trash + "/a", 100);
  const auto watcher = started();
  file(trash + "/b", 5);
  watcher->startWatch(&stop);
  EXPECT_EQ(sizes, Sizes{105});
  written(trash);
  EXPECT_EQ(sizes.size(), 1u);
}

TEST_F(TrashWatch, ApplicationsAreToldBeforeTheSize) {
  started();
  file(trash + "/A.app/data", 3);
  folder(trash + "/B.app");
  written(trash);
  EXPECT_EQ(told, (Paths{trash + "/A.app", trash + "/B.app", "3"}));
}

TEST_F(TrashWatch, WhatTheLatestTraversalFoundCanBeAsked) {
  const auto watcher = started();
  throwAway("/A.app");
  throwAway("/B.app");
  EXPECT_EQ(watcher->currApps(), (Paths{trash + "/A.app", trash + "/B.app"}));
  remove(trash + "/A.app");
  written(trash);
  EXPECT_EQ(watcher->currApps(), Paths{trash + "/B.app"});
}

TEST_F(TrashWatch, WhatIsHandedInIsHeldOnce) {
  watcher()->fillAppByPath("/a");
  watcher()->fillAppByPath("/b");
  watcher()->fillAppByPath("/a");
  EXPECT_EQ(watcher()->currApps(), (Paths{"/a", "/b"}));
}

TEST_F(TrashWatch, ARaisedStopFlagEndsTheSearchAndNotTheMeasuring) {
  file(trash + "/A.app/data", 7);
  stop = 1;
  watcher()->startWatch(&stop);
  EXPECT_EQ(sizes, Sizes{7});
  stop = 0;
  written(trash);
  EXPECT_EQ(takeAdded(), Paths{trash + "/A.app"});  // it was not found at the start
  stop = 1;
  throwAway("/B.app", 3);
  EXPECT_TRUE(added.empty());
  EXPECT_EQ(sizes, (Sizes{7, 10}));
}

TEST_F(TrashWatch, ANullStopFlagNeverStops) {
  watcher()->startWatch(nullptr);
  throwAway("/A.app");
  EXPECT_EQ(added.size(), 1u);
  watcher()->stopWatch();
  EXPECT_TRUE(watched().empty());
}

TEST_F(TrashWatch, WithoutADelegateAllGoesOn) {
  const auto shared = WatchTrash::singleton();
  shared->startWatch(&stop);
  shared->setDelegate(std::make_shared<TrashWatchDelegate>());
  throwAway("/A.app", 1);
  shared->setDelegate(delegate);
  EXPECT_EQ(shared->delegate(), delegate);
  throwAway("/B.app", 1);
  EXPECT_EQ(added, Paths{trash + "/B.app"});
  EXPECT_EQ(sizes, Sizes{2});
}

TEST_F(TrashWatch, WhatTheDelegateThrowsIsLoggedAndTheRestStillTold) {
  started();
  delegate->trashAddedApp = [this](const std::string& path) {
    added.push_back(path);
    throw std::runtime_error("mine");
  };
  folder(trash + "/A.app");
  throwAway("/B.app", 4);
  EXPECT_EQ(added.size(), 2u);
  EXPECT_EQ(sizes, Sizes{4});
  EXPECT_EQ(log.lines, Paths(2, "a delegate threw: mine"));
}

TEST_F(TrashWatch, ATrashThatIsGoneIsEmpty) {
  file(trash + "/A.app/data", 9);
  started();
  remove(trash);
  written(trash);
  EXPECT_EQ(sizes, Sizes{0});
  EXPECT_TRUE(added.empty());
}

}  // namespace
}  // namespace vantile::testing
