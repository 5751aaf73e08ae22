// The folder functions on folders of the disk.

#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <filesystem>

#include "vantile/utility/folder_functions.h"
#include "vantile/utility/general_utility.h"
#include "vantile/utility/strings.h"

#include "fakes/temporary_folder.h"
#include "unit/utility/recorded_items.h"

namespace vantile {
namespace {

using testing::RecordedItems;
using testing::TemporaryFolder;
using Items = std::vector<std::pair<std::string, std::int32_t>>;

const std::string shown = "[Desktop Entry]\nType=Application\nName=Tool\n";

struct RealFolders : ::testing::Test {
  /// What trv_all_app reports, paths from the folder on, in the order of their names.
  Items all(const std::string& path) {
    items.clear();
    trv_all_app(path.c_str(), 1, RecordedItems::item, nullptr);
    return sorted(items.items, path);
  }
  Items first(const std::string& path) {
    items.clear();
    trv_sub_app(path.c_str(), RecordedItems::item, nullptr);
    return sorted(items.items, path);
  }
  static Items sorted(Items reported, const std::string& path) {
    for (auto& item : reported) item.first.erase(0, path.size() + 1);
    std::sort(reported.begin(), reported.end());
    return reported;
  }

  TemporaryFolder folder;
  RecordedItems items;
};

TEST_F(RealFolders, ApplicationsAndFoldersAreReported) {
  folder.folder("Tools/Deep.app/Contents");
  folder.file("Tools/tool.desktop", shown);
  folder.file("Tools/hidden.desktop", shown + "NoDisplay=true\n");
  folder.file("Editor.AppImage");
  folder.file("file.app");
  EXPECT_EQ(
      all(folder.path()),
      (Items{
          {"Editor.AppImage", 1}, {"Tools", 0}, {"Tools/Deep.app", 1}, {"Tools/tool.desktop", 1}}));
}

TEST_F(RealFolders, ApplicationsOfTheFirstLevelAreReported) {
  folder.folder("One.app");
  folder.folder("Tools/Two.app");
  folder.file("link.desktop", "[Desktop Entry]\nType=Link\nURL=x\n");
  folder.file("tool.desktop", shown);
  EXPECT_EQ(first(folder.path()), (Items{{"One.app", 1}, {"tool.desktop", 1}}));
}

TEST_F(RealFolders, APipeCalledLikeADesktopEntryIsNotWaitedFor) {
  ASSERT_EQ(::mkfifo(folder.path("x.desktop").c_str(), 0600), 0);
  EXPECT_EQ(all(folder.path()), Items{});
  EXPECT_EQ(first(folder.path()), Items{});
  EXPECT_EQ(get_folder_size(folder.path().c_str()), 0u);
}

TEST_F(RealFolders, ADesktopEntryOfManyMegabytesIsReadNoFurtherThanItsBeginning) {
  folder.file("big.desktop", shown + std::string(3 << 20, '#') + "\nNoDisplay=true\n");
  EXPECT_EQ(first(folder.path()), (Items{{"big.desktop", 1}}));
}

TEST_F(RealFolders, LinksAreNeitherReportedNorFollowed) {
  folder.file("real/One.app/f", "12345");
  folder.symbolicLink("Two.app", "real/One.app");
  folder.symbolicLink("loop", ".");
  folder.symbolicLink("real/up", "..");
  folder.symbolicLink("x.desktop", "nowhere");
  EXPECT_EQ(all(folder.path()), (Items{{"real", 0}, {"real/One.app", 1}}));
  EXPECT_EQ(get_folder_size(folder.path().c_str()), 5u);
}

TEST_F(RealFolders, ALinkAtTheEndOfTheGivenPathIsFollowed) {
  folder.file("real/a.part", "12345");
  const auto link = folder.symbolicLink("l", "real");
  EXPECT_EQ(get_folder_size(link.c_str()), 5u);
  trv_sub_download(link.c_str(), RecordedItems::download, nullptr);
  EXPECT_EQ(items.downloads, std::vector{link + "/a.part"});
}

TEST_F(RealFolders, UnfinishedDownloadsAreReported) {
  folder.file("a.crdownload");
  folder.folder("b.download");
  folder.file("c.zip");
  folder.symbolicLink("d.part", "c.zip");
  trv_sub_download(folder.path().c_str(), RecordedItems::download, nullptr);
  std::sort(items.downloads.begin(), items.downloads.end());
  EXPECT_EQ(items.downloads, (std::vector{folder.path("a.crdownload"), folder.path("b.download")}));
}

TEST_F(RealFolders, SizeCountsAFileWithSeveralNamesOnce) {
  folder.file("a", std::string(1000, 'x'));
  folder.folder("b");
  folder.hardLink("a", "b/again");
  folder.file("c", std::string(10, 'x'));
  EXPECT_EQ(get_folder_size(folder.path().c_str()), 1010u);
}

TEST_F(RealFolders, SizeIsOfTheContentsNotOfWhatTheyTakeOnTheDisk) {
  const auto sparse = folder.file("sparse");
  std::filesystem::resize_file(sparse, 1ull << 33);
  EXPECT_EQ(get_folder_size(folder.path().c_str()), 1ull << 33);
}

TEST_F(RealFolders, TreesDeeperThanTheFoldersHeldOpenAreWalkedWhole) {
  std::string path = "d";
  for (int level = 1; level < 100; ++level) {
    folder.file(path + "/rest/f", "x");
    path += "/d";
  }
  folder.folder(path);
  EXPECT_EQ(get_folder_size(folder.path().c_str()), 99u);
  EXPECT_EQ(all(folder.path()).size(), 199u);
}

TEST_F(RealFolders, FoldersClosedToTheUserArePassed) {
  if (::geteuid() == 0) GTEST_SKIP() << "no folder is closed to root";
  folder.file("closed/f", "12345");
  folder.file("open/f", "1");
  ASSERT_EQ(::chmod(folder.path("closed").c_str(), 0), 0);
  EXPECT_EQ(get_folder_size(folder.path().c_str()), 1u);
  ASSERT_EQ(::chmod(folder.path("closed").c_str(), 0700), 0);
}

TEST_F(RealFolders, CommonAttributesOfAFileAreWhatItsStatusTells) {
  const auto path = folder.file("Downloads.plist", "12345");
  struct stat status = {};
  ASSERT_EQ(::stat(path.c_str(), &status), 0);
  const auto attributes = GeneralUtility::commonAttributesOfFile(path);
  ASSERT_TRUE(attributes);
  EXPECT_EQ(attributes->uint64("NSFileSize"), 5u);
  EXPECT_EQ(attributes->uint64("NSFileSystemFileNumber"), status.st_ino);
  const auto* const date =
      attributes->find("NSFileModificationDate")->as<std::shared_ptr<const Date>>();
  ASSERT_TRUE(date && *date);
  EXPECT_EQ((*date)->time.time_since_epoch(), std::chrono::seconds(status.st_mtim.tv_sec) +
                                                  std::chrono::nanoseconds(status.st_mtim.tv_nsec));
  EXPECT_EQ(GeneralUtility::commonAttributesOfFile(folder.path("none")), nullptr);
}

TEST_F(RealFolders, WhatIsNoFolderReportsNothing) {
  const auto file = folder.file("f", "12345");
  for (const auto& path : {file, file + "/f", folder.path("none"), std::string()}) {
    EXPECT_EQ(get_folder_size(path.c_str()), 0u);
    EXPECT_EQ(trv_all_app(path.c_str(), 1, RecordedItems::item, nullptr), -1);
    EXPECT_EQ(trv_sub_app(path.c_str(), RecordedItems::item, nullptr), -1);
    EXPECT_EQ(trv_sub_download(path.c_str(), RecordedItems::download, nullptr), -1);
  }
  EXPECT_TRUE(items.items.empty());
}

TEST(LinuxRelease, IsLaterThanWhatTheCleanerTakesSmallBlocksFor) {
  ASSERT_TRUE(GeneralUtility::osVersion());
  EXPECT_FALSE(isLessThanOrEqual(*GeneralUtility::osVersion(), "10.8"));
  EXPECT_TRUE(GeneralUtility::OSIsTigerOrLater());
  EXPECT_TRUE(GeneralUtility::OSIsMavericksOrLater());
}

}  // namespace
}  // namespace vantile
