// Volumes that come and go on this machine, against findmnt, df and stat. All of it happens in a
// mount namespace of the test's own, which nobody else sees.

#include "vantile/disk/disk.h"

#include <gtest/gtest.h>
#include <sched.h>
#include <sys/mount.h>
#include <unistd.h>

#include <chrono>
#include <cstring>
#include <filesystem>
#include <functional>
#include <memory>
#include <sstream>
#include <string>
#include <thread>
#include <vector>

#include "vantile/platform/linux/kept_file.h"
#include "vantile/platform/posix/files.h"

#include "fakes/temporary_folder.h"
#include "live/command.h"
#include "live/fuse_server.h"

namespace vantile {
namespace {

using namespace std::chrono_literals;
using testing::quoted;
using testing::run;
using Clock = std::chrono::steady_clock;
using Row = std::shared_ptr<Dictionary>;

/// A monitor whose samples a test asks for.
class Sampled {
 public:
  Sampled() {
    delegate_->diskDetails = [this](const Array& volumes) {
      rows.clear();
      for (const auto& volume : volumes) rows.push_back(*volume.as<Row>());
    };
    monitor_->setDelegate(delegate_);
    monitor_->setFreshInterval(0);
  }
  ~Sampled() { monitor_->setDelegate(nullptr); }
  Sampled(const Sampled&) = delete;
  Sampled& operator=(const Sampled&) = delete;

  Clock::duration tick() {
    const auto begin = Clock::now();
    monitor_->updateInfo();
    return Clock::now() - begin;
  }
  /// The volume at that mount point, as the last sample told of it; null for none.
  Row at(const std::string& path) const {
    for (const auto& row : rows)
      if (*row->text("disk_path") == path) return row;
    return nullptr;
  }

  std::vector<Row> rows;

 private:
  std::shared_ptr<KVDDisk> monitor_ = KVDDisk::init();
  std::shared_ptr<DiskDelegate> delegate_ = std::make_shared<DiskDelegate>();
};

/// Why this process has no mounts of its own; empty where it has.
const std::string& refusedNamespace() {
  static const std::string refused = [] {
    if (::geteuid() != 0) return std::string("only root mounts");
    if (::unshare(CLONE_NEWNS) != 0 || ::mount("none", "/", nullptr, MS_REC | MS_PRIVATE, nullptr))
      return std::string("no mount namespace: ") + std::strerror(errno);
    return std::string();
  }();
  return refused;
}

struct LiveDisk : ::testing::Test {
  void SetUp() override {
    if (!refusedNamespace().empty()) GTEST_SKIP() << refusedNamespace();
  }
  void TearDown() override {
    for (auto step = undo.rbegin(); step != undo.rend(); ++step) (*step)();
  }

  /// Makes a file system in a file; why not, where it can't.
  std::string make(const std::string& image, const std::string& command) {
    const auto made =
        run("truncate -s 64M " + quoted(image) + " && " + command + " " + quoted(image));
    return made.status == 0 ? "" : made.text;
  }
  /// Mounts what `arguments` say at the folder; why not, where it is refused.
  std::string mount(const std::string& arguments, const std::string& at) {
    const auto done = run("mount " + arguments + " " + quoted(at));
    if (done.status != 0) return done.text;
    undo.push_back([at] { ::umount2(at.c_str(), MNT_DETACH); });
    return {};
  }
  /// Mounts an ext4 file system of that label; why not, where it is refused.
  std::string mountExt4(const std::string& at, const std::string& label = {}) {
    const auto image = folder.path("image" + std::to_string(++images));
    const auto refused = make(image, "mkfs.ext4 -q -F -L " + quoted(label));
    return refused.empty() ? mount("-o loop " + quoted(image), at) : refused;
  }
  /// The path of a loop device over a new file of 64 MiB; nothing where there is none.
  std::string loopDevice() {
    const auto image = folder.file("image" + std::to_string(++images));
    const auto done =
        run("truncate -s 64M " + quoted(image) + " && losetup -f --show " + quoted(image));
    if (done.status != 0) return {};
    const auto device = done.text.substr(0, done.text.find('\n'));
    undo.push_back([device] { run("losetup -d " + device); });
    return device;
  }

