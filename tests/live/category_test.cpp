// The accounting of space by kinds of files, against find(1) and the MIME type of each whole name.

#include <fcntl.h>
#include <gio/gio.h>
#include <gtest/gtest.h>
#include <linux/ioprio.h>
#include <sched.h>
#include <sys/mount.h>
#include <sys/syscall.h>
#include <sys/wait.h>
#include <unistd.h>

#include <chrono>
#include <filesystem>
#include <fstream>
#include <functional>
#include <map>
#include <memory>
#include <optional>
#include <set>
#include <sstream>
#include <thread>

#include "vantile/platform/linux/category_sizes.h"

#include "live/category_fixture.h"
#include "live/command.h"

namespace vantile {
namespace {

using namespace std::chrono_literals;
using testing::quoted;
using testing::run;

using LiveCategories = testing::CountedTree;

/// What the MIME database makes of a whole name.
std::optional<UsageKind> kindOfWholeName(const std::string& name) {
  if (isAppImage(name)) return UsageKind::applications;
  char* const type = g_content_type_guess(name.c_str(), nullptr, 0, nullptr);
  const auto kind = kindOfType(type);
  g_free(type);
  return kind;
}

/// Bytes on the disk by kind, each inode once, of the files that find sees.
UsageSums countedByFind(const std::string& folder, bool allInstalled = false) {
  std::istringstream names(
      run("find " + quoted(folder) + " -xdev -type f -printf '%i %b %f\\0' 2>/dev/null").text);
  std::map<std::uint64_t, std::pair<std::uint64_t, UsageKind>> files;
  std::uint64_t inode = 0, blocks = 0;
  std::string name;
  while (names >> inode >> blocks && names.get() && std::getline(names, name, '\0')) {
    const auto kind = allInstalled ? UsageKind::applications : kindOfWholeName(name);
    if (!kind) continue;
    auto& known = files.try_emplace(inode, blocks, *kind).first->second;
    known.second = std::min(known.second, *kind);
  }
  UsageSums sums = {};
  for (const auto& [number, file] : files)
    sums[static_cast<std::size_t>(file.second)] += file.first * 512;
  return sums;
}

TEST_F(LiveCategories, APreparedTreeIsCountedExactly) {
  const char* const endings[] = {
      "mp4",  "MKV",  "avi",  "webm",     "mov",    "mp3",    "flac",   "ogg",     "oga",
      "ogv",  "m4a",  "wav",  "opus",     "JPG",    "jpeg",   "png",    "svg",     "gif",
      "heic", "cr2",  "txt",  "pdf",      "tar.gz", "eps.gz", "zip",    "c",       "C",
      "ts",   "jpg~", "svgz", "AppImage", "psd",    "mid",    "vdr.gz", "jpg.part"};
  std::size_t number = 0;
  for (const auto* const ending : endings)
    for (const std::size_t size : {0u, 1u, 5000u, 70000u}) {
      ++number;
      write("group " + std::to_string(number % 7) + "/\xFF" + std::to_string(number) + "." + ending,
            size);
      write(std::to_string(number) + "." + ending, size);
    }
  for (const auto* const name : {"README", "001.vdr", "1.vdr", "a", ".jpg", "x.", "makefile.png"})
    write(std::string("odd/") + name, 3000);
  tree.hardLink("1.mp4", "odd/linked.mp4");
  tree.hardLink("1.mp4", "odd/linked.mp3");
  const auto expected = countedByFind(tree.path());
  for (const auto sum : expected) EXPECT_GT(sum, 0u);
  EXPECT_EQ(counted(tree.path()), expected);
}

TEST_F(LiveCategories, TheMachinesOwnFilesAreCountedExactly) {
  EXPECT_EQ(counted("/usr/share"), countedByFind("/usr/share"));
  EXPECT_EQ(counted("/usr/lib", {"/usr"}), countedByFind("/usr/lib", true));
}

/// Shows folders of a tree as parts of its file system: "system" as the root, and "data" therein.
bool mountParts(const testing::TemporaryFolder& tree) {
  const auto root = tree.path("system");
  const auto bind = [&root](const std::string& what, const std::string& where) {
    return ::mount(what.c_str(), (root + where).c_str(), nullptr, MS_BIND, nullptr) == 0;
  };
  return ::unshare(CLONE_NEWNS) == 0 &&
         ::mount(nullptr, "/", nullptr, MS_REC | MS_PRIVATE, nullptr) == 0 && bind(root, "") &&
         bind(tree.path("data"), "/data") && bind("/proc", "/proc");
}

/// What the library's own accounting counts at "/" once the process has `top` for its root, which
/// it keeps; nothing where it may not.
std::optional<UsageSums> countedAsRoot(const std::string& top) {
  if (::chroot(top.c_str()) != 0 || ::chdir("/") != 0) return std::nullopt;
  UsageAccounting accounting(
      systemAccounting(false, XdgFolders("/home", [](const char*) { return std::nullopt; })));
  const auto never = [] { return false; };
  accounting.want({"/"}, never);
  while (accounting.figures().empty()) accounting.turn(never);
  return accounting.figures().at("/");
}

/// What a child of ours finds, or nothing.
std::optional<UsageSums> byChild(const std::function<std::optional<UsageSums>()>& find) {
  kindByDatabase("a.mkv");  // which another root does not have
  int ends[2] = {};
  if (::pipe(ends) != 0) return std::nullopt;
  const auto child = ::fork();
  if (child == 0) {
    const auto sums = find();
    const bool told = sums && ::write(ends[1], &*sums, sizeof *sums) == sizeof *sums;
    ::_exit(told ? 0 : 1);
  }
  ::close(ends[1]);
  UsageSums found = {};
  const auto size = ::read(ends[0], &found, sizeof found);
  ::close(ends[0]);
  ::waitpid(child, nullptr, 0);
  return size == sizeof found ? std::optional(found) : std::nullopt;
}

TEST_F(LiveCategories, MountedPartsOfAFileSystemCountWithIt) {
  for (const auto* const name : {"system/a.mkv", "data/below/b.mkv", "elsewhere/c.mkv"})
    write(name, 50000);
  for (const auto* const folder : {"system/data", "system/proc"}) tree.folder(folder);
  const auto found = byChild([&]() -> std::optional<UsageSums> {
    return mountParts(tree) ? countedAsRoot(tree.path("system")) : std::nullopt;
  });
  if (!found) GTEST_SKIP() << "another root takes the superuser's rights";
  EXPECT_EQ((*found)[1],
            countedByFind(tree.path("system"))[1] + countedByFind(tree.path("data"))[1]);
}

TEST_F(LiveCategories, AtTheRootWhatIsInstalledIsAnApplication) {
  std::uint64_t installed = 0, movies = 0;
  for (const auto* const name :
       {"usr/share/a.png", "opt/b/c.mkv", "var/lib/flatpak/d", "var/lib/snapd/e.mp3", "snap/f.ogg",
        "home/.local/share/flatpak/g.jpg", "home/h.AppImage"}) {
    write(name, 50000);
    installed += countedByFind(tree.path(name), true)[0];
  }
  for (const auto* const name : {"home/i.mkv", "var/lib/j.mkv", "usr2/k.mkv"}) {
    write(name, 50000);
    movies += countedByFind(tree.path(name))[1];
  }
  const auto found = byChild([this] { return countedAsRoot(tree.path()); });
  if (!found) GTEST_SKIP() << "another root takes the superuser's rights";
  EXPECT_EQ(*found, (UsageSums{installed, movies, 0, 0}));
}

TEST_F(LiveCategories, AnInterruptedPassIsTakenUpAndComesToTheSame) {
  std::size_t listed = 0;
  for (int round = 1; round <= 3; ++round) {
    UsageAccounting accounting(means());
    accounting.want({"/usr/share"}, never);
    int left = round * 4000;
    while (left > 0 && accounting.figures().empty())
      accounting.turn([&left] { return --left < 0; });
    listed += accounting.listed();
    EXPECT_TRUE(accounting.figures().empty());
    accounting.keepSmall();
  }
  UsageAccounting accounting(means());
  accounting.want({"/usr/share"}, never);
  while (accounting.figures().empty()) accounting.turn(never);
  EXPECT_EQ(accounting.figures().at("/usr/share"), countedByFind("/usr/share"));
  const auto folders = std::stoul(run("find /usr/share -xdev -type d | wc -l").text);
  EXPECT_GE(listed, 100u);
  EXPECT_LE(accounting.listed() + listed, folders + 3);  // those that it was in
}

TEST_F(LiveCategories, GrowthAdditionAndRemovalAreFoundByListingChangedFoldersAlone) {
  for (int folder = 0; folder < 50; ++folder)
    for (int file = 0; file < 20; ++file)
      write("f" + std::to_string(folder) + "/" + std::to_string(file) + ".jpg", 1000);
  std::this_thread::sleep_for(4s);  // until no change can have the same time any more
  UsageAccounting accounting(means());
  accounting.want({tree.path()}, never);
  while (accounting.figures().empty()) accounting.turn(never);
  EXPECT_EQ(accounting.listed(), 51u);
  EXPECT_EQ(refreshed(accounting), 0u);
  std::ofstream(tree.path("f3/7.jpg"), std::ios::app) << std::string(100000, 'x') << std::flush;
  EXPECT_EQ(refreshed(accounting), 0u);
  EXPECT_EQ(accounting.figures().at(tree.path()), countedByFind(tree.path()));
  write("f4/new.mkv", 50000);
  tree.remove("f5/3.jpg");
  EXPECT_EQ(refreshed(accounting), 2u);
  EXPECT_EQ(accounting.figures().at(tree.path()), countedByFind(tree.path()));
}

TEST_F(LiveCategories, OtherMountsAreNotEntered) {
  write("films/a.mkv", 100000);
  tree.folder("bound");
  tree.folder("other");
  if (::mount("none", tree.path("other").c_str(), "tmpfs", 0, nullptr) != 0)
    GTEST_SKIP() << "nothing can be mounted here, which takes root";
  write("other/b.mkv", 100000);
  EXPECT_EQ(
      ::mount(tree.path("films").c_str(), tree.path("bound").c_str(), nullptr, MS_BIND, nullptr),
      0);
  const auto found = counted(tree.path());
  ::umount2(tree.path("bound").c_str(), MNT_DETACH);
  ::umount2(tree.path("other").c_str(), MNT_DETACH);
  EXPECT_GT(found[1], 0u);
  EXPECT_EQ(found, countedByFind(tree.path("films")));
}

TEST_F(LiveCategories, TheThreadTakesWhatNobodyElseWants) {
  LinuxVolumeCategories categories({.accounting = [this](bool) { return means(); }});
  write("a.jpg", 1000);
  categories.want({tree.path()});
  while (!categories.of(tree.path())) std::this_thread::sleep_for(1ms);
  int found = 0;
  for (const auto& task : std::filesystem::directory_iterator("/proc/self/task")) {
    std::string name;
    std::getline(std::ifstream(task.path() / "comm"), name);
    if (name != "vantile-usage") continue;
    ++found;
    const auto number = std::stoi(task.path().filename());
    EXPECT_EQ(::sched_getscheduler(number), SCHED_IDLE);
    EXPECT_EQ(IOPRIO_PRIO_CLASS(::syscall(SYS_ioprio_get, IOPRIO_WHO_PROCESS, number)),
              IOPRIO_CLASS_IDLE);
  }
  EXPECT_EQ(found, 1);
}

}  // namespace
}  // namespace vantile
