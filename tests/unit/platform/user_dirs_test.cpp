#include "vantile/platform/parsers/user_dirs.h"

#include <gtest/gtest.h>

#include "unit/platform/fixture.h"

namespace vantile {
namespace {

using testing::fixture;

using Path = std::optional<std::string>;

Path named(const std::string& name) {
  return parseUserDirs(fixture("user-dirs.dirs"), name, "/home/ada");
}
Path downloads(std::string_view text, std::string_view home = "/home/ada") {
  return parseUserDirs(text, "XDG_DOWNLOAD_DIR", home);
}

TEST(UserDirs, AFolderInTheHomeIsFoundAndItsEscapesResolved) {
  EXPECT_EQ(named("XDG_DOWNLOAD_DIR"), "/home/ada/Transfers \"big\" $5");
}

TEST(UserDirs, ACommentIsNoAssignment) {
  EXPECT_EQ(downloads("#XDG_DOWNLOAD_DIR=\"/a\"\n # XDG_DOWNLOAD_DIR=\"/a\"\n"), std::nullopt);
}

TEST(UserDirs, AnAbsoluteFolderLosesTheSlashAtItsEnd) {
  EXPECT_EQ(named("XDG_PUBLICSHARE_DIR"), "/srv/public");
  EXPECT_EQ(downloads("XDG_DOWNLOAD_DIR=\"//\"\n"), "/");
}

TEST(UserDirs, AFolderSwitchedOffIsTheHome) {
  EXPECT_EQ(named("XDG_DESKTOP_DIR"), "/home/ada");
  EXPECT_EQ(named("XDG_TEMPLATES_DIR"), "/home/ada");
}

TEST(UserDirs, BlanksAroundTheEqualsSignAreAllowed) {
  EXPECT_EQ(named("XDG_DOCUMENTS_DIR"), "/home/ada/Documents");
  EXPECT_EQ(downloads("\t XDG_DOWNLOAD_DIR\t=\t\"/a\"  # why\n"), "/a");
}

TEST(UserDirs, WhatIsNeitherAbsoluteNorInTheHomeIsNoAssignment) {
  EXPECT_EQ(named("XDG_MUSIC_DIR"), std::nullopt);
  EXPECT_EQ(named("XDG_PICTURES_DIR"), std::nullopt);
  EXPECT_EQ(named("XDG_VIDEOS_DIR"), std::nullopt);
}

TEST(UserDirs, AnEscapedDollarIsNoVariable) {
  EXPECT_EQ(downloads("XDG_DOWNLOAD_DIR=\"\\$HOME/a\"\n"), std::nullopt);
}

TEST(UserDirs, TheLastAssignmentCounts) {
  EXPECT_EQ(downloads("XDG_DOWNLOAD_DIR=\"/a\"\nXDG_DOWNLOAD_DIR=\"/b\"\n"), "/b");
  EXPECT_EQ(downloads("XDG_DOWNLOAD_DIR=\"/a\"\nXDG_DOWNLOAD_DIR=\"b\"\n"), "/a");
}

TEST(UserDirs, ANameThatOnlyBeginsAlikeIsAnother) {
  EXPECT_EQ(downloads("XDG_DOWNLOAD_DIRS=\"/a\"\nMY_XDG_DOWNLOAD_DIR=\"/b\"\n"), std::nullopt);
}

TEST(UserDirs, AQuoteLeftOpenIsNoAssignment) {
  EXPECT_EQ(downloads("XDG_DOWNLOAD_DIR=\"/a\n"), std::nullopt);
  EXPECT_EQ(downloads("XDG_DOWNLOAD_DIR=\"/a\\\"\n"), std::nullopt);
  EXPECT_EQ(downloads("XDG_DOWNLOAD_DIR=\"/a\\"), std::nullopt);
  EXPECT_EQ(downloads("XDG_DOWNLOAD_DIR="), std::nullopt);
}

TEST(UserDirs, ALastLineWithoutItsNewlineIsRead) {
  EXPECT_EQ(downloads("XDG_DOWNLOAD_DIR=\"/a\""), "/a");
}

TEST(UserDirs, LineEndsOfAnotherSystemAreNoPartOfThePath) {
  EXPECT_EQ(downloads("XDG_DOWNLOAD_DIR=\"/a\"\r\n"), "/a");
}

TEST(UserDirs, PathsAreBytes) {
  using namespace std::string_view_literals;
  EXPECT_EQ(downloads("XDG_DOWNLOAD_DIR=\"/\xFF\xC3\\\\\"\n"), "/\xFF\xC3\\");
  EXPECT_EQ(downloads("\0\nXDG_DOWNLOAD_DIR=\"/b\"\n"sv), "/b");
}

TEST(UserDirs, AHomeThatIsTheRootGivesNoDoubleSlash) {
  EXPECT_EQ(downloads("XDG_DOWNLOAD_DIR=\"$HOME/a\"\n", "/"), "/a");
}

}  // namespace
}  // namespace vantile
