#include "vantile/platform/parsers/name_kinds.h"

#include <gtest/gtest.h>

namespace vantile {
namespace {

TEST(NameKinds, ATypeIsOfTheKindThatItBeginsWith) {
  EXPECT_EQ(kindOfType("video/mp4"), UsageKind::movies);
  EXPECT_EQ(kindOfType("audio/flac"), UsageKind::audio);
  EXPECT_EQ(kindOfType("image/jpeg"), UsageKind::photos);
  EXPECT_EQ(kindOfType("text/plain"), std::nullopt);
  EXPECT_EQ(kindOfType("application/video"), std::nullopt);
  EXPECT_EQ(kindOfType("video"), std::nullopt);
  EXPECT_EQ(kindOfType(""), std::nullopt);
}

TEST(NameKinds, TheLastExtensionDecides) {
  EXPECT_EQ(typeKeyOf("holiday.2024.jpg"), ".jpg");
  EXPECT_EQ(typeKeyOf("holiday.JPG"), ".JPG");
  EXPECT_EQ(typeKeyOf("holiday.jpg~"), ".jpg~");
}

TEST(NameKinds, ACompressionsExtensionHasTheOneBeforeItWithIt) {
  EXPECT_EQ(typeKeyOf("drawing.eps.gz"), ".eps.gz");
  EXPECT_EQ(typeKeyOf("drawing.xcf.BZ2"), ".xcf.BZ2");
  EXPECT_EQ(typeKeyOf("drawing.gz"), ".gz");
  EXPECT_EQ(typeKeyOf("drawing..gz"), ".gz");
  EXPECT_EQ(typeKeyOf("drawing.what it shows.gz"), ".gz");
}

TEST(NameKinds, AShortNameDecidesAsAWhole) {
  EXPECT_EQ(typeKeyOf("001.vdr"), "001.vdr");
  EXPECT_EQ(typeKeyOf("0001.vdr"), ".vdr");
  EXPECT_EQ(typeKeyOf("\xFF.jpg"), ".jpg");
}

TEST(NameKinds, ANameWithoutAnExtensionDecidesNothing) {
  EXPECT_EQ(typeKeyOf("README"), std::nullopt);
  EXPECT_EQ(typeKeyOf("name."), std::nullopt);
  EXPECT_EQ(typeKeyOf(""), std::nullopt);
}

TEST(NameKinds, AnExtensionIsPlainAndNotLong) {
  EXPECT_EQ(typeKeyOf("holiday.\xFFjpg"), std::nullopt);
  EXPECT_EQ(typeKeyOf("Dr. Who and the others"), std::nullopt);
  EXPECT_EQ(typeKeyOf("x." + std::string(32, 'a')), "." + std::string(32, 'a'));
  EXPECT_EQ(typeKeyOf("x." + std::string(33, 'a')), std::nullopt);
}

TEST(NameKinds, AnApplicationInOneFileIsKnownInAnyCase) {
  EXPECT_TRUE(isAppImage("Editor-1.0.AppImage"));
  EXPECT_TRUE(isAppImage("editor.appimage"));
  EXPECT_FALSE(isAppImage(".AppImage"));
  EXPECT_FALSE(isAppImage("editor.AppImage.zsync"));
}

TEST(InstalledFoldersTest, AFolderAndAllBelowItAreInstalled) {
  const InstalledFolders folders({"/usr", "/var/lib/snapd/"});
  EXPECT_EQ(folders.at("/usr"), Installed::here);
  EXPECT_EQ(folders.at("/usr/share/"), Installed::here);
  EXPECT_EQ(folders.at("/var/lib/snapd"), Installed::here);
}

TEST(InstalledFoldersTest, TheWayToOneIsKnown) {
  const InstalledFolders folders({"/usr", "/var/lib/snapd"});
  EXPECT_EQ(folders.at("/"), Installed::below);
  EXPECT_EQ(folders.at("/var/lib"), Installed::below);
}

TEST(InstalledFoldersTest, ANameThatOnlyBeginsLikeOneIsNone) {
  const InstalledFolders folders({"/usr", "/var/lib/snapd", "relative"});
  EXPECT_EQ(folders.at("/usrlocal"), Installed::none);
  EXPECT_EQ(folders.at("/us"), Installed::none);
  EXPECT_EQ(folders.at("/var/li"), Installed::none);
  EXPECT_EQ(folders.at("/relative"), Installed::none);
}

}  // namespace
}  // namespace vantile
