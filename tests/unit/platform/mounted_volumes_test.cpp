#include "vantile/platform/parsers/mounted_volumes.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "unit/platform/fixture.h"

namespace vantile {
namespace {

using Paths = std::vector<std::string>;

const std::vector<std::string_view> types = {"ext4", "btrfs", "vfat", "fuseblk"};

Paths pathsIn(std::string_view table) {
  Paths paths;
  for (const auto& volume : volumesIn(parseMountinfo(table), types))
    paths.push_back(volume.mount.mountPoint);
  return paths;
}

/// A root that is no volume, so that it alone is never in the way.
const std::string root = "1 0 0:1 / / rw - rootfs rootfs rw\n";

TEST(MountedVolumes, AreThoseOfTheTypesInTheTablesOrder) {
  EXPECT_EQ(pathsIn("1 0 8:1 / / rw - ext4 /dev/a rw\n"
                    "2 1 0:5 / /z rw - tmpfs tmpfs rw\n"
                    "3 1 8:3 / /y rw - vfat /dev/c rw\n"
                    "4 1 8:2 / /x rw - ext4 /dev/b rw\n"
                    "5 1 8:4 / /w rw - ext40 /dev/b rw\n"),
            (Paths{"/", "/y", "/x"}));
}

TEST(MountedVolumes, OfARecordedTableIsTheOneDisk) {
  const auto volumes = volumesIn(parseMountinfo(testing::fixture("mountinfo-hybrid.txt")), types);
  ASSERT_EQ(volumes.size(), 1u);
  EXPECT_EQ(volumes[0].mount.mountPoint, "/");
  EXPECT_EQ(volumes[0].mount.source, "/dev/vda");
  EXPECT_FALSE(volumes[0].mayHang);
}

TEST(MountedVolumes, AFileSystemMountedTwiceIsOneAtItsShortestPath) {
  EXPECT_EQ(pathsIn(root + "2 1 8:1 / /media/long rw - ext4 /dev/a rw\n"
                           "3 1 8:1 / /srv rw - ext4 /dev/a rw\n"
                           "4 1 8:1 / /other rw - ext4 /dev/a rw\n"),
            Paths{"/srv"});
}

TEST(MountedVolumes, OfEquallyShortPathsTheFirstCounts) {
  EXPECT_EQ(pathsIn(root + "2 1 8:1 / /b rw - ext4 /dev/a rw\n"
                           "3 1 8:1 / /a rw - ext4 /dev/a rw\n"),
            Paths{"/b"});
}

TEST(MountedVolumes, TheRootIsPreferredWhereverItStands) {
  EXPECT_EQ(pathsIn("2 1 8:1 / /b rw - ext4 /dev/a rw\n"
                    "1 0 8:1 / / rw - ext4 /dev/a rw\n"),
            Paths{"/"});
}

TEST(MountedVolumes, SubvolumesOfOneFileSystemAreOneVolume) {
  EXPECT_EQ(pathsIn("1 0 0:30 /@ / rw - btrfs /dev/a rw,subvolid=256,subvol=/@\n"
                    "2 1 0:30 /@home /home rw - btrfs /dev/a rw,subvolid=257,subvol=/@home\n"),
            Paths{"/"});
  EXPECT_EQ(pathsIn(root + "2 1 0:30 /@home /home rw - btrfs /dev/a rw,subvol=/@home\n"),
            Paths{"/home"});
}

TEST(MountedVolumes, ASubvolumeMayHaveCommasInItsName) {
  EXPECT_EQ(pathsIn(root + "2 1 0:30 /a,b,c /a rw - btrfs /dev/a rw,subvolid=2,subvol=/a,b,c\n"),
            Paths{"/a"});
  EXPECT_TRUE(pathsIn(root + "2 1 0:30 /a,b/c /a rw - btrfs /dev/a rw,subvol=/a,b\n").empty());
}

TEST(MountedVolumes, AFolderOfASubvolumeIsNone) {
  EXPECT_TRUE(pathsIn(root + "2 1 0:30 /@/a /a rw - btrfs /dev/a rw,subvol=/@\n").empty());
  EXPECT_TRUE(pathsIn(root + "2 1 0:30 /@x /a rw - btrfs /dev/a rw,subvol=/@\n").empty());
}

TEST(MountedVolumes, PartsOfAFileSystemAreNone) {
  EXPECT_TRUE(pathsIn(root + "2 1 8:1 /containers/hosts /etc/hosts rw - ext4 /dev/a rw\n"
                             "3 1 8:1 /data /data rw - ext4 /dev/a rw\n"
                             "4 1 0:4 net:[402] /run/netns/a rw - nsfs nsfs rw\n")
                  .empty());
}

TEST(MountedVolumes, APartIsNeverPreferredToTheWhole) {
  EXPECT_EQ(pathsIn(root + "2 1 8:1 /data /d rw - ext4 /dev/a rw\n"
                           "3 1 8:1 / /media/disk rw - ext4 /dev/a rw\n"),
            Paths{"/media/disk"});
}

TEST(MountedVolumes, WhatIsMountedAtTheRootIsOneThoughItIsAPart) {
  EXPECT_EQ(pathsIn("1 0 8:1 /deploy/0 / rw - ext4 /dev/a rw\n"
                    "2 1 8:1 / /sysroot rw - ext4 /dev/a rw\n"),
            Paths{"/"});
}

TEST(MountedVolumes, DevicesAreToldApartByBothNumbers) {
  EXPECT_EQ(pathsIn(root + "2 1 8:1 / /a rw - ext4 /dev/a rw\n"
                           "3 1 8:11 / /b rw - ext4 /dev/a rw\n"
                           "4 1 81:1 / /c rw - ext4 /dev/a rw\n"),
            (Paths{"/a", "/b", "/c"}));
}

TEST(MountedVolumes, WhatAnotherMountCoversIsLeftOut) {
  EXPECT_EQ(pathsIn(root + "2 1 8:1 / /a rw - ext4 /dev/a rw\n"
                           "3 2 8:2 / /a rw - ext4 /dev/b rw\n"),
            Paths{"/a"});
  EXPECT_EQ(volumesIn(parseMountinfo(root + "2 1 8:1 / /a rw - ext4 /dev/a rw\n"
                                            "3 2 8:2 / /a rw - ext4 /dev/b rw\n"),
                      types)[0]
                .mount.source,
            "/dev/b");
}

TEST(MountedVolumes, WhatIsBelowAFolderThatWasCoveredIsLeftOut) {
  EXPECT_EQ(pathsIn(root + "2 1 8:1 / /a/b rw - ext4 /dev/a rw\n"
                           "3 1 0:7 / /a rw - tmpfs tmpfs rw\n"),
            Paths{});
}

TEST(MountedVolumes, AVolumeThatIsCoveredAtOnePlaceIsThereAtAnother) {
  EXPECT_EQ(pathsIn(root + "2 1 8:1 / /a rw - ext4 /dev/a rw\n"
                           "3 2 0:7 / /a rw - tmpfs tmpfs rw\n"
                           "4 1 8:1 / /media/disk rw - ext4 /dev/a rw\n"),
            Paths{"/media/disk"});
}

TEST(MountedVolumes, ANameThatOnlyBeginsLikeAnotherIsNotBelowIt) {
  EXPECT_EQ(pathsIn(root + "2 1 0:7 / /a rw - tmpfs tmpfs rw\n"
                           "3 1 8:1 / /ab rw - ext4 /dev/a rw\n"),
            Paths{"/ab"});
}

TEST(MountedVolumes, ATableWithoutItsRootIsFollowedAllTheSame) {
  EXPECT_EQ(pathsIn("2 1 8:1 / /a rw - ext4 /dev/a rw\n"
                    "3 2 8:2 / /a/b rw - ext4 /dev/b rw\n"
                    "4 4 8:3 / /c rw - ext4 /dev/c rw\n"),
            (Paths{"/a", "/a/b", "/c"}));
}

TEST(MountedVolumes, ATableThatGoesInCirclesEnds) {
  pathsIn(
      "1 2 8:1 / /a rw - ext4 /dev/a rw\n"
      "2 1 8:2 / /a rw - ext4 /dev/b rw\n"
      "3 0 8:3 / / rw - ext4 /dev/c rw\n"
      "3 3 8:3 / / rw - ext4 /dev/c rw\n");
}

TEST(MountedVolumes, OfOneSourceAreSeveralWhereTheirNumbersDiffer) {
  EXPECT_EQ(pathsIn(root + "2 1 0:40 / /a rw - fuseblk same rw\n"
                           "3 1 0:41 / /b rw - fuseblk same rw\n"),
            (Paths{"/a", "/b"}));
}

TEST(MountedVolumes, TheirBindMountsAreTheSameVolumeWhateverTheSource) {
  EXPECT_EQ(pathsIn(root + "2 1 0:40 / /long rw - fuseblk /dev/a rw\n"
                           "3 1 0:40 / /b ro - fuseblk none rw\n"),
            Paths{"/b"});
}

Paths othersIn(const std::string& table) {
  const auto volumes = volumesIn(parseMountinfo(table), types);
  EXPECT_EQ(volumes.size(), 1u);
  return volumes[0].others;
}

TEST(MountedVolumes, FurtherSubvolumesAreOthers) {
  EXPECT_EQ(othersIn("1 0 0:30 /@ / rw - btrfs /dev/a rw,subvolid=256,subvol=/@\n"
                     "2 1 0:30 /@home /home rw - btrfs /dev/a rw,subvolid=257,subvol=/@home\n"
                     "3 1 0:30 /@/srv /srv rw - btrfs /dev/a rw,subvolid=258,subvol=/@/srv\n"),
            (Paths{"/srv", "/home"}));  // as large, and nearer
}

TEST(MountedVolumes, FurtherPartsBesideTheRootAreOthers) {
  EXPECT_EQ(othersIn("1 0 8:1 /system / rw - ext4 /dev/a rw\n"
                     "2 1 8:1 /home /home rw - ext4 /dev/a rw\n"
                     "3 1 8:1 /system2 /other rw - ext4 /dev/a rw\n"),
            (Paths{"/home", "/other"}));
}

TEST(MountedVolumes, WhatIsPartOfAnotherIsNoOther) {
  EXPECT_EQ(othersIn("1 0 8:1 /system / rw - ext4 /dev/a rw\n"
                     "2 1 8:1 /system/opt /opt rw - ext4 /dev/a rw\n"
                     "3 1 8:1 /data/home/ada /home/ada rw - ext4 /dev/a rw\n"
                     "4 1 8:1 /data/home /users/home rw - ext4 /dev/a rw\n"
                     "5 1 8:1 / /whole rw - ext4 /dev/a rw\n"),
            Paths{"/users/home"});
}

TEST(MountedVolumes, OneIsGoneToAtTheShortestOfItsPlaces) {
  EXPECT_EQ(othersIn("1 0 8:1 /system / rw - ext4 /dev/a rw\n"
                     "2 1 8:1 /home /srv/users rw - ext4 /dev/a rw\n"
                     "3 1 8:1 /home /home rw - ext4 /dev/a rw\n"),
            Paths{"/home"});
}

TEST(MountedVolumes, WhatHangsOrIsCoveredOrOfAnotherDeviceIsNoOther) {
  EXPECT_TRUE(othersIn("1 0 8:1 /system / rw - ext4 /dev/a rw\n"
                       "2 1 0:9 / /far rw - nfs source rw\n"
                       "3 2 8:1 /home /far/home rw - ext4 /dev/a rw\n"
                       "4 1 8:1 /data /data rw - ext4 /dev/a rw\n"
                       "5 4 0:5 / /data rw - tmpfs tmpfs rw\n")
                  .empty());
  const auto two = volumesIn(parseMountinfo("1 0 8:1 / / rw - ext4 /dev/a rw\n"
                                            "2 1 8:2 / /b rw - ext4 /dev/b rw\n"),
                             types);
  EXPECT_TRUE(two[0].others.empty() && two[1].others.empty());
}

TEST(MountedVolumes, WhetherOneMayHangGoesByThePlaceThatItIsKnownBy) {
  const std::string far = root + "2 1 0:9 / /far rw - nfs source rw\n";
  const auto of = [](const std::string& table) {
    return volumesIn(parseMountinfo(table), types).back();
  };
  const auto near = of(far +
                       "3 2 8:1 / /far/volume rw - ext4 /dev/a rw\n"
                       "4 1 8:1 / /near rw - ext4 /dev/a rw\n");
  EXPECT_EQ(near.mount.mountPoint, "/near");
  EXPECT_FALSE(near.mayHang || near.wayMayHang);
  const auto away = of(far +
                       "3 1 8:1 / /near/long/way rw - ext4 /dev/a rw\n"
                       "4 2 8:1 / /far/a rw - ext4 /dev/a rw\n");
  EXPECT_EQ(away.mount.mountPoint, "/far/a");
  EXPECT_TRUE(away.mayHang && away.wayMayHang);
}

bool mayHang(const std::string& table) {
  return volumesIn(parseMountinfo(table), types).back().mayHang;
}

TEST(MountedVolumes, ThoseThatAreServedMayHang) {
  EXPECT_TRUE(mayHang(root + "2 1 8:1 / /a rw - fuseblk /dev/a rw\n"));
  EXPECT_FALSE(mayHang(root + "2 1 8:1 / /a rw - vfat /dev/a rw\n"));
}

TEST(MountedVolumes, ThoseBehindAServedFileSystemMayHangToo) {
  for (const char* type :
       {"fuse", "fuse.sshfs", "fuseblk", "nfs", "nfs4", "cifs", "smb3", "9p", "ceph", "afs"})
    EXPECT_TRUE(mayHang(root + "2 1 0:9 / /far rw - " + type +
                        " source rw\n"
                        "3 2 8:1 / /far/disk rw - ext4 /dev/a rw\n"))
        << type;
  EXPECT_FALSE(mayHang(root + "2 1 0:9 / /far rw - nfs source rw\n"
                              "3 1 8:1 / /disk rw - ext4 /dev/a rw\n"));
}

TEST(MountedVolumes, TheWayMayHangWhereItLeadsThroughAServedFileSystem) {
  const auto wayMayHang = [](const std::string& table) {
    return volumesIn(parseMountinfo(table), types).back().wayMayHang;
  };
  EXPECT_FALSE(wayMayHang(root + "2 1 8:1 / /a rw - fuseblk /dev/a rw\n"));
  EXPECT_FALSE(wayMayHang(root + "2 1 8:1 / /a rw - ext4 /dev/a rw\n"));
  EXPECT_TRUE(wayMayHang(root + "2 1 0:9 / /far rw - nfs source rw\n"
                                "3 2 8:1 / /far/disk rw - ext4 /dev/a rw\n"));
  EXPECT_TRUE(wayMayHang(root + "2 1 0:9 / /far rw - nfs source rw\n"
                                "3 2 8:1 / /far/disk rw - fuseblk /dev/a rw\n"));
}

}  // namespace
}  // namespace vantile
