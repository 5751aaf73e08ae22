// The file-events port on inotify, without a watch queue around it.

#include "vantile/platform/linux/file_events.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/mount.h>
#include <sys/stat.h>
#include <unistd.h>

#include <chrono>
#include <filesystem>
#include <fstream>
#include <thread>

#include "fakes/open_descriptors.h"
#include "fakes/temporary_folder.h"

namespace vantile::testing {
namespace {

namespace fs = std::filesystem;
using std::chrono::milliseconds;

constexpr std::uint32_t everything = 0x7F;
constexpr milliseconds longEnough(10000), notAtAll(0);

class RealFileEvents : public ::testing::Test {
 protected:
  /// Opens and watches a path; events carry the number that stands for it.
  int watch(const std::string& path, std::uint32_t changes = everything) {
    const int item = events.open(path);
    EXPECT_GE(item, FileEvents::firstToken);
    EXPECT_EQ(queue->add(item, changes, tagOf(item)), 0);
    return item;
  }
  static std::uint64_t tagOf(int item) { return static_cast<std::uint64_t>(item) * 10; }
  /// The changes of the next event of that item, which is taken up at once; 0 for none.
  std::uint32_t next(int item) {
    const auto event = queue->wait(notAtAll);
    if (!event) return 0;
    EXPECT_EQ(event->tag, tagOf(item));
    queue->delivered(event->tag);
    return event->changes;
  }

