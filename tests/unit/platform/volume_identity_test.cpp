#include "vantile/platform/linux/volume_identity.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "fakes/temporary_folder.h"

namespace vantile {
namespace {

struct VolumeIdentityTest : ::testing::Test {
  std::string identity() {
    VolumeIdentities::Means means;
    means.mountId = [this](const std::string& path) {
      ways.push_back(path);
      return mountId;
    };
    means.fileSystemId = [this](const std::string& path) {
      asked.push_back(path);
      return fileSystemId;
    };
    means.roots.sys = folder.path();
    return VolumeIdentities(std::move(means)).of(volume);
  }
  void becomes(const std::string& description, const std::string& before) {
    EXPECT_NE(identity(), before) << description;
  }

  const testing::TemporaryFolder folder;
  MountedVolume volume{{"/", "/a", "vfat", "/dev/b", "rw", 7, 1, {8, 17}}, false, false};
  std::optional<std::uint64_t> mountId, fileSystemId;
  std::vector<std::string> ways, asked;
};

TEST_F(VolumeIdentityTest, IsTheMountsLastingNumberWhereThereIsOne) {
  mountId = 2147483676;
  fileSystemId = 3;
  const auto before = identity();
  EXPECT_EQ(before, "2147483676");
  EXPECT_TRUE(asked.empty());
  EXPECT_EQ(identity(), before);
  mountId = 2147483677;
  becomes("another mount", before);
}

TEST_F(VolumeIdentityTest, ElseIsMadeOfAllThatMayTellItApart) {
  fileSystemId = 3;
  folder.file("dev/block/8:17/diskseq", "4\n");
  const auto before = identity();
  EXPECT_EQ(identity(), before);
  fileSystemId = 5;
  becomes("another file system", before);
  fileSystemId = 3;
  volume.mount.id = 8;
  becomes("another mount", before);
  volume.mount.id = 7;
  volume.mount.device = {8, 18};
  becomes("another minor number", before);
  volume.mount.device = {81, 7};
  becomes("another major number", before);
  volume.mount.device = {8, 17};
  folder.file("dev/block/8:17/diskseq", "5\n");
  becomes("another medium", before);
}

TEST_F(VolumeIdentityTest, ThePartitionsMediumIsThatOfItsDisk) {
  folder.folder("dev/block/8:17");
  folder.file("dev/block/diskseq", "4\n");  // where a partition's link leads, the disk is above
  const auto before = identity();
  folder.file("dev/block/diskseq", "5\n");
  becomes("another medium", before);
}

TEST_F(VolumeIdentityTest, OneThatMayHangIsNotAsked) {
  volume.mayHang = true;
  EXPECT_FALSE(identity().empty());
  EXPECT_TRUE(asked.empty());
  EXPECT_EQ(ways, std::vector<std::string>{"/a"});
}

TEST_F(VolumeIdentityTest, WhereTheWayMayHangNobodyGoes) {
  volume.mayHang = volume.wayMayHang = true;
  EXPECT_FALSE(identity().empty());
  EXPECT_TRUE(asked.empty());
  EXPECT_TRUE(ways.empty());
}

}  // namespace
}  // namespace vantile
