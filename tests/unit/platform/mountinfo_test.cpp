#include "vantile/platform/parsers/mountinfo.h"

#include <gtest/gtest.h>

#include <algorithm>

#include "unit/platform/fixture.h"

namespace vantile {
namespace {

using testing::fixture;

TEST(Mountinfo, ARecordedOneIsReadInItsOrder) {
  const auto mounts = parseMountinfo(fixture("mountinfo-hybrid.txt"));
  ASSERT_EQ(mounts.size(), 19u);
  EXPECT_EQ(mounts[0].mountPoint, "/proc");
  EXPECT_EQ(mounts[5].type, "ext4");
  EXPECT_EQ(mounts[5].source, "/dev/vda");
  EXPECT_EQ(mounts[18].type, "cgroup2");
}

TEST(Mountinfo, HoldsTheOptionsOfTheFileSystemNotOfTheMount) {
  const auto mounts = parseMountinfo(fixture("mountinfo-hybrid.txt"));
  const auto memory = std::find_if(mounts.begin(), mounts.end(), [](const Mount& mount) {
    return mount.mountPoint == "/sys/fs/cgroup/memory";
  });
  ASSERT_NE(memory, mounts.end());
  EXPECT_EQ(memory->superOptions, "rw,memory");
}

TEST(Mountinfo, OptionalFieldsMayBeAnyNumber) {
  const auto mounts = parseMountinfo(
      "1 0 8:1 / /a rw - ext4 /dev/a rw\n"
      "1 0 8:1 / /b rw shared:1 - ext4 /dev/b rw\n"
      "1 0 8:1 / /c rw shared:1 master:2 propagate_from:3 unbindable - ext4 /dev/c rw\n");
  ASSERT_EQ(mounts.size(), 3u);
  EXPECT_EQ(mounts[0].source, "/dev/a");
  EXPECT_EQ(mounts[1].source, "/dev/b");
  EXPECT_EQ(mounts[2].source, "/dev/c");
}

TEST(Mountinfo, EscapesInNamesAreResolved) {
  const auto mounts = parseMountinfo(fixture("mountinfo-v2.txt"));
  ASSERT_EQ(mounts.size(), 5u);
  EXPECT_EQ(mounts[4].mountPoint, "/media/My Disk");
}

TEST(Mountinfo, AMountPointMayBeADash) {
  const auto mounts = parseMountinfo("1 0 8:1 - - - - ext4 /dev/a rw\n");
  ASSERT_EQ(mounts.size(), 1u);
  EXPECT_EQ(mounts[0].mountPoint, "-");
  EXPECT_EQ(mounts[0].type, "ext4");
}

TEST(Mountinfo, ASourceMayBeEmpty) {
  const auto mounts = parseMountinfo("1 0 0:1 / /a rw - tmpfs  rw,size=4k\n");
  ASSERT_EQ(mounts.size(), 1u);
  EXPECT_EQ(mounts[0].source, "");
  EXPECT_EQ(mounts[0].superOptions, "rw,size=4k");
}

TEST(Mountinfo, LinesThatCantBeReadAreLeftOut) {
  const auto mounts = parseMountinfo(
      "\n"
      "1 0 8:1 / /no rw shared:1 shared:2 shared:3 shared:4\n"
      "1 0 8:1 / /short rw shared:1 shared:2 - ext4 /dev/a\n"
      "\xFF\n"
      "1 0 8:1 / /good rw - ext4 /dev/b rw\n");
  ASSERT_EQ(mounts.size(), 1u);
  EXPECT_EQ(mounts[0].mountPoint, "/good");
}

TEST(Mountinfo, ALastLineWithoutItsNewlineIsRead) {
  EXPECT_EQ(parseMountinfo("1 0 8:1 / /good rw - ext4 /dev/b rw").size(), 1u);
  EXPECT_TRUE(parseMountinfo("1 0 8:1 / /cut rw - ext4 /de").empty());
}

TEST(Mountinfo, EveryBeginningOfOneHoldsTheMountsBeforeTheCut) {
  const auto text = fixture("mountinfo-hybrid.txt");
  const auto whole = parseMountinfo(text);
  for (std::size_t size = 0; size < text.size(); ++size) {
    const auto part = parseMountinfo(text.substr(0, size));
    const auto lines = std::count(text.begin(), text.begin() + static_cast<long>(size), '\n');
    ASSERT_LE(part.size(), static_cast<std::size_t>(lines) + 1);
    for (std::size_t i = 0; i < static_cast<std::size_t>(lines); ++i)
      ASSERT_EQ(part[i].mountPoint, whole[i].mountPoint);
  }
}

TEST(Mountinfo, NamesOfAnyBytesPassThrough) {
  const auto mounts = parseMountinfo("1 0 8:1 / /\xFF\xC3 rw - ext4 /dev/b rw\n");
  ASSERT_EQ(mounts.size(), 1u);
  EXPECT_EQ(mounts[0].mountPoint, "/\xFF\xC3");
}

TEST(Mountinfo, AnEmptyOneHasNoMounts) {
  EXPECT_TRUE(parseMountinfo("").empty());
}

TEST(Mountinfo, TellsWhichMountAndWhichDeviceItIs) {
  const auto mounts = parseMountinfo("36 35 259:1048575 / /a rw - ext4 /dev/a rw\n");
  ASSERT_EQ(mounts.size(), 1u);
  EXPECT_EQ(mounts[0].id, 36u);
  EXPECT_EQ(mounts[0].parent, 35u);
  EXPECT_EQ(mounts[0].device, (DeviceNumber{259, 1048575}));
}

TEST(Mountinfo, ALineWithoutItsNumbersIsLeftOut) {
  EXPECT_TRUE(parseMountinfo("x 0 8:1 / /a rw - ext4 /dev/a rw\n"
                             "1 x 8:1 / /a rw - ext4 /dev/a rw\n"
                             "1 0 8 / /a rw - ext4 /dev/a rw\n"
                             "1 0 :1 / /a rw - ext4 /dev/a rw\n"
                             "1 0 8: / /a rw - ext4 /dev/a rw\n"
                             "1 0  / /a rw - ext4 /dev/a rw\n")
                  .empty());
}

}  // namespace
}  // namespace vantile
