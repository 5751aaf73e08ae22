// What is reported for an archive, two seconds after it was finished.

#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "vantile/watchers/browser_table.h"

#include "unit/watchers/download_fixture.h"

namespace vantile::testing {
namespace {

class Archives : public Downloads {
 protected:
  /// An archive of that name was finished, and two seconds went by.
  void finish(const std::string& name) {
    finishNow(name);
    loop.advance(std::chrono::seconds(2));
  }
  void finishNow(const std::string& name) {
    watcher()->notifyDownloadCompletedWithBrowserType(downloads + name, unknownBrowserCode);
  }
};

class OfEachArchive : public Archives, public ::testing::WithParamInterface<const char*> {};
INSTANTIATE_TEST_SUITE_P(Suffixes, OfEachArchive,
                         ::testing::Values(".rar", ".zip", ".tar", ".tar.gz", ".tar.bz2", ".tar.Z",
                                           ".tar.xz"));

TEST_P(OfEachArchive, IsLookedAtTwoSecondsLater) {
  const auto name = std::string("/a") + GetParam();
  file(downloads + name);
  finishNow(name);
  loop.settle();
  EXPECT_TRUE(completed.empty());
  loop.advance(std::chrono::seconds(2));
  EXPECT_EQ(completed, Paths{downloads + name});
}

TEST_P(OfEachArchive, IsReportedItselfEvenIfItWasUnpackedToo) {
  const auto name = std::string("/a") + GetParam();
  file(downloads + name);
  folder(downloads + "/a");
  file(downloads + "/a.tar");
  finish(name);
  EXPECT_EQ(completed, Paths{downloads + name});
}

TEST_P(OfEachArchive, ThatIsGoneIsReportedAsWhatItWasUnpackedTo) {
  folder(downloads + "/a");
  finish(std::string("/a") + GetParam());
  EXPECT_EQ(completed, Paths{downloads + "/a"});
}

TEST_P(OfEachArchive, ThatIsGoneWithoutATraceIsNotReported) {
  finish(std::string("/a") + GetParam());
  EXPECT_TRUE(completed.empty());
}

TEST_P(OfEachArchive, NeedNoNameBeforeTheSuffix) {
  file(downloads + "/" + GetParam());
  finishNow(std::string("/") + GetParam());
  EXPECT_TRUE(completed.empty());
  loop.advance(std::chrono::seconds(2));
  EXPECT_EQ(completed.size(), 1u);
}

class OfEachTwofold : public Archives, public ::testing::WithParamInterface<const char*> {};
INSTANTIATE_TEST_SUITE_P(Suffixes, OfEachTwofold,
                         ::testing::Values(".tar.gz", ".tar.bz2", ".tar.Z", ".tar.xz"));

TEST_P(OfEachTwofold, ThatBecameATarIsReportedAsThat) {
  file(downloads + "/a.tar");
  folder(downloads + "/a");
  finish(std::string("/a") + GetParam());
  EXPECT_EQ(completed, Paths{downloads + "/a.tar"});
}

class OfEachSingle : public Archives, public ::testing::WithParamInterface<const char*> {};
INSTANTIATE_TEST_SUITE_P(Suffixes, OfEachSingle, ::testing::Values(".rar", ".zip", ".tar"));

TEST_P(OfEachSingle, LosesOneExtensionOnly) {
  folder(downloads + "/a");
  finish(std::string("/a.b") + GetParam());
  EXPECT_TRUE(completed.empty());
}

TEST_F(Archives, OtherSuffixesAreNone) {
  for (const auto* name : {"/a.gz", "/a.tgz", "/a.ZIP", "/a.tar.GZ", "/a.tar.z", "/azip", "/a.7z",
                           "/a.zip.pdf", "/a.tar.Zip"}) {
    completed.clear();
    file(downloads + name);
    finishNow(name);
    EXPECT_EQ(completed, Paths{downloads + name});
  }
}

TEST_F(Archives, AreLookedAtEachByItself) {
  file(downloads + "/a.zip");
  file(downloads + "/b.rar");
  finishNow("/a.zip");
  loop.advance(std::chrono::seconds(1));
  finishNow("/b.rar");
  loop.advance(std::chrono::seconds(1));
  EXPECT_EQ(completed, Paths{downloads + "/a.zip"});
  loop.advance(std::chrono::seconds(1));
  EXPECT_EQ(completed, (Paths{downloads + "/a.zip", downloads + "/b.rar"}));
}

}  // namespace
}  // namespace vantile::testing
