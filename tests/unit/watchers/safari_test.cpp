// What is reported for a finished download of Safari's, and the numbered copies of an item.

#include <gtest/gtest.h>

#include <string>

#include "vantile/watchers/browser_table.h"

#include "unit/watchers/download_fixture.h"

namespace vantile::testing {
namespace {

class Safari : public Downloads {
 protected:
  void finish(const std::string& name) {
    watcher()->notifyDownloadCompletedWithBrowserType(downloads + name, safariCode);
  }
  std::optional<std::string> newest(const std::string& name) {
    return watcher()->getLatelyPathForSafariDl(downloads + name);
  }
  static std::optional<std::string> in(const std::string& name) { return downloads + name; }
};

using NumberedCopies = Safari;

TEST_F(NumberedCopies, OfNothingThereIsNone) {
  file(downloads + "/a-2.dmg");
  EXPECT_EQ(newest("/a.dmg"), std::nullopt);
}

TEST_F(NumberedCopies, OfALoneFileThereIsItself) {
  file(downloads + "/a.dmg");
  file(downloads + "/a-3.dmg");
  EXPECT_EQ(newest("/a.dmg"), in("/a.dmg"));
}

TEST_F(NumberedCopies, OfAFileTheHighestWithoutAGapCounts) {
  for (const auto* name : {"/a.dmg", "/a-2.dmg", "/a-3.dmg", "/a-5.dmg"}) file(downloads + name);
  EXPECT_EQ(newest("/a.dmg"), in("/a-3.dmg"));
}

TEST_F(NumberedCopies, OfAFileTheSecondIsFound) {
  for (const auto* name : {"/a.dmg", "/a-2.dmg"}) file(downloads + name);
  EXPECT_EQ(newest("/a.dmg"), in("/a-2.dmg"));
}

TEST_F(NumberedCopies, OfAFileMayBeMany) {
  file(downloads + "/a.tar.bz2");
  for (int number = 2; number <= 12; ++number)
    file(downloads + "/a.tar-" + std::to_string(number) + ".bz2");
  EXPECT_EQ(newest("/a.tar.bz2"), in("/a.tar-12.bz2"));
}

TEST_F(NumberedCopies, OfAFileMayBeFolders) {
  file(downloads + "/a.dmg");
  folder(downloads + "/a-2.dmg");
  EXPECT_EQ(newest("/a.dmg"), in("/a-2.dmg"));
}

TEST_F(NumberedCopies, OfAFileWithoutAnExtensionEndInADot) {
  file(downloads + "/a");
  file(downloads + "/a-2");
  EXPECT_EQ(newest("/a"), in("/a"));
  file(downloads + "/a-2.");
  EXPECT_EQ(newest("/a"), in("/a-2."));
}

TEST_F(NumberedCopies, OfALoneFolderThereIsItself) {
  folder(downloads + "/a");
  folder(downloads + "/a-3");
  EXPECT_EQ(newest("/a"), in("/a"));
}

TEST_F(NumberedCopies, OfAFolderAccumulateTheirNumbers) {
  folder(downloads + "/a");
  folder(downloads + "/a-2");
  EXPECT_EQ(newest("/a"), in("/a-2-3-2"));
  folder(downloads + "/a-3");  // no probe
  EXPECT_EQ(newest("/a"), in("/a-2-3-2"));
  folder(downloads + "/a-2-3");
  EXPECT_EQ(newest("/a"), in("/a-2-3-4-3"));
}

TEST_F(NumberedCopies, OfAFolderWithAnExtensionComeBehindIt) {
  folder(downloads + "/a.app");
  folder(downloads + "/a-2.app");
  EXPECT_EQ(newest("/a.app"), in("/a.app"));
  folder(downloads + "/a.app-2");
  EXPECT_EQ(newest("/a.app"), in("/a.app-2-3-2"));
}

TEST_F(NumberedCopies, OfALinkAreThoseOfWhatItLeadsTo) {
  tree.link("home/Down/a.x");
  EXPECT_EQ(newest("/a.x"), std::nullopt);
  folder(downloads + "/b");
  folder(downloads + "/a.x-2");
  queue.disk->targets[downloads + "/a.x"] = downloads + "/b";
  EXPECT_EQ(newest("/a.x"), in("/a.x-2-3-2"));
}

class OfSafarisArchives : public Safari, public ::testing::WithParamInterface<const char*> {};
INSTANTIATE_TEST_SUITE_P(Suffixes, OfSafarisArchives,
                         ::testing::Values("/x.tar.bz2", "/x.tar", "/x.rar", "/x.tar.xz",
                                           "/x.tar.Z", "/x.gz", "/x.dmg", "/x"));

TEST_P(OfSafarisArchives, AreReportedAtOnce) {
  file(downloads + GetParam());
  finish(GetParam());
  EXPECT_EQ(completed, Paths{in(GetParam())});
}

TEST_P(OfSafarisArchives, ThatAreGoneAreReportedAsNil) {
  finish(GetParam());
  EXPECT_EQ(completed, Paths{std::nullopt});
}

using SafariDownload = Safari;

TEST_F(SafariDownload, IsReportedAsItsNewestCopy) {
  for (const auto* name : {"/x.dmg", "/x-2.dmg"}) file(downloads + name);
  saves(safariList, downloads);
  started();
  put(downloads + "/x.dmg.download");
  erase(downloads + "/x.dmg.download");
  EXPECT_EQ(completed, Paths{in("/x-2.dmg")});
}

TEST_F(SafariDownload, OfACompressedTarIsReportedAsTheTar) {
  for (const auto* name : {"/x.tar.gz", "/x.tar", "/x-2.tar"}) file(downloads + name);
  finish("/x.tar.gz");
  EXPECT_EQ(completed, Paths{in("/x-2.tar")});
}

TEST_F(SafariDownload, OfACompressedTarWithoutTheTarIsReportedAsNil) {
  file(downloads + "/x.tar.gz");
  finish("/x.tar.gz");
  EXPECT_EQ(completed, Paths{std::nullopt});
}

TEST_F(SafariDownload, OfTheOtherTarsIsReportedAsItself) {
  for (const auto* name : {"/x.tar.bz2", "/x.tar", "/x.tar-2.bz2"}) file(downloads + name);
  finish("/x.tar.bz2");
  EXPECT_EQ(completed, Paths{in("/x.tar-2.bz2")});
}

TEST_F(SafariDownload, OfAZipIsReportedAsWhatItWasUnpackedTo) {
  file(downloads + "/x.zip");
  file(downloads + "/x-2.zip");
  folder(downloads + "/x");
  finish("/x.zip");
  EXPECT_EQ(completed, Paths{in("/x")});
}

TEST_F(SafariDownload, OfAZipIsReportedAsTheNewestCopyOfTheFolder) {
  folder(downloads + "/x");
  folder(downloads + "/x-2");
  finish("/x.zip");
  EXPECT_EQ(completed, Paths{in("/x-2-3-2")});
}

TEST_F(SafariDownload, OfAZipWithoutItsFolderIsNotReported) {
  file(downloads + "/x.zip");
  finish("/x.zip");
  loop.advance(std::chrono::seconds(10));
  EXPECT_TRUE(completed.empty());
}

TEST_F(SafariDownload, OfAZipIsLookedAtLaterWhereThereIsNoHistoryToCome) {
  ports.browsers->hasSafari = false;
  finish("/x.zip");
  finish("/y.zip");
  loop.advance(std::chrono::milliseconds(1999));
  EXPECT_TRUE(completed.empty());
  file(downloads + "/x.zip");
  folder(downloads + "/y");
  loop.advance(std::chrono::milliseconds(1));
  EXPECT_EQ(completed, (Paths{in("/x.zip"), in("/y")}));
}

TEST_F(SafariDownload, IsTheOnlyKindWhoseZipIsNotLookedAtLater) {
  file(downloads + "/x.zip");
  watcher()->notifyDownloadCompletedWithBrowserType(downloads + "/x.zip", browserCode("chbw"));
  finish("/x.zip");
  loop.advance(std::chrono::seconds(2));
  EXPECT_EQ(completed, Paths{in("/x.zip")});
}

}  // namespace
}  // namespace vantile::testing