  const testing::TemporaryFolder folder;
  std::vector<std::function<void()>> undo;
  int images = 0;
};

std::vector<std::uint64_t> numbersOf(const std::string& command) {
  std::istringstream text(run(command).text);
  std::vector<std::uint64_t> numbers;
  for (std::uint64_t number = 0; text >> number;) numbers.push_back(number);
  return numbers;
}

TEST_F(LiveDisk, AnExt4VolumeHasTheFiguresThatOthersTell) {
  const auto at = folder.folder("volume");
  if (const auto refused = mountExt4(at); !refused.empty()) GTEST_SKIP() << refused;
  Sampled disk;
  disk.tick();
  const auto row = disk.at(at);
  ASSERT_TRUE(row);
  const auto stat = numbersOf("stat -f -c '%b %a %S' " + quoted(at));
  ASSERT_EQ(stat.size(), 3u);
  EXPECT_EQ(row->uint64("disk_totalsize"), stat[0] * stat[2]);
  EXPECT_EQ(row->uint64("disk_freesize"), stat[1] * stat[2]);
  EXPECT_EQ(row->uint64("disk_usedsize"), (stat[0] - stat[1]) * stat[2]);
  const std::vector<std::uint64_t> told = {*row->uint64("disk_totalsize"),
                                           *row->uint64("disk_freesize")};
  EXPECT_EQ(numbersOf("df -B1 --output=size,avail " + quoted(at) + " | tail -n 1"), told);
  EXPECT_EQ(numbersOf("findmnt -n -b -o SIZE,AVAIL " + quoted(at)), told);
  EXPECT_EQ(run("findmnt -n -o FSTYPE " + quoted(at)).text, *row->text("disk_format") + "\n");
  EXPECT_EQ(run("findmnt -n -o SOURCE " + quoted(at)).text, *row->text("disk_mntfromname") + "\n");
  EXPECT_FALSE(row->contains("disk_backups"));
}

TEST_F(LiveDisk, AVolumeHasAPictureByName) {
  const auto at = folder.folder("volume");
  if (const auto refused = mountExt4(at); !refused.empty()) GTEST_SKIP() << refused;
  Sampled disk;
  disk.tick();
  ASSERT_TRUE(disk.at(at));
  const auto* icon = disk.at(at)->find("disk_icom");
  ASSERT_NE(icon, nullptr);
  EXPECT_FALSE((*icon->as<std::shared_ptr<const Image>>())->name.empty());
}

TEST_F(LiveDisk, FilesShowInTheNextSample) {
  const auto at = folder.folder("volume");
  if (const auto refused = mountExt4(at); !refused.empty()) GTEST_SKIP() << refused;
  Sampled disk;
  disk.tick();
  const auto before = *disk.at(at)->uint64("disk_usedsize");
  run("dd if=/dev/urandom bs=1M count=8 conv=fsync of=" + quoted(at + "/file"));
  disk.tick();
  EXPECT_GE(*disk.at(at)->uint64("disk_usedsize"), before + (8u << 20));
}

TEST_F(LiveDisk, ALabelWithSpacesAndLettersBeyondAsciiIsTheName) {
  const auto at = folder.folder("volume");
  const std::string label = "M\xC3\xBCll \xE2\x82\xAC 1";
  if (const auto refused = mountExt4(at, label); !refused.empty()) GTEST_SKIP() << refused;
  Sampled disk;
  disk.tick();
  ASSERT_TRUE(disk.at(at));
  EXPECT_EQ(*disk.at(at)->text("disk_name"), label);
}

TEST_F(LiveDisk, AVolumeWithoutALabelIsCalledByItsFolderWhateverItsName) {
  const auto at = folder.folder("a b\\040\n\xC3\xBC");
  if (const auto refused = mountExt4(at); !refused.empty()) GTEST_SKIP() << refused;
  Sampled disk;
  disk.tick();
  ASSERT_TRUE(disk.at(at));
  EXPECT_EQ(*disk.at(at)->text("disk_name"), "a b\\040\n\xC3\xBC");
}

TEST_F(LiveDisk, ATmpfsIsNoVolume) {
  const auto at = folder.folder("memory");
  if (const auto refused = mount("-t tmpfs tmpfs", at); !refused.empty()) GTEST_SKIP() << refused;
  Sampled disk;
  disk.tick();
  EXPECT_FALSE(disk.at(at));
}

TEST_F(LiveDisk, ABindMountIsNoVolumeOfItsOwn) {
  const auto at = folder.folder("the volume"), other = folder.folder("b"), file = folder.file("f");
  if (const auto refused = mountExt4(at); !refused.empty()) GTEST_SKIP() << refused;
  run("mkdir " + quoted(at + "/folder") + " && touch " + quoted(at + "/file"));
  ASSERT_EQ(mount("--bind " + quoted(at + "/folder"), other), "");
  ASSERT_EQ(mount("--bind " + quoted(at + "/file"), file), "");
  Sampled disk;
  disk.tick();
  EXPECT_TRUE(disk.at(at));
  EXPECT_FALSE(disk.at(other));
  EXPECT_FALSE(disk.at(file));
  // All of it once more, and at a shorter path.
  ASSERT_EQ(mount("--bind " + quoted(at), folder.folder("c")), "");
  disk.tick();
  EXPECT_FALSE(disk.at(at));
  EXPECT_TRUE(disk.at(folder.path("c")));
}

TEST_F(LiveDisk, VolumesComeAndGoBetweenSamples) {
  const auto at = folder.folder("volume");
  Sampled disk;
  disk.tick();
  EXPECT_FALSE(disk.at(at));
  for (int round = 0; round < 3; ++round) {
    if (const auto refused = mountExt4(at); !refused.empty()) GTEST_SKIP() << refused;
    disk.tick();
    EXPECT_TRUE(disk.at(at));
    ASSERT_EQ(::umount(at.c_str()), 0);
    disk.tick();
    EXPECT_FALSE(disk.at(at));
  }
}

TEST_F(LiveDisk, WhatAnotherMountCoversIsNotToldOf) {
  const auto outer = folder.folder("a"), at = folder.folder("a/b");
  if (const auto refused = mountExt4(at); !refused.empty()) GTEST_SKIP() << refused;
  Sampled disk;
  disk.tick();
  EXPECT_TRUE(disk.at(at));
  ASSERT_EQ(mount("-t tmpfs tmpfs", outer), "");
  disk.tick();
  EXPECT_FALSE(disk.at(at));
}

TEST_F(LiveDisk, TheKernelTellsOfChangesOnce) {
  KeptFile table("/proc/self/mountinfo");
  EXPECT_TRUE(table.changed());
  ASSERT_TRUE(table.text());
  EXPECT_FALSE(table.changed());
  ASSERT_EQ(mount("-t tmpfs tmpfs", folder.folder("memory")), "");
  EXPECT_TRUE(table.changed());
  EXPECT_FALSE(table.changed());
}

TEST_F(LiveDisk, AVolumeOfNtfsByFuseIsKept) {
  const auto at = folder.folder("ntfs");
  const auto device = loopDevice();
  if (device.empty()) GTEST_SKIP() << "no loop device";
  const auto made = run("mkntfs -F -Q -q -L Stick " + device + " >/dev/null 2>&1 && ntfs-3g " +
                        device + " " + quoted(at));
  if (made.status != 0) GTEST_SKIP() << made.text;
  undo.push_back([at] { run("umount " + quoted(at) + " || umount -l " + quoted(at)); });
  Sampled disk;
  disk.tick();
  ASSERT_TRUE(disk.at(at));
  EXPECT_EQ(*disk.at(at)->text("disk_format"), "fuseblk");
  EXPECT_EQ(*disk.at(at)->text("disk_mntfromname"), device);
  const auto stat = numbersOf("stat -f -c '%b %a %S' " + quoted(at));
  ASSERT_EQ(stat.size(), 3u);
  EXPECT_EQ(disk.at(at)->uint64("disk_totalsize"), stat[0] * stat[2]);
  EXPECT_EQ(disk.at(at)->uint64("disk_freesize"), stat[1] * stat[2]);
}

struct LiveHungVolume : LiveDisk {
  /// Mounts a volume that the test serves; why not, where it is refused.
  std::string serve() {
    const auto device = loopDevice();
    return device.empty() ? "no loop device" : server.mountAt(device, at);
  }
  void TearDown() override {
    server.end();
    LiveDisk::TearDown();
  }

