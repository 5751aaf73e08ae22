// The accounting of space by kinds of files on volumes that are large, go, are swapped, or hang.

#include <fcntl.h>
#include <gtest/gtest.h>
#include <malloc.h>
#include <stdlib.h>
#include <sys/mount.h>
#include <unistd.h>

#include <atomic>
#include <cerrno>
#include <chrono>
#include <filesystem>
#include <fstream>
#include <memory>
#include <optional>
#include <string>
#include <system_error>
#include <thread>
#include <utility>

#include "vantile/platform/linux/category_sizes.h"
#include "vantile/platform/linux/content_kinds.h"
#include "vantile/platform/linux/usage_volumes.h"

#include "live/category_fixture.h"
#include "live/command.h"
#include "live/fuse_server.h"
#include "live/sanitized.h"

namespace vantile {
namespace {

using namespace std::chrono_literals;
using testing::quoted;
using testing::run;

std::size_t residentKib(const char* which) {
  std::ifstream status("/proc/self/status");
  std::string word;
  std::size_t size = 0;
  while (status >> word)
    if (word == which) status >> size;
  return size;
}

/// How many files a volume of many has. A million takes half a minute.
std::size_t manyFiles() {
  return ::getenv("VANTILE_MILLION_FILES") ? 1000000 : 200000;
}

/// A file system in memory, since a disk takes long to make as many files; gone with its owner.
class InMemory {
 public:
  explicit InMemory(std::string path) : path_(std::move(path)) {
    isMounted_ = ::mount("none", path_.c_str(), "tmpfs", 0, "nr_inodes=2000000") == 0;
  }
  ~InMemory() { unmount(MNT_DETACH); }
  InMemory(const InMemory&) = delete;
  InMemory& operator=(const InMemory&) = delete;

  explicit operator bool() const { return isMounted_; }
  /// 0, or why not.
  int unmount(int flags = 0) {
    if (!isMounted_) return 0;
    if (::umount2(path_.c_str(), flags) != 0) return errno;
    isMounted_ = false;
    return 0;
  }
  /// Puts empty photos in folders of so many each.
  void fill(std::size_t files, std::size_t inFolder) const {
    for (std::size_t folder = 0; folder * inFolder < files; ++folder) {
      const auto path = path_ + "/Holiday " + std::to_string(folder);
      std::filesystem::create_directory(path);
      const int at = ::open(path.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC);
      for (std::size_t file = 0; file < inFolder; ++file) {
        const auto name = "IMG_20240819_" + std::to_string(100000 + file) + ".jpg";
        ::close(::openat(at, name.c_str(), O_WRONLY | O_CREAT | O_CLOEXEC, 0600));
      }
      ::close(at);
    }
  }

