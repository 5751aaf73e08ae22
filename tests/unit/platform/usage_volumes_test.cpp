#include "vantile/platform/linux/usage_volumes.h"

#include "unit/platform/usage_fixture.h"

namespace vantile {
namespace {

struct UsageVolumesTest : testing::UsageTest {
  /// The mount table from now on.
  void mount(const std::string& lines) {
    tree.file("proc/self/mountinfo", lines);
    volumes.emplace(LinuxRoots{.proc = tree.path("proc")});
  }

  std::optional<UsageVolumes> volumes;
};

TEST_F(UsageVolumesTest, WhatIsServedMayHang) {
  mount(
      "20 1 8:1 / / rw - ext4 /dev/sda1 rw\n"
      "30 20 8:17 / /media/ntfs rw - fuseblk /dev/sdb1 rw\n"
      "31 20 8:33 / /media/stick rw - vfat /dev/sdc1 rw\n"
      "32 30 8:49 / /media/ntfs/inner rw - ext4 /dev/sdd1 rw\n");
  EXPECT_TRUE(volumes->mayHang("/media/ntfs"));
  EXPECT_TRUE(volumes->mayHang("/media/ntfs/inner"));  // nobody gets there past the other
  EXPECT_FALSE(volumes->mayHang("/media/stick"));
  EXPECT_FALSE(volumes->mayHang("/"));
  EXPECT_FALSE(volumes->mayHang("/elsewhere"));
}

TEST_F(UsageVolumesTest, TellsOfFurtherParts) {
  mount(
      "20 1 8:1 /system / rw - ext4 /dev/sda1 rw\n"
      "30 20 8:1 /home /home rw - ext4 /dev/sda1 rw\n");
  EXPECT_EQ(volumes->othersOf("/"), std::vector<std::string>{"/home"});
  EXPECT_TRUE(volumes->othersOf("/home").empty());  // it is none of its own
}

TEST_F(UsageVolumesTest, AFileThatIsMountedIsNone) {
  mount("");
  EXPECT_FALSE(volumes->at(tree.file("hosts")));
}

TEST_F(UsageVolumesTest, WithoutATableNothingHangs) {
  volumes.emplace(LinuxRoots{.proc = tree.path("proc")});
  EXPECT_FALSE(volumes->mayHang("/"));
}

TEST_F(UsageVolumesTest, AVolumeIsKnownAgain) {
  mount("");
  const auto volume = volumes->at(tree.path());
  ASSERT_TRUE(volume);
  EXPECT_NE(volume->root, 0u);
  EXPECT_EQ(volume->mountPoint, tree.path());
  EXPECT_EQ(volumes->at(tree.path()), volume);
  EXPECT_NE(volumes->at(tree.folder("other"))->root, volume->root);
}

TEST_F(UsageVolumesTest, WithoutAnIdentifierDeviceAndSizeTellVolumesApart) {
  const auto known = deviceAndSize({8, 17}, 512, 1000);
  EXPECT_EQ(deviceAndSize({8, 17}, 512, 1000), known);
  EXPECT_NE(deviceAndSize({8, 33}, 512, 1000), known);
  EXPECT_NE(deviceAndSize({8, 17}, 4096, 1000), known);
  EXPECT_NE(deviceAndSize({8, 17}, 512, 1001), known);
}

TEST_F(UsageVolumesTest, NumbersThatTheKernelGivesTellNothing) {
  EXPECT_EQ(deviceAndSize({0, 41}, 4096, 1000), "");
}

TEST_F(UsageVolumesTest, WhatIsNotThereIsNone) {
  mount("");
  EXPECT_FALSE(volumes->at(tree.path("missing")));
}

}  // namespace
}  // namespace vantile