  TemporaryFolder disk;
  LinuxFileEvents events;
  int error = 0;
  std::shared_ptr<FileEventQueue> queue = events.newQueue(error);
};

TEST_F(RealFileEvents, AnItemThatIsNotThereCantBeOpened) {
  EXPECT_EQ(events.open(disk.path("none")), -ENOENT);
  EXPECT_EQ(events.open(""), -ENOENT);
  EXPECT_EQ(events.openItems(), 0u);
}

TEST_F(RealFileEvents, AnItemStandsForItsFileWhateverItIsCalled) {
  const int item = events.open(disk.file("a"));
  const int other = events.open(disk.file("b"));
  struct stat status = {};
  ASSERT_EQ(::stat(disk.path("a").c_str(), &status), 0);
  EXPECT_EQ(events.identity(item), (FileIdentity{status.st_dev, status.st_ino}));
  fs::rename(disk.path("a"), disk.path("c"));
  EXPECT_EQ(events.identity(item), (FileIdentity{status.st_dev, status.st_ino}));
  EXPECT_NE(events.identity(other), events.identity(item));
  events.close(item);
  EXPECT_EQ(events.identity(item), std::nullopt);
}

TEST_F(RealFileEvents, WhatIsNoItemHasNoIdentityAndCantBeWatched) {
  EXPECT_EQ(events.identity(-1), std::nullopt);
  EXPECT_EQ(events.identity(FileEvents::firstToken + 77), std::nullopt);
  EXPECT_EQ(queue->add(FileEvents::firstToken + 77, 1, 1), EBADF);
  events.close(FileEvents::firstToken + 77);
  events.close(-1);
}

TEST_F(RealFileEvents, TheWatchIsOnTheInodeThatWasOpened) {
  disk.file("a", "first");
  const int item = events.open(disk.path("a"));
  fs::rename(disk.path("a"), disk.path("gone"));
  disk.file("a", "second");
  ASSERT_EQ(queue->add(item, everything, tagOf(item)), 0);
  EXPECT_EQ(next(item), fileRenamed);  // it was not where it had been opened
  std::ofstream(disk.path("a"), std::ios::app) << "x";
  EXPECT_EQ(next(item), 0u);
  std::ofstream(disk.path("gone"), std::ios::app) << "x";
  EXPECT_EQ(next(item) & fileWritten, fileWritten);
}

TEST_F(RealFileEvents, AnItemThatWentBeforeItWasWatchedIsToldAsDeleted) {
  disk.file("a");
  const int item = events.open(disk.path("a"));
  disk.remove("a");
  ASSERT_EQ(queue->add(item, everything, tagOf(item)), 0);
  EXPECT_EQ(next(item), fileDeleted);
  EXPECT_EQ(next(item), 0u);
}

TEST_F(RealFileEvents, NoDescriptorIsHeldOnAWatchedItem) {
  const auto before = openDescriptors();
  for (int number = 0; number < 100; ++number) watch(disk.file(std::to_string(number)));
  EXPECT_EQ(openDescriptors(), before);
}

TEST_F(RealFileEvents, ChangesOfOneItemAreOneEventUntilItIsTakenUp) {
  const int item = watch(disk.file("a"));
  std::ofstream(disk.path("a"), std::ios::app) << "x";
  const auto first = queue->wait(notAtAll);
  ASSERT_TRUE(first);
  EXPECT_EQ(first->changes, fileWritten | fileGrew);
  ::chmod(disk.path("a").c_str(), 0600);
  fs::rename(disk.path("a"), disk.path("b"));
  EXPECT_FALSE(queue->wait(notAtAll));
  queue->delivered(first->tag);
  EXPECT_EQ(next(item), attributesChanged | fileRenamed);
  EXPECT_EQ(next(item), 0u);
}

TEST_F(RealFileEvents, ADeliveryWakesTheWaitForWhatWasHeldBack) {
  const int item = watch(disk.file("a"));
  std::ofstream(disk.path("a"), std::ios::app) << "x";
  ASSERT_TRUE(queue->wait(notAtAll));
  std::ofstream(disk.path("a"), std::ios::app) << "y";
  EXPECT_FALSE(queue->wait(notAtAll));
  std::thread other([&] { queue->delivered(tagOf(item)); });
  EXPECT_TRUE(queue->wait(longEnough));
  other.join();
}

TEST_F(RealFileEvents, ItemsAreToldOfInTheOrderInWhichTheyChanged) {
  const int first = watch(disk.file("a")), second = watch(disk.file("b"));
  std::ofstream(disk.path("b"), std::ios::app) << "x";
  std::ofstream(disk.path("a"), std::ios::app) << "x";
  std::ofstream(disk.path("b"), std::ios::app) << "x";
  EXPECT_EQ(next(second), fileWritten | fileGrew);
  EXPECT_EQ(next(first), fileWritten | fileGrew);
  EXPECT_EQ(next(first), 0u);
}

TEST_F(RealFileEvents, OnlyWhatWasSubscribedToIsTold) {
  const int item = watch(disk.file("a"), attributesChanged);
  std::ofstream(disk.path("a"), std::ios::app) << "x";
  fs::rename(disk.path("a"), disk.path("b"));
  EXPECT_EQ(next(item), 0u);
  ::chmod(disk.path("b").c_str(), 0600);
  EXPECT_EQ(next(item), attributesChanged);
}

TEST_F(RealFileEvents, WatchingAnItemAgainReplacesWhatItIsWatchedFor) {
  const int item = watch(disk.file("a"), attributesChanged);
  EXPECT_EQ(queue->add(item, fileWritten, tagOf(item)), 0);
  ::chmod(disk.path("a").c_str(), 0600);
  EXPECT_EQ(next(item), 0u);
  std::ofstream(disk.path("a"), std::ios::app) << "x";
  EXPECT_EQ(next(item), fileWritten);
}

TEST_F(RealFileEvents, ClosingOneOfTwoItemsOfAFileLeavesTheOtherWatched) {
  const auto path = disk.file("a");
  const int first = watch(path, fileRenamed), second = watch(path, fileWritten);
  events.close(first);
  std::ofstream(path, std::ios::app) << "x";
  EXPECT_EQ(next(second), fileWritten);
  events.close(second);
  std::ofstream(path, std::ios::app) << "x";
  EXPECT_FALSE(queue->wait(notAtAll));
}

TEST_F(RealFileEvents, AnItemThatWasRenamedAndBackWasNotRenamed) {
  const int item = watch(disk.file("a"));
  fs::rename(disk.path("a"), disk.path("b"));
  fs::rename(disk.path("b"), disk.path("a"));
  EXPECT_EQ(next(item), 0u);
}

TEST_F(RealFileEvents, AnItemIsLookedAtWhereItIsToldToStand) {
  const int item = watch(disk.file("a"));
  fs::rename(disk.path("a"), disk.path("b"));
  EXPECT_EQ(next(item), fileRenamed);
  events.standsAt(item, disk.path("b"));
  const std::ifstream holder(disk.path("b"));
  disk.remove("b");
  EXPECT_EQ(next(item), fileDeleted);
}

TEST_F(RealFileEvents, AnItemThatIsGoneStandsForNoFileThoughAnotherMayGetItsInode) {
  const int item = watch(disk.file("a"), fileDeleted);
  const int other = watch(disk.file("b"), fileWritten);
  disk.remove("a");
  disk.remove("b");
  EXPECT_EQ(next(item), fileDeleted);
  EXPECT_EQ(events.identity(item), std::nullopt);
  EXPECT_EQ(events.identity(other), std::nullopt);
}

TEST_F(RealFileEvents, AVolumeThatIsUnmountedRevokesAccess) {
  const auto folder = disk.folder("volume");
  if (::mount("vantile-test", folder.c_str(), "tmpfs", 0, nullptr) != 0)
    GTEST_SKIP() << "mounting takes the right to";
  const int item = watch(disk.file("volume/a"));
  ASSERT_EQ(::umount(folder.c_str()), 0) << "a watch must not keep the volume busy";
  EXPECT_EQ(next(item) & accessRevoked, accessRevoked);
}

TEST_F(RealFileEvents, AnInterruptEndsTheWaitOrTheNextOne) {
  std::thread other([this] { queue->interrupt(); });
  EXPECT_FALSE(queue->wait(longEnough));
  other.join();
  const int item = watch(disk.file("a"));
  std::ofstream(disk.path("a"), std::ios::app) << "x";
  queue->interrupt();
  EXPECT_FALSE(queue->wait(longEnough));
  EXPECT_NE(next(item), 0u);
}

TEST_F(RealFileEvents, AWaitEndsWithItsTime) {
  const auto begin = std::chrono::steady_clock::now();
  EXPECT_FALSE(queue->wait(milliseconds(30)));
  EXPECT_GE(std::chrono::steady_clock::now() - begin, milliseconds(30));
}

TEST_F(RealFileEvents, AClosedQueueGivesAndTakesNothing) {
  const int item = watch(disk.file("a"));
  std::ofstream(disk.path("a"), std::ios::app) << "x";
  EXPECT_EQ(queue->close(), 0);
  EXPECT_EQ(queue->close(), 0);
  EXPECT_FALSE(queue->wait(longEnough));
  EXPECT_EQ(queue->add(events.open(disk.path("a")), everything, 1), EBADF);
  events.close(item);
}

TEST_F(RealFileEvents, AnItemMayOutliveItsQueue) {
  const int item = watch(disk.file("a"));
  queue.reset();
  events.standsAt(item, disk.path("b"));
  EXPECT_NE(events.identity(item), std::nullopt);
  events.close(item);
  EXPECT_EQ(events.openItems(), 0u);
}

}  // namespace
}  // namespace vantile::testing
