// The folder functions on large and odd trees, against find(1).

#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <atomic>
#include <chrono>
#include <climits>
#include <filesystem>
#include <set>
#include <sstream>
#include <thread>
#include <utility>
#include <vector>

#include "vantile/utility/folder_functions.h"

#include "fakes/open_descriptors.h"
#include "fakes/temporary_folder.h"
#include "live/command.h"

namespace vantile {
namespace {

using testing::quoted;
using testing::run;
using testing::TemporaryFolder;
using Items = std::vector<std::pair<std::string, std::int32_t>>;

Items items;
void takeItem(const char* path, std::int32_t kind) {
  items.emplace_back(path, kind);
}
void takeDownload(const char* path) {
  items.emplace_back(path, 0);
}

/// The bytes of all files below a folder as find sees them, each inode once.
std::uint64_t sizeByFind(const std::string& folder) {
  std::istringstream lines(
      run("(find " + quoted(folder) + " -type f -printf '%i %s\\n' 2>/dev/null)").text);
  std::set<std::uint64_t> counted;
  std::uint64_t inode = 0, size = 0, bytes = 0;
  while (lines >> inode >> size)
    if (counted.insert(inode).second) bytes += size;
  return bytes;
}

/// What find lists: each item a kind, a space, a path and a NUL.
Items itemsByFind(const std::string& expression) {
  std::istringstream entries(run("find " + expression).text);
  Items found;
  for (std::string entry; std::getline(entries, entry, '\0');)
    found.emplace_back(entry.substr(2), entry[0] - '0');
  std::sort(found.begin(), found.end());
  return found;
}

Items sorted(Items unsorted) {
  std::sort(unsorted.begin(), unsorted.end());
  return unsorted;
}

/// A tree with everything in it that names and links can be.
struct LiveFolders : ::testing::Test {
  LiveFolders() {
    items.clear();
    for (const std::string& name :
         {std::string("plain"), std::string("new\nline"), std::string("\xFF\xFE"),
          std::string("-leading"), std::string(" "), std::string("..."), std::string(255, 'n'),
          std::string("Tool.app"), std::string("quote'\"\\*?[")}) {
      tree.file(name + "/file", std::string(name.size(), 'x'));
      tree.file(name + "/deeper/" + name + "/" + name, name);
      tree.file(name.substr(0, 200) + ".AppImage.part", name);
    }
    for (const char* name : {"a.crdownload", "b.part", "c.download/Info.plist", "d.opdownload"})
      tree.file(name, "unfinished");
    tree.file("Editor.AppImage", "elf");
    tree.file("many/0", std::string(1000, 'x'));
    for (int i = 1; i < 50; ++i) tree.hardLink("many/0", "many/" + std::to_string(i));
    tree.folder("loops/inner");
    tree.symbolicLink("loops/self", "self");
    tree.symbolicLink("loops/inner/up", "..");
    tree.symbolicLink("loops/out", "/");
    tree.symbolicLink("loops/Linked.app", "../Tool.app");
  }
  ~LiveFolders() override {
    // Deeper than what std::filesystem removes with the descriptors that there are.
    run("rm -rf -- " + quoted(tree.path()));
  }

  /// A chain of that many folders with a file at its end and one beside each hundredth folder.
  void dig(int depth) {
    int at = ::open(tree.path().c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC);
    for (int level = 0; level < depth; ++level) {
      ASSERT_EQ(::mkdirat(at, "level", 0700), 0);
      const int inner = ::openat(at, "level", O_RDONLY | O_DIRECTORY | O_CLOEXEC);
      if (level % 100 == 99) {
        ASSERT_EQ(::mkdirat(at, "side", 0700), 0);
        write(at, "side/file");
      }
      ::close(at);
      at = inner;
      ASSERT_GE(at, 0);
    }
    write(at, "bottom");
    ::close(at);
  }
  static void write(int folder, const char* name) {
    const int file = ::openat(folder, name, O_WRONLY | O_CREAT | O_CLOEXEC, 0600);
    EXPECT_EQ(::write(file, "1234567", 7), 7);
    ::close(file);
  }

  std::string applicationsAndFolders(const std::string& depth) const {
    return quoted(tree.path()) + " -mindepth 1" + depth +
           " \\( -type d -name '*?.app' -printf '1 %p\\0' -prune"
           " -o -type f -iname '*?.AppImage' -printf '1 %p\\0'";
  }

