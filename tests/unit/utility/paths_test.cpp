#include "vantile/utility/paths.h"

#include <gtest/gtest.h>

namespace vantile {
namespace {

TEST(LastPathComponent, IsTheNameAtTheEnd) {
  EXPECT_EQ(lastPathComponent("/private/var/vm/swapfile"), "swapfile");
  EXPECT_EQ(lastPathComponent("swapfile"), "swapfile");
  EXPECT_EQ(lastPathComponent("/swapfile"), "swapfile");
}

TEST(LastPathComponent, ASlashAtTheEndDoesNotCount) {
  EXPECT_EQ(lastPathComponent("/a/b/"), "b");
  EXPECT_EQ(lastPathComponent("/a/b///"), "b");
}

TEST(LastPathComponent, OfTheRootIsTheRootAndOfNothingNothing) {
  EXPECT_EQ(lastPathComponent("/"), "/");
  EXPECT_EQ(lastPathComponent("//"), "/");
  EXPECT_EQ(lastPathComponent(""), "");
}

TEST(WithoutLastPathComponent, IsTheFolderAround) {
  EXPECT_EQ(withoutLastPathComponent("/private/var/vm/swapfile"), "/private/var/vm");
  EXPECT_EQ(withoutLastPathComponent("/a/b/"), "/a");
  EXPECT_EQ(withoutLastPathComponent("/a//b"), "/a");
  EXPECT_EQ(withoutLastPathComponent("a/b"), "a");
}

TEST(WithoutLastPathComponent, AtTheRootIsTheRoot) {
  EXPECT_EQ(withoutLastPathComponent("/swapfile"), "/");
  EXPECT_EQ(withoutLastPathComponent("/"), "/");
  EXPECT_EQ(withoutLastPathComponent("//a"), "/");
}

TEST(WithoutLastPathComponent, OfANameAloneIsNothing) {
  EXPECT_EQ(withoutLastPathComponent("swapfile"), "");
  EXPECT_EQ(withoutLastPathComponent("swapfile/"), "");
  EXPECT_EQ(withoutLastPathComponent(""), "");
}

TEST(AppendingPathComponent, PutsOneSlashInBetween) {
  EXPECT_EQ(appendingPathComponent("/a", "b"), "/a/b");
  EXPECT_EQ(appendingPathComponent("/a/", "b"), "/a/b");
  EXPECT_EQ(appendingPathComponent("/a//", "//b"), "/a/b");
  EXPECT_EQ(appendingPathComponent("/", "b"), "/b");
  EXPECT_EQ(appendingPathComponent("a", "b/c"), "a/b/c");
}

TEST(AppendingPathComponent, ToNothingIsTheComponent) {
  EXPECT_EQ(appendingPathComponent("", "b"), "b");
  EXPECT_EQ(appendingPathComponent("", "/b"), "/b");
}

TEST(PathExtension, IsBehindTheLastDot) {
  EXPECT_EQ(pathExtension("/Down/film.mkv.part"), "part");
  EXPECT_EQ(pathExtension("film.crdownload"), "crdownload");
  EXPECT_EQ(pathExtension("Tool.app/"), "app");
}

TEST(PathExtension, OfAFolderIsNotThatOfItsFile) {
  EXPECT_EQ(pathExtension("/a.part/film"), "");
}

TEST(PathExtension, IsNoneWhereTheOnlyDotBeginsOrADotEndsTheName) {
  EXPECT_EQ(pathExtension("film"), "");
  EXPECT_EQ(pathExtension(".part"), "");
  EXPECT_EQ(pathExtension("/a/.part"), "");
  EXPECT_EQ(pathExtension("film."), "");
  EXPECT_EQ(pathExtension(""), "");
  EXPECT_EQ(pathExtension("/"), "");
  EXPECT_EQ(pathExtension(".film.part"), "part");
}

TEST(PathOperations, TakeBytesAsTheyAre) {
  EXPECT_EQ(lastPathComponent("/\xFF/\xC3\n"), "\xC3\n");
  EXPECT_EQ(withoutLastPathComponent("/\xFF/\xC3"), "/\xFF");
  EXPECT_EQ(pathExtension("\xFF.\xC3"), "\xC3");
}

}  // namespace
}  // namespace vantile
