// Volumes that come and go on this machine, against findmnt, df and stat.

#include <gtest/gtest.h>
#include <sys/mount.h>

#include <chrono>
#include <memory>
#include <string>
#include <thread>
#include <vector>

#include "vantile/platform/category_sizes.h"
#include "vantile/platform/linux/kept_file.h"
#include "vantile/platform/linux/volume_identity.h"

#include "live/disk_fixture.h"

namespace vantile {
namespace {

using namespace std::chrono_literals;
using testing::LiveDisk;
using testing::numbersOf;
using testing::quoted;
using testing::run;
using testing::Sampled;

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

TEST_F(LiveDisk, AVolumeThatTookAnothersPlaceBetweenSamplesHasItsOwnName) {
  const auto at = folder.folder("volume");
  if (const auto refused = mountExt4(at, "One"); !refused.empty()) GTEST_SKIP() << refused;
  Sampled disk;
  disk.tick();
  ASSERT_TRUE(disk.at(at));
  EXPECT_EQ(*disk.at(at)->text("disk_name"), "One");
  ASSERT_EQ(::umount(at.c_str()), 0);
  ASSERT_EQ(mountExt4(at, "Two"), "");
  disk.tick();
  ASSERT_TRUE(disk.at(at));
  EXPECT_EQ(*disk.at(at)->text("disk_name"), "Two");
}

TEST_F(LiveDisk, AVolumeThatTookAnothersPlaceBetweenSamplesDoesNotHaveItsKinds) {
  const auto at = folder.folder("volume");
  if (const auto refused = mountExt4(at); !refused.empty()) GTEST_SKIP() << refused;
  run("dd if=/dev/urandom bs=1M count=3 conv=fsync of=" + quoted(at + "/film.mkv"));
  const auto volume = [&] {
    for (const auto& mount : systemVolumes()->mounts({"ext4"}))
      if (mount.mountPoint == at) return VolumeKey(at, mount.identity);
    return VolumeKey("");
  };
  const auto categories = makeVolumeCategories();
  const auto movies = [&](const VolumeKey& of) {
    categories->want({of});
    auto known = categories->of(of);
    for (; !known; known = categories->of(of)) std::this_thread::sleep_for(5ms);
    return *(*known->sizes)[6].uint64();
  };
  const auto first = volume();
  EXPECT_GE(movies(first), 3u << 20);
  while (::umount(at.c_str()) != 0) std::this_thread::sleep_for(5ms);  // it is being counted
  ASSERT_EQ(mountExt4(at), "");
  const auto second = volume();
  EXPECT_NE(second, first);
  EXPECT_FALSE(categories->of(second));
  EXPECT_EQ(movies(second), 0u);
}

TEST_F(LiveDisk, AMountIsKnownFromAnotherOneOfTheSameNumberAndDevice) {
  const auto at = folder.folder("volume");
  if (const auto refused = mountExt4(at); !refused.empty()) GTEST_SKIP() << refused;
  const auto first = lastingMountId(at);
  if (!first) GTEST_SKIP() << "a kernel whose mounts have no lasting numbers";
  EXPECT_EQ(lastingMountId(at), first);
  ASSERT_EQ(::umount(at.c_str()), 0);
  ASSERT_EQ(mountExt4(at), "");
  EXPECT_NE(lastingMountId(at), first);
}

TEST_F(LiveDisk, AnImageIsKnownFromAnotherOneOnTheSameDeviceWithoutLastingNumbers) {
  VolumeIdentities::Means means;
  means.mountId = [](const std::string&) { return std::nullopt; };
  means.fileSystemId = [](const std::string&) { return std::nullopt; };
  const VolumeIdentities identities(std::move(means));
  const auto device = loopDevice();
  if (device.empty()) GTEST_SKIP() << "no loop device";
  const auto numbers = numbersOf("stat -L -c '%Hr %Lr' " + device);
  ASSERT_EQ(numbers.size(), 2u);
  MountedVolume volume;
  volume.mount.device = {numbers[0], numbers[1]};
  const auto first = identities.of(volume);
  EXPECT_EQ(identities.of(volume), first);
  ASSERT_EQ(run("losetup -d " + device).status, 0);
  const auto other = folder.file("other");
  ASSERT_EQ(run("truncate -s 8M " + quoted(other)).status, 0);
  if (run("losetup " + device + " " + quoted(other)).status != 0)
    GTEST_SKIP() << "somebody else took " << device;
  EXPECT_NE(identities.of(volume), first);
}

TEST_F(LiveDisk, AFileSystemIsKnownFromAnotherOneByItsOwnNumber) {
  const auto at = folder.folder("a"), other = folder.folder("b");
  if (const auto refused = mountExt4(at); !refused.empty()) GTEST_SKIP() << refused;
  ASSERT_EQ(mountExt4(other), "");
  EXPECT_NE(fileSystemId(at).value_or(0), 0u);
  EXPECT_NE(fileSystemId(at), fileSystemId(other));
  EXPECT_EQ(fileSystemId(folder.path("missing")), std::nullopt);
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