  static int volumeThreads() {
    int count = 0;
    for (const auto& task : std::filesystem::directory_iterator("/proc/self/task"))
      count += contentsOf(task.path().string() + "/comm") == "vantile-volume\n";
    return count;
  }

  const std::string at = folder.folder("served");
  testing::FuseServer server;
};

// What a tick may take beside its 0.2 seconds is for a busy machine.
constexpr auto limit = 700ms;

TEST_F(LiveHungVolume, OneThatAnswersIsToldOf) {
  if (const auto refused = serve(); !refused.empty()) GTEST_SKIP() << refused;
  Sampled disk;
  disk.tick();
  ASSERT_TRUE(disk.at(at));
  EXPECT_EQ(disk.at(at)->uint64("disk_totalsize"), 100u * 512);
  EXPECT_EQ(disk.at(at)->uint64("disk_freesize"), 40u * 512);
  EXPECT_EQ(*disk.at(at)->text("disk_name"), "served");
}

TEST_F(LiveHungVolume, DelaysOneTickByItsLimitAndKeepsItsFigures) {
  if (const auto refused = serve(); !refused.empty()) GTEST_SKIP() << refused;
  Sampled disk;
  disk.tick();
  server.answers = false;
  server.available = 10;
  EXPECT_LT(disk.tick(), limit);
  const auto rest = [&disk] {
    const auto begin = Clock::now();
    for (int i = 0; i < 10; ++i) disk.tick();
    return Clock::now() - begin;
  }();
  EXPECT_LT(rest, limit);  // ten that wait would take two seconds
  EXPECT_EQ(volumeThreads(), 1);
  EXPECT_LE(server.asked, 4);  // by the first two ticks, and by what counts kinds of files
  ASSERT_TRUE(disk.at(at));
  EXPECT_EQ(disk.at(at)->uint64("disk_freesize"), 40u * 512);
}

TEST_F(LiveHungVolume, IsLeftOutUntilItAnswersAndIsThereThen) {
  server.answers = false;
  if (const auto refused = serve(); !refused.empty()) GTEST_SKIP() << refused;
  Sampled disk;
  EXPECT_LT(disk.tick(), limit);
  EXPECT_FALSE(disk.at(at));
  const auto before = disk.rows.size();
  server.answers = true;
  for (int tries = 0; tries < 100 && !disk.at(at); ++tries) {
    std::this_thread::sleep_for(20ms);
    disk.tick();
  }
  ASSERT_TRUE(disk.at(at));
  EXPECT_EQ(disk.rows.size(), before + 1);
}

TEST_F(LiveHungVolume, WhoseServerDiesKeepsItsFiguresUntilItIsGone) {
  if (const auto refused = serve(); !refused.empty()) GTEST_SKIP() << refused;
  Sampled disk;
  disk.tick();
  server.answers = false;
  disk.tick();
  EXPECT_TRUE(disk.at(at));
  server.end();
  disk.tick();
  EXPECT_FALSE(disk.at(at));
}

TEST_F(LiveHungVolume, DoesNotHideTheOthers) {
  if (const auto refused = serve(); !refused.empty()) GTEST_SKIP() << refused;
  const auto other = folder.folder("other");
  if (const auto refused = mountExt4(other); !refused.empty()) GTEST_SKIP() << refused;
  server.answers = false;
  Sampled disk;
  EXPECT_LT(disk.tick(), limit);
  EXPECT_TRUE(disk.at(other));
  EXPECT_FALSE(disk.at(at));
}

TEST(LiveDiskSpace, IsThatOfTheHomesVolume) {
  const auto numbers =
      numbersOf("stat -f -c '%b %S %c %a' \"$(getent passwd $(id -u) | cut -d: -f6)\"");
  ASSERT_EQ(numbers.size(), 4u);
  EXPECT_EQ(KVDDisk::totalDiskSpaceInBytes(), numbers[0] * numbers[1]);
  EXPECT_EQ(KVDDisk::numberOfNodes(), numbers[2]);
  // Others write meanwhile.
  EXPECT_NEAR(static_cast<double>(KVDDisk::freeDiskSpaceInBytes()),
              static_cast<double>(numbers[3] * numbers[1]), 256e6);
  EXPECT_EQ(KVDDisk::totalDiskSpace(), KVDDisk::memoryFormatter(numbers[0] * numbers[1]));
}

}  // namespace
}  // namespace vantile
