// A watch queue on real folders: what a person or a browser does to files, and what is told of it.

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <filesystem>
#include <fstream>

#include "watching/real_folders.h"

namespace vantile::testing {
namespace {

using Told = std::vector<std::string>;
namespace fs = std::filesystem;

constexpr std::uint32_t deleteAndRename = 33;

void append(const std::string& path, const std::string& text) {
  std::ofstream(path, std::ios::app) << text;
}

TEST_F(RealQueue, AFileThatIsWrittenToTellsThatItWasAndThatItGrew) {
  const auto file = disk.file("watched/a", "1");
  queue->addPath(file);
  append(file, "23");
  EXPECT_EQ(told(), (Told{"write watched/a", "grew watched/a"}));
}

TEST_F(RealQueue, AFileThatIsOverwrittenInPlaceDidNotGrow) {
  const auto file = disk.file("watched/a", "123");
  queue->addPath(file);
  std::fstream(file, std::ios::in | std::ios::out) << "x";
  EXPECT_EQ(told(), Told{"write watched/a"});
}

TEST_F(RealQueue, AFolderIsWrittenToWhenAnEntryComesGoesOrIsRenamed) {
  queue->addPathNotifyingAbout(watched, 2);
  disk.file("watched/a");
  EXPECT_EQ(told(), Told{"write watched"});
  fs::rename(disk.path("watched/a"), disk.path("watched/b"));
  EXPECT_EQ(told(), Told{"write watched"});
  disk.remove("watched/b");
  EXPECT_EQ(told(), Told{"write watched"});
}

TEST_F(RealQueue, AFolderIsNotWrittenToWhenAnEntrysContentsOrAttributesChange) {
  const auto file = disk.file("watched/a", "1");
  queue->addPath(watched);
  append(file, "2");
  ::chmod(file.c_str(), 0600);
  EXPECT_EQ(told(), Told{});
}

TEST_F(RealQueue, AFolderInAFolderIsANameMoreForIt) {
  queue->addPath(watched);
  disk.folder("watched/inner");
  EXPECT_EQ(told(), (Told{"write watched", "links watched"}));
}

TEST_F(RealQueue, AFileRenamedInItsFolderIsFollowed) {
  const auto file = disk.file("watched/a");
  queue->addPathNotifyingAbout(file, 127);
  fs::rename(file, disk.path("watched/b"));
  EXPECT_EQ(told(), Told{"rename watched/b watched/a"});
  append(disk.path("watched/b"), "x");
  EXPECT_EQ(told(), (Told{"write watched/b", "grew watched/b"}));
  EXPECT_EQ(queue->numberOfWatchedPaths(), 2u);
}

TEST_F(RealQueue, AFileRenamedAThousandTimesInARowIsStillFollowed) {
  auto at = disk.file("watched/0");
  queue->addPathNotifyingAbout(at, deleteAndRename);
  for (int number = 1; number <= 1000; ++number) {
    const auto next = disk.path("watched/" + std::to_string(number));
    fs::rename(at, next);
    at = next;
    if (number % 97 == 0) serveUntil([] { return true; });
  }
  settle();
  ASSERT_FALSE(record.empty());
  EXPECT_TRUE(record.back().starts_with("rename watched/1000 ")) << record.back();
  record.clear();
  fs::remove(at);
  EXPECT_EQ(told(), Told{"delete watched/1000"});
  EXPECT_EQ(queue->numberOfWatchedPaths(), 1u);
}

TEST_F(RealQueue, AFileMovedToTheTrashStaysWatchedThereUnderItsOldPath) {
  const auto file = disk.file("watched/a");
  queue->addPathNotifyingAbout(file, deleteAndRename);
  fs::rename(file, trash + "/a.2");
  EXPECT_EQ(told(), Told{"trash home/.local/share/Trash/files/a.2 watched/a"});
  EXPECT_EQ(queue->numberOfWatchedPaths(), 2u);
  fs::remove(trash + "/a.2");
  EXPECT_EQ(told(), Told{"delete watched/a"});
  EXPECT_EQ(queue->numberOfWatchedPaths(), 1u);
}

TEST_F(RealQueue, AFileDeletedInTheTrashWhileItIsOpenElsewhereIsDeletedAtOnce) {
  const auto file = disk.file("watched/a");
  queue->addPathNotifyingAbout(file, deleteAndRename);
  const std::ifstream holder(file);
  fs::rename(file, trash + "/a");
  told();
  fs::remove(trash + "/a");
  EXPECT_EQ(told(), Told{"delete watched/a"});
}

TEST_F(RealQueue, AFileMovedSomewhereElseIsToldAsRenamedAndStaysUnderItsOldPath) {
  const auto file = disk.file("watched/a");
  const auto elsewhere = disk.folder("elsewhere");
  queue->addPathNotifyingAbout(file, deleteAndRename);
  fs::rename(file, elsewhere + "/a");
  EXPECT_EQ(told(), Told{"renamed watched/a"});
  fs::remove(elsewhere + "/a");
  EXPECT_EQ(told(), Told{"delete watched/a"});
}

TEST_F(RealQueue, AFileThatIsOpenElsewhereIsDeletedOnceWithItsLastName) {
  const auto file = disk.file("watched/a");
  queue->addPath(file);
  {
    const std::ifstream holder(file);
    fs::remove(file);
    EXPECT_EQ(told(), Told{"delete watched/a"});
  }
  EXPECT_EQ(told(), Told{});
}

TEST_F(RealQueue, AHardLinkMadeAndRemovedChangesTheLinkCountAndNothingElse) {
  const auto file = disk.file("watched/a");
  queue->addPath(file);
  fs::create_hard_link(file, disk.path("watched/b"));
  EXPECT_EQ(told(), Told{"links watched/a"});
  fs::remove(disk.path("watched/b"));
  EXPECT_EQ(told(), Told{"links watched/a"});
}

TEST_F(RealQueue, TwoNamesOfOneFileAreWatchedEachByItself) {
  const auto first = disk.file("watched/a");
  const auto second = disk.path("watched/b");
  fs::create_hard_link(first, second);
  queue->addPathNotifyingAbout(first, deleteAndRename);
  queue->addPathNotifyingAbout(second, 127);
  queue->removePath(first);
  append(second, "x");
  EXPECT_EQ(told(), (Told{"write watched/b", "grew watched/b"}));
  queue->addPathNotifyingAbout(first, deleteAndRename);
  fs::rename(second, disk.path("watched/c"));
  EXPECT_EQ(told(), Told{"rename watched/c watched/b"});
}

TEST_F(RealQueue, AChangeOfAttributesIsThat) {
  const auto file = disk.file("watched/a");
  queue->addPath(file);
  ::chmod(file.c_str(), 0600);
  EXPECT_EQ(told(), Told{"attributes watched/a"});
}

TEST_F(RealQueue, AWatchedFolderThatIsRemovedIsDeletedAndWatchedNoLonger) {
  const auto folder = disk.folder("watched/inner");
  queue->addPathNotifyingAbout(folder, 35);
  fs::remove(folder);
  EXPECT_EQ(told(), Told{"delete watched/inner"});
  EXPECT_EQ(queue->numberOfWatchedPaths(), 1u);
}

TEST_F(RealQueue, AnItemBelowAFolderThatWasRenamedIsNotDeleted) {
  const auto file = disk.file("watched/x/a");
  const auto folder = disk.folder("watched/x/inner");
  queue->addPathNotifyingAbout(file, 127);
  queue->addPathNotifyingAbout(folder, 127);
  fs::rename(disk.path("watched/x"), disk.path("watched/y"));
  disk.folder("watched/x");
  ::chmod(disk.path("watched/y/a").c_str(), 0600);
  ::chmod(disk.path("watched/y/inner").c_str(), 0700);
  EXPECT_EQ(told(), (Told{"attributes watched/x/a", "attributes watched/x/inner"}));
  fs::remove(disk.path("watched/y/a"));
  EXPECT_EQ(told(), Told{"delete watched/x/a"});
}

TEST_F(RealQueue, AFileThatIsReplacedIsDeleted) {
  const auto file = disk.file("watched/a", "old");
  queue->addPathNotifyingAbout(file, deleteAndRename);
  fs::rename(disk.file("watched/b", "new"), file);
  EXPECT_EQ(told(), Told{"delete watched/a"});
}

TEST_F(RealQueue, AnItemThatTakesTheNameOfAWatchedOneKeepsItsOwnWatch) {
  const auto first = disk.file("watched/a", "old");
  const auto second = disk.file("watched/b", "new");
  queue->addPathNotifyingAbout(first, deleteAndRename);
  queue->addPathNotifyingAbout(second, deleteAndRename);
  fs::rename(second, first);
  settle();
  record.clear();
  fs::rename(first, disk.path("watched/c"));
  EXPECT_EQ(told(), Told{"rename watched/c watched/a"});
}

TEST_F(RealQueue, ASymbolicLinkIsWatchedAsWhatItLeadsTo) {
  const auto file = disk.file("elsewhere/a");
  const auto link = disk.symbolicLink("watched/link", file);
  queue->addPath(link);
  append(file, "x");
  EXPECT_EQ(told(), (Told{"write watched/link", "grew watched/link"}));
}

TEST_F(RealQueue, NamesAreBytes) {
  for (const std::string name : {"a\nb", "\xff\xfe", "caf\xc3\xa9 %@ %s", "-", " "}) {
    const auto file = disk.file("watched/" + name);
    queue->addPathNotifyingAbout(file, deleteAndRename);
    fs::rename(file, disk.path("watched/" + name + "2"));
    EXPECT_EQ(told(), Told{"rename watched/" + name + "2 watched/" + name});
    fs::remove(disk.path("watched/" + name + "2"));
    EXPECT_EQ(told(), Told{"delete watched/" + name + "2"});
  }
}

TEST_F(RealQueue, ABurstIsAFewEvents) {
  queue->addPathNotifyingAbout(watched, 2);
  for (int number = 0; number < 5000; ++number)
    ::close(::open(disk.path("watched/" + std::to_string(number)).c_str(), O_CREAT | O_RDWR, 0600));
  settle();
  EXPECT_GE(record.size(), 1u);
  EXPECT_LE(record.size(), 3u);
}

TEST_F(RealQueue, ADescriptorOfAnySortIsFoundByItsFile) {
  const auto file = disk.file("watched/deep/er/a");
  const int descriptor = ::open(file.c_str(), O_RDONLY | O_CLOEXEC);
  EXPECT_EQ(queue->filePathForFileDescrWithSearchFolderWithRecursive(descriptor, watched, true),
            file);
  EXPECT_EQ(queue->filePathForFileDescrWithSearchFolderWithRecursive(descriptor, watched, false),
            std::nullopt);
  ::close(descriptor);
  EXPECT_EQ(queue->filePathForFileDescrWithSearchFolderWithRecursive(descriptor, watched, true),
            std::nullopt);
  const auto entry = WatchQueuePathEntry::initWithPathAndSubscriptionFlags(file, 1);
  EXPECT_GE(entry->watchedFD(), 1 << 30);
  EXPECT_EQ(
      queue->filePathForFileDescrWithSearchFolderWithRecursive(entry->watchedFD(), watched, true),
      file);
}

TEST_F(RealQueue, AWatchedItemIsHeldByNoDescriptor) {
  const auto file = disk.file("watched/a");
  queue->addPath(file);
  for (const auto& entry : fs::directory_iterator("/proc/self/fd")) {
    std::error_code gone;
    EXPECT_NE(fs::read_symlink(entry, gone).string(), file);
  }
}

}  // namespace
}  // namespace vantile::testing
