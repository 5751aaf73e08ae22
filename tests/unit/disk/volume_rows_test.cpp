#include <gtest/gtest.h>

#include <limits>

#include "unit/disk/disk_fixture.h"

namespace vantile {
namespace {

using VolumeRows = testing::Disk;
using Paths = std::vector<std::string>;

TEST_F(VolumeRows, EachOfTheEightTypesIsKept) {
  for (const char* type : {"hfs", "ufs", "msdos", "exfat", "ntfs", "cd9660", "cddafs", "udf"})
    mount(std::string("/") + type, type);
  EXPECT_EQ(toldOf(),
            (Paths{"/hfs", "/ufs", "/msdos", "/exfat", "/ntfs", "/cd9660", "/cddafs", "/udf"}));
}

TEST_F(VolumeRows, OtherTypesAreLeftOut) {
  for (const char* type : {"devfs", "autofs", "nfs", "smbfs", "tmpfs", "apfs", "ext4", ""})
    mount(std::string("/") + type, type);
  EXPECT_TRUE(toldOf().empty());
  EXPECT_EQ(reports, 1);
}

TEST_F(VolumeRows, TypesAreComparedExactly) {
  for (const char* type : {"HFS", "hfs ", "hf", "hfsplus", "Udf"})
    mount("/" + std::string(type), type);
  EXPECT_TRUE(toldOf().empty());
}

TEST_F(VolumeRows, ThePlatformsOwnLocalTypesAreKeptToo) {
  volumes.local = {"ext4", "xfs"};
  mount("/a", "ext4");
  mount("/b", "hfs");
  mount("/c", "xfs");
  mount("/d", "tmpfs");
  EXPECT_EQ(toldOf(), (Paths{"/a", "/b", "/c"}));
  EXPECT_EQ(volumes.askedTypes, (Volumes::Types{"hfs", "ufs", "msdos", "exfat", "ntfs", "cd9660",
                                                "cddafs", "udf", "ext4", "xfs"}));
}

TEST_F(VolumeRows, StandInTheOrderOfTheTable) {
  mount("/z");
  mount("/dev", "devfs");
  mount("/a");
  mount("/");
  EXPECT_EQ(toldOf(), (Paths{"/z", "/a", "/"}));
}

TEST_F(VolumeRows, TellOfTypeDeviceMountPointAndName) {
  mount("/Volumes/Stick", "msdos").device = "/dev/disk2s1";
  EXPECT_EQ(*row().text("disk_format"), "msdos");
  EXPECT_EQ(*row().text("disk_mntfromname"), "/dev/disk2s1");
  EXPECT_EQ(*row().text("disk_path"), "/Volumes/Stick");
  EXPECT_EQ(*row().text("disk_name"), "Name of /Volumes/Stick");
}

TEST_F(VolumeRows, TextsAreBytesThatPassThrough) {
  mount("/\xFF\xC3").device = "\xFE";
  EXPECT_EQ(*row().text("disk_path"), "/\xFF\xC3");
  EXPECT_EQ(*row().text("disk_mntfromname"), "\xFE");
}

TEST_F(VolumeRows, AVolumeWithoutANameIsLeftOutAndTheNextOneIsNot) {
  mount("/a");
  mount("/nameless");
  mount("/b");
  volumes.nameless.insert("/nameless");
  EXPECT_EQ(toldOf(), (Paths{"/a", "/b"}));
  EXPECT_EQ(volumes.iconsAsked, (Paths{"/a", "/b"}));
}

TEST_F(VolumeRows, HaveThePictureThatTheDesktopHas) {
  mount("/a");
  const auto picture = std::make_shared<const Image>(Image{"drive-harddisk", "", nullptr});
  volumes.icons["/a"] = picture;
  const auto* icon = row().find("disk_icom");
  ASSERT_NE(icon, nullptr);
  EXPECT_EQ(*icon->as<std::shared_ptr<const Image>>(), picture);
}

TEST_F(VolumeRows, WithoutAPictureThereIsNoKeyForIt) {
  mount("/a");
  EXPECT_FALSE(row().contains("disk_icom"));
}

TEST_F(VolumeRows, SizesAreBlocksTimesTheirSize) {
  auto& record = mount("/a");
  record.blockSize = 4096;
  record.totalBlocks = 1'000'000'000;
  record.availableBlocks = 999'999'999;
  EXPECT_EQ(row().uint64("disk_totalsize"), 4'096'000'000'000u);
  EXPECT_EQ(row().uint64("disk_freesize"), 4'095'999'995'904u);
  EXPECT_EQ(row().uint64("disk_usedsize"), 4096u);
}

TEST_F(VolumeRows, SizesAreUnsigned64BitNumbers) {
  mount("/a");
  for (const char* key : {"disk_totalsize", "disk_freesize", "disk_usedsize"})
    EXPECT_NE(row().find(key)->as<std::uint64_t>(), nullptr) << key;
}

TEST_F(VolumeRows, WhatIsNotAvailableCountsAsUsed) {
  mount("/a");
  EXPECT_EQ(row().uint64("disk_usedsize"), 600u * 512);
}

TEST_F(VolumeRows, MoreAvailableThanThereIsWraps) {
  auto& record = mount("/a");
  record.availableBlocks = 1001;
  EXPECT_EQ(row().uint64("disk_usedsize"), std::uint64_t{0} - 512);
}

TEST_F(VolumeRows, FiguresWithoutBoundWrap) {
  auto& record = mount("/a");
  record.blockSize = record.totalBlocks = std::numeric_limits<std::uint64_t>::max();
  record.availableBlocks = 0;
  EXPECT_EQ(row().uint64("disk_totalsize"), 1u);
  EXPECT_EQ(row().uint64("disk_usedsize"), 1u);
}

TEST_F(VolumeRows, OnlyTheOneAtTheRootHasBackups) {
  mount("/");
  mount("/a");
  mount("//");
  monitor()->updateInfo();
  ASSERT_EQ(rows.size(), 3u);
  ASSERT_TRUE(rows[0]->contains("disk_backups"));
  EXPECT_EQ(*rows[0]->find("disk_backups")->as<std::uint64_t>(), 0u);
  EXPECT_FALSE(rows[1]->contains("disk_backups"));
  EXPECT_FALSE(rows[2]->contains("disk_backups"));
}

TEST_F(VolumeRows, ARowIsTheDelegatesToKeep) {
  mount("/a");
  monitor()->updateInfo();
  const auto kept = rows[0];
  volumes.table.clear();
  monitor()->updateInfo();
  EXPECT_TRUE(rows.empty());
  EXPECT_EQ(*kept->text("disk_path"), "/a");
}

TEST_F(VolumeRows, HaveNoOtherKeysWithoutMetadata) {
  mount("/");
  EXPECT_EQ(row().size(), 9u);
  EXPECT_EQ(row().boolean("has_accumulated_sizes"), false);
}

TEST_F(VolumeRows, OfMetadataWithoutAListOfSizesHaveNothing) {
  mount("/a");
  categories.items.emplace(VolumeKey("/a"), CategorySizes());
  EXPECT_FALSE(row().contains("has_accumulated_sizes"));
  EXPECT_EQ(row().size(), 7u);
}

/// A list of eight, in which movies take that much and applications a byte.
CategorySizes eightWith(std::uint64_t movies) {
  Array list(8, Value(std::uint64_t{0}));
  list[6] = movies;
  list[7] = std::uint64_t{1};
  return CategorySizes{std::move(list)};
}

TEST_F(VolumeRows, HaveWhatTheKindsLeaveOfTheUsedBytes) {
  mount("/a");
  categories.items.emplace(VolumeKey("/a"), eightWith(600 * 512 - 3));
  EXPECT_EQ(row().uint64("disk_movies"), 600u * 512 - 3);
  EXPECT_EQ(row().uint64("disk_apps"), 1u);
  EXPECT_EQ(row().uint64("disk_other"), 2u);
  EXPECT_EQ(row().boolean("has_accumulated_sizes"), true);
  EXPECT_FALSE(row().contains("disk_audio"));
  EXPECT_FALSE(row().contains("disk_photos"));
}

TEST_F(VolumeRows, WhoseKindsComeToTheUsedBytesHaveNoRest) {
  mount("/a");
  categories.items.emplace(VolumeKey("/a"), eightWith(600 * 512 - 1));
  EXPECT_FALSE(row().contains("disk_other"));
  EXPECT_EQ(row().boolean("has_accumulated_sizes"), false);
}

TEST_F(VolumeRows, MetadataIsThatOfTheirOwnVolume) {
  mount("/a");
  mount("/b");
  categories.items.emplace(VolumeKey("/b"), eightWith(7));
  monitor()->updateInfo();
  EXPECT_FALSE(rows[0]->contains("disk_movies"));
  EXPECT_EQ(rows[1]->uint64("disk_movies"), 7u);
}

}  // namespace
}  // namespace vantile
