// What is reported for a finished download of any browser but Safari.

#include <gtest/gtest.h>

#include <stdexcept>
#include <string>
#include <utility>
#include <vector>

#include "vantile/watchers/browser_table.h"

#include "unit/watchers/download_fixture.h"

namespace vantile::testing {
namespace {

/// Keeps what it is asked to report, and with which code.
class Recording final : public WatchDownload {
 public:
  static std::shared_ptr<Recording> shared() {
    const auto made = std::shared_ptr<Recording>(new Recording);
    made->listenToQueue();
    sharedDownloadWatch().get([&made] { return made; });
    return made;
  }
  void notifyDownloadCompletedWithBrowserType(const std::string& path,
                                              std::uint32_t browser) override {
    notified.emplace_back(path, browser);
  }

  std::vector<std::pair<std::string, std::uint32_t>> notified;
};

struct Extension {
  const char* text;
  std::uint32_t code;
};

class OfEachExtension : public Downloads, public ::testing::WithParamInterface<Extension> {
 protected:
  OfEachExtension() : recording(Recording::shared()) {
    saves(chromeList, downloads);
    file(item);
    recording->fillDownloadPath(item);  // whatever its extension
    started();
    recording->fillDownloadPath(item);
    written(downloads);
  }

  const std::string item = downloads + "/a.b." + GetParam().text, plain = downloads + "/a.b";
  const std::shared_ptr<Recording> recording;
};

INSTANTIATE_TEST_SUITE_P(
    Browsers, OfEachExtension,
    ::testing::Values(Extension{"download", 0x73616277}, Extension{"part", 0x66696277},
                      Extension{"crdownload", 0x63686277}, Extension{"opdownload", 0x6F706277},
                      Extension{"other", 0x756E6277}, Extension{"Download", 0x756E6277}));

TEST_P(OfEachExtension, ARenamedItemTellsItsBrowserByItsOldName) {
  rename(item, downloads + "/c.part");
  ASSERT_EQ(recording->notified.size(), 1u);
  EXPECT_EQ(recording->notified[0], std::pair(downloads + "/c.part", GetParam().code));
}

TEST_P(OfEachExtension, ADeletedItemTellsItsBrowserAndThePathWithoutTheExtension) {
  erase(item);
  ASSERT_EQ(recording->notified.size(), 1u);
  EXPECT_EQ(recording->notified[0], std::pair(plain, GetParam().code));
}

class OfMostCodes : public Downloads, public ::testing::WithParamInterface<std::uint32_t> {};
INSTANTIATE_TEST_SUITE_P(Codes, OfMostCodes,
                         ::testing::Values(0x66696277u, 0x63686277u, 0x6F706277u, 0x756E6277u, 0u));

TEST_P(OfMostCodes, WhatExistsIsReportedAtOnce) {
  file(downloads + "/a.pdf");
  watcher()->notifyDownloadCompletedWithBrowserType(downloads + "/a.pdf", GetParam());
  EXPECT_EQ(completed, Paths{downloads + "/a.pdf"});
}

TEST_P(OfMostCodes, WhatDoesNotExistIsNeverReported) {
  watcher()->notifyDownloadCompletedWithBrowserType(downloads + "/a.pdf", GetParam());
  file(downloads + "/a.pdf");
  loop.advance(std::chrono::seconds(10));
  EXPECT_TRUE(completed.empty());
}

TEST_P(OfMostCodes, NumberedCopiesAreSafarisOwn) {
  file(downloads + "/a.pdf");
  file(downloads + "/a-2.pdf");
  watcher()->notifyDownloadCompletedWithBrowserType(downloads + "/a.pdf", GetParam());
  EXPECT_EQ(completed, Paths{downloads + "/a.pdf"});
}

TEST_P(OfMostCodes, AnArchiveWaitsTwoSeconds) {
  file(downloads + "/a.zip");
  watcher()->notifyDownloadCompletedWithBrowserType(downloads + "/a.zip", GetParam());
  loop.advance(std::chrono::milliseconds(1999));
  EXPECT_TRUE(completed.empty());
  loop.advance(std::chrono::milliseconds(1));
  EXPECT_EQ(completed, Paths{downloads + "/a.zip"});
}

using DownloadCompletion = Downloads;

TEST_F(DownloadCompletion, ChromesFilmIsReportedAtOnceUnderItsFinalName) {
  startedWithChrome();
  put(downloads + "/film.mp4.crdownload");
  rename(downloads + "/film.mp4.crdownload", downloads + "/film.mp4");
  EXPECT_EQ(completed, Paths{downloads + "/film.mp4"});
  EXPECT_TRUE(workers.waiting.empty());
}

TEST_F(DownloadCompletion, FirefoxsArchiveThatIsUnpackedIsReportedAsItsFolder) {
  saves(firefoxList, downloads);
  started();
  put(downloads + "/a.zip.part");
  rename(downloads + "/a.zip.part", downloads + "/a.zip");
  folder(downloads + "/a");
  loop.advance(std::chrono::seconds(1));
  remove(downloads + "/a.zip");
  EXPECT_TRUE(completed.empty());
  loop.advance(std::chrono::seconds(1));
  EXPECT_EQ(completed, Paths{downloads + "/a"});
}

TEST_F(DownloadCompletion, AFolderIsReportedLikeAFile) {
  folder(downloads + "/page");
  watcher()->notifyDownloadCompletedWithBrowserType(downloads + "/page", unknownBrowserCode);
  EXPECT_EQ(completed, Paths{downloads + "/page"});
}

TEST_F(DownloadCompletion, ALinkIsReportedWhereItLeadsSomewhere) {
  tree.link("home/Down/a.pdf");
  watcher()->notifyDownloadCompletedWithBrowserType(downloads + "/a.pdf", unknownBrowserCode);
  EXPECT_TRUE(completed.empty());
  file(home + "/b.pdf");
  queue.disk->targets[downloads + "/a.pdf"] = home + "/b.pdf";
  watcher()->notifyDownloadCompletedWithBrowserType(downloads + "/a.pdf", unknownBrowserCode);
  EXPECT_EQ(completed, Paths{downloads + "/a.pdf"});
}

TEST_F(DownloadCompletion, WithoutADelegateAllGoesOn) {
  file(downloads + "/a.pdf");
  const auto shared = watcher();
  shared->setDelegate(nullptr);
  shared->notifyDownloadCompletedWithBrowserType(downloads + "/a.pdf", unknownBrowserCode);
  shared->setDelegate(std::make_shared<DownloadWatchDelegate>());
  shared->notifyDownloadCompletedWithBrowserType(downloads + "/a.pdf", unknownBrowserCode);
  EXPECT_TRUE(completed.empty());
  shared->setDelegate(delegate);
  EXPECT_EQ(shared->delegate(), delegate);
  shared->notifyDownloadCompletedWithBrowserType(downloads + "/a.pdf", unknownBrowserCode);
  EXPECT_EQ(completed.size(), 1u);
}

TEST_F(DownloadCompletion, TheDelegateOfAnArchiveIsTheOneOfTheTimeOfReporting) {
  file(downloads + "/a.zip");
  const auto shared = watcher();
  shared->setDelegate(nullptr);
  shared->notifyDownloadCompletedWithBrowserType(downloads + "/a.zip", unknownBrowserCode);
  shared->setDelegate(delegate);
  loop.advance(std::chrono::seconds(2));
  EXPECT_EQ(completed.size(), 1u);
}

TEST_F(DownloadCompletion, WhatTheDelegateThrowsIsLoggedAndTheWatchGoesOn) {
  startedWithChrome();
  delegate->downloadFileCompleted = [this](const auto& path) {
    completed.push_back(path);
    throw std::runtime_error("mine");
  };
  for (const auto* name : {"/a", "/b"}) {
    put(downloads + name + ".part");
    rename(downloads + name + ".part", downloads + name);
  }
  EXPECT_EQ(completed.size(), 2u);
  EXPECT_EQ(log.lines, (std::vector<std::string>(2, "a delegate threw: mine")));
}

TEST_F(DownloadCompletion, AWatcherThatIsGoneBeforeItsArchiveIsLookedAtStillReports) {
  file(downloads + "/a.zip");
  auto own = WatchDownload::init();
  own->setDelegate(delegate);
  own->notifyDownloadCompletedWithBrowserType(downloads + "/a.zip", unknownBrowserCode);
  own.reset();
  loop.advance(std::chrono::seconds(2));
  EXPECT_EQ(completed, Paths{downloads + "/a.zip"});
}

/// Where the system tells that a renamed download still goes on.
class RenamedOnTheWay : public Downloads {
 protected:
  RenamedOnTheWay() {
    ports.browsers->renames = true;
    startedWithChrome();
    put(first);
    rename(first, second);
  }

