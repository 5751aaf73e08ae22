#include "vantile/platform/folder_reader.h"

#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include <filesystem>
#include <map>

#include "fakes/open_descriptors.h"
#include "fakes/temporary_folder.h"

namespace vantile {
namespace {

using testing::TemporaryFolder;

struct LinuxFolderReaderTest : ::testing::Test {
  std::unique_ptr<OpenFolder> open(const std::string& path) {
    return systemFolderReader()->open(path.c_str());
  }
  static std::map<std::string, FileKind> entriesOf(OpenFolder& opened) {
    std::map<std::string, FileKind> entries;
    FolderBatch batch;
    while (opened.list(batch) == Listed::some)
      for (const auto& entry : batch.entries) entries.emplace(entry.name, entry.kind);
    return entries;
  }

  TemporaryFolder folder;
};

TEST_F(LinuxFolderReaderTest, ListsNamesAndKindsWithoutTheFolderAndItsParent) {
  folder.file("f");
  folder.folder("d");
  folder.symbolicLink("l", "d");
  ASSERT_EQ(::mkfifo(folder.path("p").c_str(), 0600), 0);
  EXPECT_EQ(entriesOf(*open(folder.path())),
            (std::map<std::string, FileKind>{{"f", FileKind::regular},
                                             {"d", FileKind::folder},
                                             {"l", FileKind::symbolicLink},
                                             {"p", FileKind::other}}));
}

TEST_F(LinuxFolderReaderTest, ListsNamesOfAnyBytes) {
  for (const char* name : {"\xFF", "a\nb", "-rf", "...", " ", "..x"}) folder.file(name);
  folder.file(std::string(255, 'n'));
  const auto entries = entriesOf(*open(folder.path()));
  EXPECT_EQ(entries.size(), 7u);
  for (const char* name : {"\xFF", "a\nb", "-rf", "...", " ", "..x"})
    EXPECT_TRUE(entries.contains(name)) << name;
  EXPECT_TRUE(entries.contains(std::string(255, 'n')));
}

TEST_F(LinuxFolderReaderTest, ListsMoreThanOneBatchHolds) {
  for (int i = 0; i < 400; ++i) folder.file(std::string(250, 'n') + std::to_string(1000 + i));
  const auto opened = open(folder.path());
  FolderBatch batch;
  std::size_t batches = 0, entries = 0;
  for (; opened->list(batch) == Listed::some; ++batches) entries += batch.entries.size();
  EXPECT_GT(batches, 1u);
  EXPECT_EQ(entries, 400u);
}

TEST_F(LinuxFolderReaderTest, AnEmptyFolderHasNoEntries) {
  const auto opened = open(folder.path());
  EXPECT_TRUE(entriesOf(*opened).empty());
  FolderBatch batch;
  EXPECT_EQ(opened->list(batch), Listed::end);
}

TEST_F(LinuxFolderReaderTest, ABatchIsReplacedByTheNext) {
  folder.file("f");
  const auto opened = open(folder.path());
  FolderBatch batch;
  EXPECT_EQ(opened->list(batch), Listed::some);
  EXPECT_EQ(opened->list(batch), Listed::end);
  EXPECT_TRUE(batch.entries.empty());
}

TEST_F(LinuxFolderReaderTest, OpensOnlyFolders) {
  EXPECT_FALSE(open(folder.file("f")));
  EXPECT_FALSE(open(folder.path("none")));
  EXPECT_FALSE(open(""));
  ASSERT_EQ(::mkfifo(folder.path("p").c_str(), 0600), 0);
  EXPECT_FALSE(open(folder.path("p")));
}

TEST_F(LinuxFolderReaderTest, ALinkAtTheEndOfThePathIsFollowed) {
  folder.file("d/f");
  const auto opened = open(folder.symbolicLink("l", "d"));
  ASSERT_TRUE(opened);
  EXPECT_TRUE(entriesOf(*opened).contains("f"));
}

TEST_F(LinuxFolderReaderTest, AChildIsAFolderAndNoLink) {
  folder.file("d/f");
  folder.file("plain");
  folder.symbolicLink("l", "d");
  const auto opened = open(folder.path());
  ASSERT_TRUE(opened->child("d"));
  EXPECT_TRUE(entriesOf(*opened->child("d")).contains("f"));
  EXPECT_FALSE(opened->child("l"));
  EXPECT_FALSE(opened->child("plain"));
  EXPECT_FALSE(opened->child("none"));
}

TEST_F(LinuxFolderReaderTest, AFolderFindsItsParentAlsoAfterAMove) {
  folder.folder("a/b");
  folder.folder("c");
  const auto inner = open(folder.path("a/b"));
  EXPECT_EQ(inner->parent()->identity(), open(folder.path("a"))->identity());
  std::filesystem::rename(folder.path("a/b"), folder.path("c/b"));
  EXPECT_EQ(inner->parent()->identity(), open(folder.path("c"))->identity());
}

TEST_F(LinuxFolderReaderTest, AnIdentityIsThatOfTheFacts) {
  folder.folder("d");
  const auto opened = open(folder.path());
  EXPECT_EQ(opened->child("d")->identity(), opened->facts("d")->identity);
  EXPECT_NE(opened->identity(), opened->facts("d")->identity);
}

TEST_F(LinuxFolderReaderTest, FactsAreOfTheLinkItself) {
  folder.file("f", "12345");
  folder.hardLink("f", "g");
  folder.symbolicLink("l", "f");
  const auto opened = open(folder.path());
  EXPECT_EQ(opened->facts("f")->bytes, 5u);
  EXPECT_EQ(opened->facts("f")->links, 2u);
  EXPECT_EQ(opened->facts("f")->identity, opened->facts("g")->identity);
  EXPECT_EQ(opened->facts("l")->kind, FileKind::symbolicLink);
  EXPECT_FALSE(opened->facts("none"));
}

TEST_F(LinuxFolderReaderTest, TextIsTheBeginningOfARegularFile) {
  folder.file("f", std::string("ab\0cd", 5));
  const auto opened = open(folder.path());
  EXPECT_EQ(opened->text("f", 100), std::string("ab\0cd", 5));
  EXPECT_EQ(opened->text("f", 3), std::string("ab\0", 3));
  EXPECT_EQ(opened->text("f", 0), "");
}

TEST_F(LinuxFolderReaderTest, WhatIsNoRegularFileHasNoText) {
  folder.file("f", "x");
  folder.folder("d");
  folder.symbolicLink("l", "f");
  const auto opened = open(folder.path());
  EXPECT_FALSE(opened->text("d", 9));
  EXPECT_FALSE(opened->text("l", 9));
  EXPECT_FALSE(opened->text("none", 9));
}

TEST_F(LinuxFolderReaderTest, APipeIsNotWaitedFor) {
  ASSERT_EQ(::mkfifo(folder.path("x.desktop").c_str(), 0600), 0);
  EXPECT_FALSE(open(folder.path())->text("x.desktop", 9));
}

TEST_F(LinuxFolderReaderTest, ListingAFolderThatWasRemovedEndsIt) {
  folder.folder("d");
  const auto opened = open(folder.path("d"));
  folder.remove("d");
  FolderBatch batch;
  EXPECT_NE(opened->list(batch), Listed::some);
}

TEST_F(LinuxFolderReaderTest, NoDescriptorIsLeftBehind) {
  folder.file("d/f", "x");
  const auto before = testing::openDescriptors();
  {
    const auto opened = open(folder.path());
    const auto child = opened->child("d");
    (void)child->parent();
    (void)child->text("f", 9);
    (void)opened->child("none");
  }
  EXPECT_EQ(testing::openDescriptors(), before);
}

}  // namespace
}  // namespace vantile