  const TemporaryFolder tree;
};

TEST_F(LiveFolders, SizeIsWhatFindAddsUp) {
  EXPECT_EQ(get_folder_size(tree.path().c_str()), sizeByFind(tree.path()));
  EXPECT_GT(sizeByFind(tree.path()), 1500u);
}

TEST_F(LiveFolders, SizeOfATreeOf3000LevelsIsWhatFindAddsUp) {
  dig(3000);
  EXPECT_EQ(get_folder_size(tree.path().c_str()), sizeByFind(tree.path()));
}

TEST_F(LiveFolders, ApplicationsAndFoldersAreThoseThatFindLists) {
  trv_all_app(tree.path().c_str(), 1, takeItem, nullptr);
  EXPECT_EQ(sorted(items),
            itemsByFind(applicationsAndFolders("") + " -o -type d -printf '0 %p\\0' \\)"));
  EXPECT_GT(items.size(), 25u);
}

TEST_F(LiveFolders, FoldersOfATreeOf3000LevelsAreThoseThatFindLists) {
  dig(3000);
  trv_all_app(tree.path().c_str(), 1, takeItem, nullptr);
  const auto longest = std::max_element(
      items.begin(), items.end(), [](auto& a, auto& b) { return a.first.size() < b.first.size(); });
  ASSERT_NE(longest, items.end());
  EXPECT_GT(longest->first.size(), static_cast<std::size_t>(PATH_MAX));
  // Compared outside the expectation, which would print megabytes.
  const bool same = sorted(items) ==
                    itemsByFind(applicationsAndFolders("") + " -o -type d -printf '0 %p\\0' \\)");
  EXPECT_TRUE(same);
}

TEST_F(LiveFolders, ApplicationsOfTheFirstLevelAreThoseThatFindLists) {
  trv_sub_app(tree.path().c_str(), takeItem, nullptr);
  EXPECT_EQ(sorted(items), itemsByFind(applicationsAndFolders(" -maxdepth 1") + " \\)"));
  EXPECT_EQ(items.size(), 2u);
}

TEST_F(LiveFolders, UnfinishedDownloadsAreThoseThatFindLists) {
  trv_sub_download(tree.path().c_str(), takeDownload, nullptr);
  EXPECT_EQ(sorted(items),
            itemsByFind(quoted(tree.path()) +
                        " -mindepth 1 -maxdepth 1 \\( -type f -o -type d \\)"
                        " \\( -name '?*.part' -o -name '?*.download' -o -name '?*.crdownload'"
                        " -o -name '?*.opdownload' \\) -printf '0 %p\\0'"));
  EXPECT_EQ(items.size(), 13u);
}

TEST_F(LiveFolders, ADeepTreeTakesFewDescriptors) {
  dig(500);
  static std::size_t most;
  most = 0;
  trv_all_app(
      tree.path().c_str(), 1,
      [](const char*, std::int32_t) { most = std::max(most, testing::openDescriptors()); },
      nullptr);
  EXPECT_GT(most, 3u);
  EXPECT_LT(most, 64u);
}

TEST_F(LiveFolders, FoldersClosedToTheUserAreLeftOut) {
  if (::geteuid() == 0) GTEST_SKIP() << "no folder is closed to root";
  ASSERT_EQ(::chmod(tree.path("many").c_str(), 0), 0);
  EXPECT_EQ(get_folder_size(tree.path().c_str()), sizeByFind(tree.path()));
  ASSERT_EQ(::chmod(tree.path("many").c_str(), 0700), 0);
}

TEST_F(LiveFolders, SizeOfAFolderOfTheSystemIsWhatFindAddsUp) {
  const auto expected = sizeByFind("/usr/include");
  if (expected == 0) GTEST_SKIP() << "/usr/include is empty";
  EXPECT_EQ(get_folder_size("/usr/include"), expected);
}

struct LiveStop : ::testing::Test {
  static constexpr int enough = 100;
  static inline std::atomic<int> calls;
  static inline std::int32_t flag;

  void SetUp() override {
    calls = 0;
    flag = 0;
  }
};

TEST_F(LiveStop, AFlagSetByAnotherThreadEndsALargeTraversal) {
  trv_all_app(
      "/usr", 1, [](const char*, std::int32_t) { ++calls; }, nullptr);
  const int whole = calls;
  if (whole < 3 * enough) GTEST_SKIP() << "/usr has only " << whole << " folders";
  calls = 0;
  std::thread stopper([] {
    for (int seen = calls; seen < enough; seen = calls) calls.wait(seen);
    std::atomic_ref<std::int32_t>(flag).store(1);
    std::atomic_ref<std::int32_t>(flag).notify_all();
  });
  trv_all_app(
      "/usr", 1,
      [](const char*, std::int32_t) {
        const bool last = ++calls == enough;
        calls.notify_all();
        if (last)
          std::atomic_ref<std::int32_t>(flag).wait(
              0);  // so that no more calls come before it is set
      },
      &flag);
  stopper.join();
  EXPECT_EQ(calls, enough);
}

TEST_F(LiveStop, AFlagSetAtAnyMomentEndsATraversalWithoutHarm) {
  for (int round = 0; round < 20; ++round) {
    flag = 0;
    std::thread stopper([round] {
      const auto moment = std::chrono::steady_clock::now() + round * std::chrono::microseconds(50);
      while (std::chrono::steady_clock::now() < moment) {
      }
      std::atomic_ref<std::int32_t>(flag).store(1);
    });
    trv_all_app(
        "/usr", 1, [](const char*, std::int32_t) { ++calls; }, &flag);
    stopper.join();
  }
  SUCCEED();
}

}  // namespace
}  // namespace vantile
