// Safari's download history: when it is looked through, and what is reported from it.

#include <gtest/gtest.h>

#include <array>
#include <string>
#include <utility>
#include <vector>

#include "vantile/watchers/browser_table.h"

#include "unit/watchers/download_fixture.h"

namespace vantile::testing {
namespace {

/// Safari's archive x.zip waits for its final name.
class SafariHistory : public Downloads {
 protected:
  SafariHistory() { waitsFor("/x.zip"); }

  void waitsFor(const std::string& name) {
    watcher()->notifyDownloadCompletedWithBrowserType(downloads + name, safariCode);
  }
  static std::shared_ptr<Dictionary> entry(std::optional<std::string> path,
                                           std::optional<std::string> postPath) {
    auto made = std::make_shared<Dictionary>();
    made->set("DownloadEntryPath", path);
    made->set("DownloadEntryPostPath", postPath);
    return made;
  }
  /// The history that is read; Downloads.plist exists with it.
  void holds(std::vector<Value> entries) {
    auto list = std::make_shared<Dictionary>();
    list->set("DownloadHistory", std::make_shared<Array>(std::move(entries)));
    isRead(list);
  }
  void isRead(std::shared_ptr<Dictionary> list) {
    file(history);
    ports.lists->lists[history] = std::move(list);
  }
  /// Looks the history through, as after a change of it.
  void lookUp() {
    watcher()->setModifyDate(nextDate());
    while (!workers.waiting.empty()) workers.runOne();
  }
  /// A date at a higher address than those before.
  std::shared_ptr<const Date> nextDate() { return dateAt(next_++); }
  std::shared_ptr<const Date> dateAt(std::size_t place) { return {dates_, &dates_->at(place)}; }

