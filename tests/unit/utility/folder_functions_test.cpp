#include "vantile/utility/folder_functions.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <stdexcept>
#include <thread>

#include "vantile/foundation/log.h"

#include "fakes/fake_utility_ports.h"
#include "unit/utility/recorded_items.h"

namespace vantile {
namespace {

using testing::FakeUtilityPorts;
using testing::RecordedItems;
using Paths = std::vector<std::string>;
using Items = std::vector<std::pair<std::string, std::int32_t>>;

/// The folder functions over a tree in memory.
struct FolderFunctions : ::testing::Test {
  Items all(const char* path = "/root", std::int32_t mode = 1) {
    items.clear();
    trv_all_app(path, mode, RecordedItems::item, stop);
    return items.items;
  }
  Items first(const char* path = "/root") {
    items.clear();
    trv_sub_app(path, RecordedItems::item, stop);
    return items.items;
  }
  Paths downloads(const char* path = "/root") {
    items.clear();
    trv_sub_download(path, RecordedItems::download, stop);
    return items.downloads;
  }

  FakeUtilityPorts ports;
  testing::FolderTree& tree() { return *ports.tree; }
  RecordedItems items;
  std::int32_t* stop = nullptr;
};

TEST_F(FolderFunctions, AllAppReportsApplicationsAndFoldersAtEveryDepth) {
  tree().folder("Tools/More/Deep.app");
  tree().folder("One.app");
  tree().file("Tools/notes.txt");
  EXPECT_EQ(all(), (Items{{"/root/Tools", 0},
                          {"/root/One.app", 1},
                          {"/root/Tools/More", 0},
                          {"/root/Tools/More/Deep.app", 1}}));
}

TEST_F(FolderFunctions, AllAppDoesNotEnterApplications) {
  tree().folder("One.app/Contents/Inner.app");
  EXPECT_EQ(all(), (Items{{"/root/One.app", 1}}));
}

TEST_F(FolderFunctions, AllAppReportsApplicationsThatAreFiles) {
  tree().text("a/x.desktop", "application");
  tree().text("a/y.desktop", "something else");
  EXPECT_EQ(all(), (Items{{"/root/a", 0}, {"/root/a/x.desktop", 1}}));
}

TEST_F(FolderFunctions, AllAppReportsAFolderBeforeWhatIsInIt) {
  tree().folder("a/b/c/d");
  EXPECT_EQ(all(),
            (Items{{"/root/a", 0}, {"/root/a/b", 0}, {"/root/a/b/c", 0}, {"/root/a/b/c/d", 0}}));
}

TEST_F(FolderFunctions, AllAppTakesNoNoticeOfItsMode) {
  tree().folder("a/One.app");
  const auto usual = all("/root", 1);
  for (const std::int32_t mode : {0, 2, -1}) EXPECT_EQ(all("/root", mode), usual);
}

TEST_F(FolderFunctions, SubAppReportsApplicationsOfTheFirstLevelAlone) {
  tree().folder("One.app");
  tree().folder("a/Two.app");
  tree().text("x.desktop", "application");
  tree().file("notes.txt");
  EXPECT_EQ(first(), (Items{{"/root/One.app", 1}, {"/root/x.desktop", 1}}));
  EXPECT_EQ(tree().log, (Paths{"open /root", "text x.desktop"}));
}

TEST_F(FolderFunctions, SubDownloadReportsUnfinishedDownloadsOfTheFirstLevelAlone) {
  for (const char* name : {"a.download", "b.crdownload", "c.part", "d.opdownload", "e/f.part"})
    tree().file(name);
  EXPECT_EQ(downloads(), (Paths{"/root/a.download", "/root/b.crdownload", "/root/c.part",
                                "/root/d.opdownload"}));
}

TEST_F(FolderFunctions, SubDownloadReportsFoldersToo) {
  tree().file("a.download/Info.plist");
  EXPECT_EQ(downloads(), Paths{"/root/a.download"});
}

TEST_F(FolderFunctions, SubDownloadReportsNothingElse) {
  for (const char* name : {"film.mkv", "part", ".part", "a.part.mkv", "a.PART", "a.partial", "b."})
    tree().file(name);
  tree().link("l.part");
  tree().other("o.part");
  EXPECT_EQ(downloads(), Paths{});
}

TEST_F(FolderFunctions, LinksAreNeitherReportedNorEntered) {
  tree().link("One.app");
  tree().link("l");
  tree().link("x.desktop");
  EXPECT_EQ(all(), Items{});
  EXPECT_EQ(first(), Items{});
  EXPECT_EQ(get_folder_size("/root"), 0u);
}

TEST_F(FolderFunctions, NamesMayBeAnyBytes) {
  const std::string name = "\xFF\n -\xC3.app";
  tree().folder(name);
  EXPECT_EQ(all(), (Items{{"/root/" + name, 1}}));
}

TEST_F(FolderFunctions, CallBackOnTheCallingThreadBeforeTheyReturn) {
  tree().folder("One.app");
  tree().file("a.part");
  all();
  first();
  downloads();
  EXPECT_EQ(items.threads, std::set{std::this_thread::get_id()});
}

TEST_F(FolderFunctions, ReportNothingWhenTheStopFlagIsSetAtTheStart) {
  tree().folder("One.app");
  tree().file("a.part");
  std::int32_t flag = 1;
  stop = &flag;
  EXPECT_EQ(all(), Items{});
  EXPECT_EQ(first(), Items{});
  EXPECT_EQ(downloads(), Paths{});
  EXPECT_TRUE(tree().log.empty());
  EXPECT_EQ(flag, 1);
}

TEST_F(FolderFunctions, EndOnceTheStopFlagIsSetDuringACall) {
  for (int i = 0; i < 20; ++i) {
    tree().folder(std::to_string(i) + ".app");
    tree().file(std::to_string(i) + ".part");
  }
  std::int32_t flag = 0;
  stop = &flag;
  items.onItem = [&flag] { flag = 1; };
  for (int run = 0; run < 3; ++run) {
    flag = 0;
    const auto reported = run == 0 ? all().size() : run == 1 ? first().size() : downloads().size();
    EXPECT_EQ(reported, 1u) << run;
  }
}

TEST_F(FolderFunctions, RunToTheirEndWithoutAStopFlag) {
  for (int i = 0; i < 20; ++i) tree().folder(std::to_string(i) + ".app");
  EXPECT_EQ(all().size(), 20u);
  EXPECT_EQ(first().size(), 20u);
}

TEST_F(FolderFunctions, ReportNothingForANullPath) {
  EXPECT_EQ(trv_all_app(nullptr, 1, RecordedItems::item, nullptr), -1);
  EXPECT_EQ(trv_sub_app(nullptr, RecordedItems::item, nullptr), -1);
  EXPECT_EQ(trv_sub_download(nullptr, RecordedItems::download, nullptr), -1);
  EXPECT_EQ(get_folder_size(nullptr), 0u);
  EXPECT_TRUE(items.items.empty());
}

TEST_F(FolderFunctions, DoNothingWithoutACallback) {
  EXPECT_EQ(trv_all_app("/root", 1, nullptr, nullptr), -1);
  EXPECT_EQ(trv_sub_app("/root", nullptr, nullptr), -1);
  EXPECT_EQ(trv_sub_download("/root", nullptr, nullptr), -1);
  EXPECT_TRUE(tree().log.empty());
}

TEST_F(FolderFunctions, ReportNothingForAFolderThatIsMissing) {
  EXPECT_EQ(trv_all_app("/none", 1, RecordedItems::item, nullptr), -1);
  EXPECT_EQ(all("/none"), Items{});
  EXPECT_EQ(first("/none"), Items{});
  EXPECT_EQ(downloads("/none"), Paths{});
  EXPECT_EQ(get_folder_size("/none"), 0u);
}

TEST_F(FolderFunctions, AReadableFolderGivesZero) {
  EXPECT_EQ(trv_all_app("/root", 1, RecordedItems::item, nullptr), 0);
  EXPECT_EQ(trv_sub_app("/root", RecordedItems::item, nullptr), 0);
  EXPECT_EQ(trv_sub_download("/root", RecordedItems::download, nullptr), 0);
}

TEST_F(FolderFunctions, ACallbackThatThrowsEndsTheTraversalAndBecomesALogLine) {
  Paths lines;
  setLogSink([&lines](std::string_view line) { lines.emplace_back(line); });
  tree().folder("One.app");
  tree().folder("Two.app");
  items.onItem = [] { throw std::runtime_error("not today"); };
  EXPECT_EQ(all().size(), 1u);
  setLogSink({});
  ASSERT_EQ(lines.size(), 1u);
  EXPECT_NE(lines[0].find("not today"), std::string::npos);
  EXPECT_EQ(tree().openFolders, 0u);
}

TEST_F(FolderFunctions, ACallbackMayTraverse) {
  tree().folder("a/One.app");
  tree().folder("b/Two.app");
  std::uint64_t sizes = 0;
  items.onItem = [&sizes, this] {
    items.onItem = nullptr;
    sizes += get_folder_size("/root");
    trv_sub_app("/root/b", RecordedItems::item, nullptr);
  };
  EXPECT_EQ(all(), (Items{{"/root/a", 0},
                          {"/root/b/Two.app", 1},
                          {"/root/b", 0},
                          {"/root/a/One.app", 1},
                          {"/root/b/Two.app", 1}}));
}

TEST_F(FolderFunctions, SizeIsThatOfAllFilesAtEveryDepth) {
  tree().file("a", 5);
  tree().file("b/c/d", 1ull << 40);
  tree().file("One.app/Contents/tool", 100);
  EXPECT_EQ(get_folder_size("/root"), (1ull << 40) + 105);
}

TEST_F(FolderFunctions, SizeCountsAFileWithSeveralNamesOnce) {
  tree().file("a", 100);
  tree().hardLink("a", "b/c");
  tree().hardLink("a", "d");
  tree().file("e", 100);
  EXPECT_EQ(get_folder_size("/root"), 200u);
}

TEST_F(FolderFunctions, SizeLeavesOutWhatIsNoFile) {
  tree().file("a", 5);
  tree().other("pipe");
  tree().link("l");
  EXPECT_EQ(get_folder_size("/root"), 5u);
}

TEST_F(FolderFunctions, SizeLeavesOutWhatCantBeRead) {
  tree().file("a", 5);
  tree().file("closed/b", 7);
  tree().file("gone", 11);
  tree().refuse("closed");
  tree().refuseFacts("gone");
  EXPECT_EQ(get_folder_size("/root"), 5u);
}

TEST_F(FolderFunctions, SizeLeavesOutAFileThatBecameALinkWhileItWasCounted) {
  tree().file("a", 5);
  tree().file("b", 7);
  tree().beforeFacts = [this](const std::string& name) {
    if (name == "b") tree().replaceByLink("b");
  };
  EXPECT_EQ(get_folder_size("/root"), 5u);
}

TEST_F(FolderFunctions, SizeOfADeepTreeTakesABoundedNumberOfOpenFolders) {
  tree().file(tree().chain(2000) + "/f", 7);
  EXPECT_EQ(get_folder_size("/root"), 7u);
  EXPECT_LE(tree().mostOpenFolders, 40u);
}

}  // namespace
}  // namespace vantile