  const std::string first = downloads + "/random.part", second = downloads + "/a.pdf.part",
                    last = downloads + "/a.pdf";
};

TEST_F(RenamedOnTheWay, IsNotReportedAndStaysWatched) {
  EXPECT_TRUE(completed.empty());
  EXPECT_EQ(bitsOf(second), asUnfinished);
  EXPECT_EQ(bitsOf(first), 0u);
  EXPECT_EQ(timesOpened(second), 1);
}

TEST_F(RenamedOnTheWay, ReportsItsLastRenameOnce) {
  rename(second, last);
  rename(last, downloads + "/b.pdf");
  EXPECT_EQ(completed, Paths{last});
}

TEST_F(RenamedOnTheWay, NeedsNoChangeOfTheFolderInBetween) {
  move(second, first);
  happen(second, fileRenamed);
  move(first, last);
  happen(first, fileRenamed);
  EXPECT_EQ(completed, Paths{last});
}

TEST_F(RenamedOnTheWay, ReportsItsDeletion) {
  file(last);
  erase(second);
  EXPECT_EQ(completed, Paths{last});
}

TEST_F(RenamedOnTheWay, GoesOnUnderEachBrowsersExtension) {
  auto before = second;
  for (const auto* const name : {"/a.crdownload", "/a.download", "/a.zip.part", "/a.opdownload"}) {
    rename(before, downloads + name);
    before = downloads + name;
    EXPECT_TRUE(completed.empty()) << name;
    EXPECT_EQ(bitsOf(before), asUnfinished) << name;
  }
}

TEST_F(RenamedOnTheWay, IsFinishedUnderAnyOther) {
  std::size_t finished = 0;
  for (const auto* const name : {"/.part", "/part", "/a.PART", "/a.parts", "/a.part.pdf"}) {
    put(first);
    rename(first, downloads + name);
    EXPECT_EQ(completed.size(), ++finished) << name;
  }
}

TEST_F(RenamedOnTheWay, IsFinishedWhereTheSystemKnowsNoSuchRename) {
  ports.browsers->renames = false;
  rename(second, downloads + "/b.pdf.part");
  EXPECT_EQ(completed, Paths{downloads + "/b.pdf.part"});
}

TEST_F(RenamedOnTheWay, MayBeRenamedManyTimes) {
  rename(second, first);
  rename(first, second);
  EXPECT_TRUE(completed.empty());
  rename(second, last);
  EXPECT_EQ(completed, Paths{last});
}

}  // namespace
}  // namespace vantile::testing