 private:
  const std::shared_ptr<std::array<Date, 16>> dates_ = std::make_shared<std::array<Date, 16>>();
  std::size_t next_ = 0;
};

using ModifyDate = SafariHistory;

TEST_F(ModifyDate, IsTakenWhereNoneIsKnown) {
  file(history);
  watcher()->setModifyDate(dateAt(0));
  EXPECT_EQ(workers.waiting.size(), 1u);
}

TEST_F(ModifyDate, IsTakenWhereTheKnownOneHasALowerAddress) {
  file(history);
  for (const std::size_t place : {1u, 2u, 9u}) watcher()->setModifyDate(dateAt(place));
  EXPECT_EQ(workers.waiting.size(), 3u);
}

TEST_F(ModifyDate, AtTheSameOrALowerAddressIsNotTaken) {
  file(history);
  watcher()->setModifyDate(dateAt(5));
  for (const std::size_t place : {5u, 4u, 0u}) watcher()->setModifyDate(dateAt(place));
  EXPECT_EQ(workers.waiting.size(), 1u);
}

TEST_F(ModifyDate, NilIsNotTakenForOneThatIsKnown) {
  file(history);
  watcher()->setModifyDate(dateAt(5));
  watcher()->setModifyDate(nullptr);
  EXPECT_EQ(workers.waiting.size(), 1u);
}

TEST_F(ModifyDate, IsComparedByItsAddressAndNotByItsTime) {
  file(history);
  const auto pair = std::make_shared<std::array<Date, 2>>();
  (*pair)[0].time += std::chrono::hours(1);
  watcher()->setModifyDate({pair, &(*pair)[0]});
  watcher()->setModifyDate({pair, &(*pair)[1]});
  EXPECT_EQ(workers.waiting.size(), 2u);
}

TEST_F(ModifyDate, ThatIsNotTakenLeavesTheKnownOne) {
  file(history);
  watcher()->setModifyDate(dateAt(5));
  watcher()->setModifyDate(dateAt(1));
  watcher()->setModifyDate(dateAt(3));
  EXPECT_EQ(workers.waiting.size(), 1u);
}

TEST_F(ModifyDate, IsTakenWithoutALookUpWhereThereIsNoHistory) {
  watcher()->setModifyDate(dateAt(5));
  EXPECT_TRUE(workers.waiting.empty());
  file(history);
  watcher()->setModifyDate(dateAt(4));
  EXPECT_TRUE(workers.waiting.empty());
  watcher()->setModifyDate(dateAt(6));
  EXPECT_EQ(workers.waiting.size(), 1u);
}

TEST_F(ModifyDate, IsNilAfterAStartWithoutAHistory) {
  watcher()->setModifyDate(dateAt(5));
  started();
  file(history);
  watcher()->setModifyDate(dateAt(0));
  EXPECT_EQ(workers.waiting.size(), 1u);
}

TEST_F(ModifyDate, IsTheHistorysAfterAStart) {
  file(history);
  started();
  watcher()->setModifyDate(nullptr);
  EXPECT_TRUE(workers.waiting.empty());
}

TEST_F(ModifyDate, IsReadAtAWriteInSafarisFolder) {
  started();
  file(history);
  EXPECT_TRUE(workers.waiting.empty());
  written(safari);
  EXPECT_EQ(workers.waiting.size(), 1u);
  watcher()->setModifyDate(nullptr);
  EXPECT_EQ(workers.waiting.size(), 1u);
}

TEST_F(SafariHistory, IsLookedThroughOnABackgroundThread) {
  started();
  holds({entry("/tmp/x.zip.download/x.zip", downloads + "/x")});
  written(safari);
  EXPECT_TRUE(completed.empty());
  ASSERT_EQ(workers.waiting.size(), 1u);
  workers.runOne();
  EXPECT_EQ(completed, Paths{downloads + "/x"});
}

TEST_F(SafariHistory, IsFoundByTheNameAnywhereInThePathWhileDownloading) {
  holds({entry("/elsewhere/y.zip", "/y"), entry("/tmp/my x.zip.download/data", "/d/x")});
  lookUp();
  EXPECT_EQ(completed, Paths{"/d/x"});
}

TEST_F(SafariHistory, TheFirstEntryThatMatchesCounts) {
  holds({entry("/a/x.zip", "/first"), entry("/b/x.zip", "/second")});
  lookUp();
  EXPECT_EQ(completed, Paths{"/first"});
}

TEST_F(SafariHistory, ItIsTheWholeLastComponentThatIsLookedFor) {
  holds({entry(downloads + "/x.dmg", "/wrong"), entry("x.ZIP", "/wrong"), entry("x.zi", "/wrong")});
  lookUp();
  EXPECT_TRUE(completed.empty());
}

TEST_F(SafariHistory, AFinalPathOfTheHomeIsCompleted) {
  holds({entry("x.zip", "~/Down/x")});
  lookUp();
  EXPECT_EQ(completed, Paths{home + "/Down/x"});
}

TEST_F(SafariHistory, OnlyATildeAndASlashMeanTheHome) {
  waitsFor("/y.zip");
  holds({entry("x.zip", "~"), entry("y.zip", "~ada/y")});
  lookUp();
  EXPECT_EQ(completed, (Paths{"~", "~ada/y"}));
}

TEST_F(SafariHistory, AnEntryWithoutAFinalPathIsReportedAsNil) {
  holds({entry("x.zip", std::nullopt)});
  lookUp();
  EXPECT_EQ(completed, Paths{std::nullopt});
}

TEST_F(SafariHistory, AllThatWaitAreLookedForInTheirOrder) {
  waitsFor("/b.zip");
  waitsFor("/a.zip");
  holds({entry("a.zip", "/a"), entry("b.zip", "/b"), entry("x.zip", "/x")});
  lookUp();
  EXPECT_EQ(completed, (Paths{"/x", "/b", "/a"}));
}

TEST_F(SafariHistory, WhatWaitsIsReportedOnce) {
  holds({entry("x.zip", "/x")});
  lookUp();
  lookUp();
  EXPECT_EQ(completed, Paths{"/x"});
}

TEST_F(SafariHistory, WhatIsNotFoundIsDropped) {
  holds({entry("y.zip", "/y")});
  lookUp();
  holds({entry("x.zip", "/x")});
  lookUp();
  EXPECT_TRUE(completed.empty());
}

TEST_F(SafariHistory, WhatWaitsTwiceIsReportedTwice) {
  waitsFor("/x.zip");
  holds({entry("x.zip", "/x")});
  lookUp();
  EXPECT_EQ(completed, (Paths{"/x", "/x"}));
}

TEST_F(SafariHistory, AZipWhoseFolderWasFoundDoesNotWait) {
  folder(downloads + "/y");
  waitsFor("/y.zip");
  completed.clear();
  holds({entry("y.zip", "/y")});
  lookUp();
  EXPECT_TRUE(completed.empty());
}

TEST_F(SafariHistory, ThatCantBeReadLeavesWhatWaits) {
  isRead(nullptr);
  lookUp();
  EXPECT_TRUE(completed.empty());
  holds({entry("x.zip", "/x")});
  lookUp();
  EXPECT_EQ(completed, Paths{"/x"});
}

TEST_F(SafariHistory, OfAnotherShapeThanItShouldBeHasNothing) {
  auto odd = std::make_shared<Dictionary>();
  for (const Value& value : {Value("x.zip"), Value(std::shared_ptr<Array>()), Value(7)}) {
    odd->set("DownloadHistory", value);
    isRead(odd);
    waitsFor("/x.zip");
    lookUp();
  }
  isRead(std::make_shared<Dictionary>());
  waitsFor("/x.zip");
  lookUp();
  EXPECT_TRUE(completed.empty());
}

TEST_F(SafariHistory, EntriesOfAnotherShapeAreSkipped) {
  auto odd = std::make_shared<Dictionary>();
  odd->set("DownloadEntryPath", 7);
  holds({Value("x.zip"), Value(std::shared_ptr<Dictionary>()), Value(odd),
         entry(std::nullopt, "/wrong"), entry("x.zip", "/x")});
  lookUp();
  EXPECT_EQ(completed, Paths{"/x"});
}

TEST_F(SafariHistory, AFinalPathThatIsNoTextIsNil) {
  auto odd = std::make_shared<Dictionary>();
  odd->set("DownloadEntryPath", "x.zip");
  odd->set("DownloadEntryPostPath", 7);
  holds({Value(odd)});
  lookUp();
  EXPECT_EQ(completed, Paths{std::nullopt});
}

TEST_F(SafariHistory, NamesThatAreNotUTF8AreFound) {
  waitsFor("/\xFF'\".zip");
  holds({entry("/tmp/\xFF'\".zip", "/d/\xFF")});
  lookUp();
  EXPECT_EQ(completed, Paths{"/d/\xFF"});
}

}  // namespace
}  // namespace vantile::testing