 private:
  const std::string path_;
  bool isMounted_ = false;
};

#define MOUNTED_OR_SKIPPED(volume) \
  if (!(volume)) GTEST_SKIP() << "nothing can be mounted here, which takes root"

struct LiveManyFiles : testing::CountedTree {
  /// What the process takes at most, from here on, beyond what it takes now, in KiB.
  template <class Work>
  static std::size_t peakOf(Work work) {
    std::ofstream("/proc/self/clear_refs") << "5" << std::flush;  // the peak begins anew
    const auto before = residentKib("VmRSS:");
    work();
    return residentKib("VmHWM:") - before;
  }
  /// First, taken up, asked again, and listed again: what each takes at most.
  void expectSmall(const std::string& name, std::size_t inFolder) {
    if (testing::sanitized) GTEST_SKIP() << "a sanitizer's memory is not the library's";
    const auto path = tree.folder("many");
    const InMemory volume(path);
    MOUNTED_OR_SKIPPED(volume);
    volume.fill(manyFiles(), inFolder);
    kindByDatabase("a.jpg");                    // the database is the process's
    const auto most = manyFiles() * 64 / 1000;  // KiB: 64 MiB for a million
    std::optional<UsageAccounting> accounting;
    const auto expect = [&](const char* what, auto work) {
      const auto begin = std::chrono::steady_clock::now();
      const auto peak = peakOf(work);
      const auto took = std::chrono::steady_clock::now() - begin;
      EXPECT_LE(peak, most) << what;
      RecordProperty(name + what + "_kib", static_cast<int>(peak));
      RecordProperty(name + what + "_ms", static_cast<int>(took / 1ms));
    };
    const auto start = [&] {
      auto made = means();
      made.pace.batch = UsagePace().batch;
      made.pace.hold = UsagePace().hold;
      accounting.emplace(std::move(made));
      accounting->want({path}, never);
      while (accounting->figures().empty()) accounting->turn(never);
    };
    const auto begin = std::chrono::steady_clock::now();
    expect("counted", start);
    EXPECT_LT(std::chrono::steady_clock::now() - begin, 60s);
    accounting.reset();
    ::malloc_trim(0);
    expect("taken_up", [&] {
      start();
      EXPECT_EQ(accounting->listed(), 0u);
      std::ofstream(path + "/Holiday 0/new.jpg") << "x" << std::flush;
      const auto end = std::chrono::steady_clock::now() + 60s;
      const auto photos = [&] { return accounting->figures().at(path)[3]; };
      while (photos() == 0 && std::chrono::steady_clock::now() < end) {
        std::this_thread::sleep_for(1ms);
        accounting->turn(never);
      }
      EXPECT_GT(photos(), 0u);
    });
  }
};

TEST_F(LiveManyFiles, InFoldersTakeLittleMemory) {
  expectSmall("in_folders_", 1000);
}

TEST_F(LiveManyFiles, InOneFolderTakeLittleMemory) {
  expectSmall("in_one_", manyFiles());
}

std::size_t usageThreads() {
  std::size_t count = 0;
  for (const auto& task : std::filesystem::directory_iterator("/proc/self/task")) {
    std::string name;
    std::getline(std::ifstream(task.path() / "comm"), name);
    count += name == "vantile-usage" || name == "vantile-kinds";
  }
  return count;
}

TEST_F(LiveManyFiles, AreLeftAtOnceWhenTheOwnerGoes) {
  const auto path = tree.folder("many");
  const InMemory volume(path);
  MOUNTED_OR_SKIPPED(volume);
  volume.fill(100000, 100000);
  for (const auto wait : {1ms, 30ms, 80ms}) {
    auto categories = std::make_unique<LinuxVolumeCategories>(
        LinuxVolumeCategories::Means{.accounting = [plain = means()](bool) { return plain; }});
    categories->want({path});
    std::this_thread::sleep_for(wait);
    const auto begin = std::chrono::steady_clock::now();
    categories.reset();
    EXPECT_LT(std::chrono::steady_clock::now() - begin, 50ms);
    while (usageThreads() > 0 && std::chrono::steady_clock::now() - begin < 5s)
      std::this_thread::sleep_for(1ms);
    // On a machine that is busy with other things, the threads wait for it.
    EXPECT_EQ(usageThreads(), 0u);
  }
}

/// Whether this process has something open below that path.
bool isHeldOpen(const std::string& path) {
  for (const auto& each : std::filesystem::directory_iterator("/proc/self/fd")) {
    std::error_code gone;
    if (std::filesystem::read_symlink(each.path(), gone).string().starts_with(path)) return true;
  }
  return false;
}

TEST_F(LiveManyFiles, LeaveTheVolumeToBeUnmountedDuringTheFirstPass) {
  const auto path = tree.folder("many");
  InMemory volume(path);
  MOUNTED_OR_SKIPPED(volume);
  volume.fill(100000, 1000);
  auto made = means();
  made.pace.firstBatch = 10000000;
  made.pace.hold = 2ms;
  made.pace.release = 6ms;
  UsageAccounting accounting(std::move(made));
  std::atomic<bool> isOver = false;
  std::thread counting([&] {
    accounting.want({path}, never);
    while (!isOver && accounting.figures().empty())
      std::this_thread::sleep_for(accounting.turn([&] { return isOver.load(); }).value_or(0ns));
  });
  while (!isHeldOpen(path)) std::this_thread::yield();
  int busy = 0, error = 0;
  for (; (error = volume.unmount()) == EBUSY; ++busy) std::this_thread::sleep_for(1ms);
  isOver = true;
  counting.join();
  EXPECT_EQ(error, 0);
  EXPECT_LE(accounting.listed(), 100u);  // of 101
  RecordProperty("busy", busy);
}

using LiveCountedVolume = testing::CountedTree;

TEST_F(LiveCountedVolume, AVolumeThatHangsHoldsUpNoOtherNorTheEnd) {
  const auto at = tree.folder("served");
  const auto image = quoted(tree.file("image"));
  auto device = run("truncate -s 16M " + image + " && losetup -f --show " + image);
  if (device.status != 0) GTEST_SKIP() << device.text;
  device.text.pop_back();
  testing::FuseServer server;
  const auto refused = server.mountAt(device.text, at);
  run("losetup -d " + device.text);  // once nobody uses it
  if (!refused.empty()) GTEST_SKIP() << refused;
  server.answers = false;
  write("films/a.mkv", 100000);
  UsageVolumes volumes;
  ASSERT_TRUE(volumes.mayHang(at));
  auto categories = std::make_unique<LinuxVolumeCategories>(LinuxVolumeCategories::Means{
      .accounting = [plain = means()](bool) { return plain; },
      .mayHang = [&volumes](const std::string& path) { return volumes.mayHang(path); }});
  categories->want({at, tree.path("films")});
  while (server.asked == 0) std::this_thread::sleep_for(1ms);
  while (!categories->of(tree.path("films"))) std::this_thread::sleep_for(1ms);
  EXPECT_FALSE(categories->of(at));
  const auto begin = std::chrono::steady_clock::now();
  categories.reset();
  EXPECT_LT(std::chrono::steady_clock::now() - begin, 50ms);
}

TEST_F(LiveCountedVolume, AVolumeThatTakesAnothersPlaceHasItsOwnSizes) {
  const auto at = tree.folder("volume");
  const auto mounted = [&](const std::string& image) {
    return run("mount -o loop " + quoted(tree.path(image)) + " " + quoted(at)).status == 0;
  };
  const auto made = [&](const std::string& image, std::size_t bytes) {
    const auto path = quoted(tree.path(image));
    if (run("truncate -s 16M " + path + " && mkfs.ext4 -q -F " + path).status != 0) return false;
    if (!mounted(image)) return false;
    std::ofstream(at + "/" + image + ".mkv") << std::string(bytes, 'x') << std::flush;
    return run("umount " + quoted(at)).status == 0;
  };
  if (!made("one", 100000) || !made("two", 500000) || !mounted("one"))
    GTEST_SKIP() << "no volume can be mounted here";
  LinuxVolumeCategories categories({.accounting = [plain = means()](bool) {
    auto unhurried = plain;
    unhurried.pace.period = 1h;  // not found by a further pass
    return unhurried;
  }});
  const auto awaited = [&](std::uint64_t least, std::uint64_t most) {
    for (int tries = 0; tries < 5000; ++tries, std::this_thread::sleep_for(1ms)) {
      const auto sizes = categories.of(at);
      const auto movies = sizes ? sizes->sizes->at(6).uint64() : std::nullopt;
      if (movies && *movies >= least && *movies <= most) return true;
    }
    return false;
  };
  categories.want({at});
  EXPECT_TRUE(awaited(100000, 110000));
  EXPECT_EQ(run("umount " + quoted(at)).status, 0);
  EXPECT_TRUE(mounted("two"));
  EXPECT_TRUE(awaited(500000, 520000));
  EXPECT_EQ(run("umount " + quoted(at)).status, 0);
  EXPECT_TRUE(mounted("one"));
  EXPECT_TRUE(awaited(100000, 110000));
  ::umount2(at.c_str(), MNT_DETACH);
}

}  // namespace
}  // namespace vantile
