#include <gtest/gtest.h>

#include <optional>
#include <string>

#include "unit/watchqueue/watch_queue_fixture.h"

namespace vantile {
namespace {

/// The search for a file in a folder by what it is.
class FileSearch : public testing::WatchQueue {
 protected:
  /// Looks for the file that is at `path` now.
  std::optional<std::string> search(const std::string& path, const std::string& folder,
                                    bool recursive = false) {
    const int watched = events.open(path);
    tree.log.clear();
    return queue->filePathForFileDescrWithSearchFolderWithRecursive(watched, folder, recursive);
  }
};

TEST_F(FileSearch, FindsTheFileUnderWhateverName) {
  tree.file("d/a");
  tree.file("d/b");
  tree.file("d/c");
  const int watched = events.open("/disk/d/b");
  const auto find = [&] {
    return queue->filePathForFileDescrWithSearchFolderWithRecursive(watched, "/disk/d", false);
  };
  EXPECT_EQ(find(), "/disk/d/b");
  tree.move("d/b", "d/other");
  EXPECT_EQ(find(), "/disk/d/other");
  tree.remove("d/other");
  tree.file("d/b");
  EXPECT_EQ(find(), std::nullopt);
}

TEST_F(FileSearch, GivesNilForADescriptorThatStandsForNothing) {
  tree.file("d/a");
  for (const std::int32_t descriptor : {-1, 0, 12345})
    EXPECT_EQ(queue->filePathForFileDescrWithSearchFolderWithRecursive(descriptor, "/disk/d", true),
              std::nullopt);
  EXPECT_TRUE(tree.log.empty());
}

TEST_F(FileSearch, GivesNilForAFolderThatCanNotBeRead) {
  tree.file("d/a");
  EXPECT_EQ(search("/disk/d/a", "/disk/missing"), std::nullopt);
  EXPECT_EQ(search("/disk/d/a", "/disk/d/a", true), std::nullopt);
  EXPECT_EQ(search("/disk/d/a", ""), std::nullopt);
  tree.refuse("d");
  EXPECT_EQ(search("/disk/d/a", "/disk/d"), std::nullopt);
}

TEST_F(FileSearch, FindsFoldersAndOtherThings) {
  tree.folder("d/folder");
  tree.other("d/pipe");
  EXPECT_EQ(search("/disk/d/folder", "/disk/d"), "/disk/d/folder");
  EXPECT_EQ(search("/disk/d/pipe", "/disk/d"), "/disk/d/pipe");
}

TEST_F(FileSearch, GivesTheFirstOfSeveralNamesInTheFoldersOrder) {
  tree.file("d/x");
  tree.file("d/m");
  tree.hardLink("d/m", "d/c");
  tree.hardLink("d/m", "d/a");
  EXPECT_EQ(search("/disk/d/m", "/disk/d"), "/disk/d/m");
  tree.move("d/m", "d/z");  // to the end
  EXPECT_EQ(search("/disk/d/z", "/disk/d"), "/disk/d/c");
}

TEST_F(FileSearch, LooksNoFurtherThanTheFirst) {
  tree.file("d/a");
  tree.file("d/b");
  tree.file("d/c/inner");
  EXPECT_EQ(search("/disk/d/a", "/disk/d", true), "/disk/d/a");
  EXPECT_EQ(tree.log, (Lines{"open /disk/d", "facts a"}));
}

TEST_F(FileSearch, DoesNotEnterFoldersUnlessAskedTo) {
  tree.file("d/inner/deeper/a");
  EXPECT_EQ(search("/disk/d/inner/deeper/a", "/disk/d"), std::nullopt);
  EXPECT_EQ(search("/disk/d/inner/deeper/a", "/disk/d", true), "/disk/d/inner/deeper/a");
}

TEST_F(FileSearch, LooksAtEveryEntryAtEveryDepth) {
  for (const char* const path : {"d/a", "d/b", "d/c", "d/e/a", "d/e/b", "d/f/g/a", "d/h"})
    tree.file(path);
  for (const char* const path : {"/disk/d/h", "/disk/d/e/b", "/disk/d/f/g/a", "/disk/d/f"})
    EXPECT_EQ(search(path, "/disk/d", true), path);
}

TEST_F(FileSearch, TakesALinkForWhatItLeadsTo) {
  tree.file("elsewhere/a");
  tree.link("d/link");
  disk.targets["/disk/d/link"] = "/disk/elsewhere/a";
  EXPECT_EQ(search("/disk/elsewhere/a", "/disk/d"), "/disk/d/link");
}

TEST_F(FileSearch, PassesOverLinksThatLeadElsewhereOrNowhere) {
  tree.file("d/b");
  tree.link("d/dangling");
  tree.link("d/other");
  disk.targets["/disk/d/other"] = "/disk/d/b";
  tree.file("d/a");
  EXPECT_EQ(search("/disk/d/a", "/disk/d"), "/disk/d/a");
}

TEST_F(FileSearch, DoesNotEnterLinksToFolders) {
  tree.file("elsewhere/a");
  tree.link("d/link");
  disk.targets["/disk/d/link"] = "/disk/elsewhere";
  EXPECT_EQ(search("/disk/elsewhere/a", "/disk/d", true), std::nullopt);
}

TEST_F(FileSearch, TellsVolumesApart) {
  tree.file("d/a");
  events.find = [this](const std::string& path) {
    auto identity = disk.identityOf(path);
    ++identity->device;
    return identity;
  };
  EXPECT_EQ(search("/disk/d/a", "/disk/d"), std::nullopt);
}

TEST_F(FileSearch, GoesOnPastEntriesThatVanish) {
  tree.file("d/a");
  tree.file("d/b");
  tree.file("d/c");
  tree.refuseFacts("d/a");
  tree.beforeFacts = [this](const std::string& name) {
    if (name == "b") tree.remove("d/b");
  };
  EXPECT_EQ(search("/disk/d/c", "/disk/d"), "/disk/d/c");
}

TEST_F(FileSearch, JoinsFolderAndNameWithOneSlash) {
  tree.file("d/a");
  EXPECT_EQ(search("/disk/d/a", "/disk/d/"), "/disk/d/a");
}

TEST_F(FileSearch, FindsNamesOfAnyBytes) {
  tree.file("d/\xff\n\xc3");
  EXPECT_EQ(search("/disk/d/\xff\n\xc3", "/disk/d"), "/disk/d/\xff\n\xc3");
}

TEST_F(FileSearch, ReadsNoMoreThanTheTrashAndTheFolderForARename) {
  tree.file("d/inner/x");
  tree.file("Trash/inner/x");
  watchFiles({"/disk/d/a"});
  tree.move("d/a", "d/inner/a");
  tree.log.clear();
  happen("/disk/d/a", fileRenamed);
  EXPECT_EQ(tree.log, (Lines{"open /disk/Trash", "facts inner", "open /disk/d", "facts inner"}));
}

}  // namespace
}  // namespace vantile
