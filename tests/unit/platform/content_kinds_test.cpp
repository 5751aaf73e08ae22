#include "vantile/platform/linux/content_kinds.h"

#include <gtest/gtest.h>

#include <string>

namespace vantile {
namespace {

struct ContentKindsTest : ::testing::Test {
  ContentKinds kinds;
};

TEST_F(ContentKindsTest, NamesAreOfTheKindsThatTheMimeDatabaseHas) {
  EXPECT_EQ(kinds.of("film.mkv"), UsageKind::movies);
  EXPECT_EQ(kinds.of("song.flac"), UsageKind::audio);
  EXPECT_EQ(kinds.of("picture.jpg"), UsageKind::photos);
  EXPECT_EQ(kinds.of("letter.odt"), std::nullopt);
  EXPECT_EQ(kinds.of("unknown.qqqq"), std::nullopt);
  EXPECT_EQ(kinds.of("README"), std::nullopt);
}

TEST_F(ContentKindsTest, CaseIsAsTheDatabaseTakesIt) {
  EXPECT_EQ(kinds.of("PICTURE.JPG"), UsageKind::photos);
}

TEST_F(ContentKindsTest, AnApplicationInOneFileIsOne) {
  EXPECT_EQ(kinds.of("Editor-1.0.AppImage"), UsageKind::applications);
}

TEST_F(ContentKindsTest, WhatIsPackedMayStillBeAPicture) {
  EXPECT_EQ(kinds.of("drawing.eps.gz"), UsageKind::photos);
  EXPECT_EQ(kinds.of("archive.tar.gz"), std::nullopt);
}

TEST_F(ContentKindsTest, ANumberedRecordingIsAMovie) {
  EXPECT_EQ(kinds.of("001.vdr"), UsageKind::movies);
  EXPECT_EQ(kinds.of("one.vdr"), std::nullopt);
}

TEST_F(ContentKindsTest, ABackupIsNoPicture) {
  EXPECT_EQ(kinds.of("picture.jpg~"), std::nullopt);
}

TEST_F(ContentKindsTest, AnyBytesAreAName) {
  EXPECT_EQ(kinds.of("\xFF\xFE.jpg"), UsageKind::photos);
  EXPECT_EQ(kinds.of("x.\xFF"), std::nullopt);
}

TEST_F(ContentKindsTest, AnswersStayTheSameHoweverManyExtensionsThereAre) {
  for (int number = 0; number < 10000; ++number)
    EXPECT_EQ(kinds.of("x.unknown" + std::to_string(number)), std::nullopt);
  EXPECT_EQ(kinds.of("film.mkv"), UsageKind::movies);
  kinds.forget();
  EXPECT_EQ(kinds.of("film.mkv"), UsageKind::movies);
}

}  // namespace
}  // namespace vantile
