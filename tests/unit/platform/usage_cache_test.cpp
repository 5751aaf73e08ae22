#include "vantile/platform/linux/usage_cache.h"

#include "vantile/platform/posix/files.h"

#include "fakes/recorded_log.h"
#include "unit/platform/usage_fixture.h"

namespace vantile {
namespace {

using namespace std::string_literals;

struct UsageCacheTest : testing::UsageTest {
  UsageCacheTest() { index.setFolders(UsageIndex::root, "a\0b\0"s); }

  std::size_t keptFiles() const {
    const std::filesystem::directory_iterator entries(folder);
    return static_cast<std::size_t>(std::distance(begin(entries), end(entries)));
  }

  const UsageVolume volume{.fileSystem = 1, .root = 2, .mountPoint = "/mnt"};
  const std::string folder = tree.path("caches/vantile");
  const std::string file = folder + "/" + usageRecordName(volume);
  UsageCache cache{folder};
  UsageIndex index;
  testing::RecordedLog log;
};

TEST_F(UsageCacheTest, WhatIsKeptIsTakenUp) {
  cache.keep(volume, true, index);
  const auto record = cache.take(volume);
  ASSERT_TRUE(record);
  EXPECT_TRUE(record->complete);
  EXPECT_EQ(record->index.size(), 3u);
  EXPECT_TRUE(log.lines.empty());
}

TEST_F(UsageCacheTest, TheFolderIsMadeForTheUserAlone) {
  cache.keep(volume, true, index);
  EXPECT_EQ(std::filesystem::status(folder).permissions(), std::filesystem::perms::owner_all);
  EXPECT_EQ(std::filesystem::status(file).permissions(),
            std::filesystem::perms::owner_read | std::filesystem::perms::owner_write);
}

TEST_F(UsageCacheTest, WithoutARecordThereIsNone) {
  EXPECT_FALSE(cache.take(volume));
  EXPECT_TRUE(log.lines.empty());
}

TEST_F(UsageCacheTest, ADamagedRecordGoesWithOneLogLine) {
  cache.keep(volume, true, index);
  std::filesystem::resize_file(file, 40);
  EXPECT_FALSE(cache.take(volume));
  EXPECT_FALSE(cache.take(volume));
  EXPECT_EQ(log.lines,
            (std::vector<std::string>{"usage by category: " + file +
                                      " is damaged or another volume's, and begun anew"}));
}

TEST_F(UsageCacheTest, AnotherVolumesRecordGoesToo) {
  cache.keep({.fileSystem = 3, .root = 2, .mountPoint = "/mnt"}, true, index);
  std::filesystem::rename(
      folder + "/" + usageRecordName({.fileSystem = 3, .root = 2, .mountPoint = "/mnt"}), file);
  EXPECT_FALSE(cache.take(volume));
  EXPECT_EQ(log.lines.size(), 1u);
  EXPECT_FALSE(std::filesystem::exists(file));
}

TEST_F(UsageCacheTest, ARecordIsReplacedAsAWhole) {
  cache.keep(volume, false, index);
  index.setFolders(UsageIndex::root, "a\0"s);
  UsageCache(folder).keep(volume, true, index);  // another process's
  EXPECT_TRUE(cache.take(volume)->complete);
  EXPECT_EQ(cache.take(volume)->index.size(), 2u);
  EXPECT_EQ(keptFiles(), 1u);
}

TEST_F(UsageCacheTest, AFolderThatCantBeWrittenCostsOneLogLine) {
  tree.file("caches", "no folder");
  cache.keep(volume, true, index);
  cache.keep(volume, true, index);
  EXPECT_EQ(log.lines, (std::vector<std::string>{"usage by category is not kept in " + folder +
                                                 ": Not a directory"}));
  EXPECT_FALSE(cache.take(volume));
}

TEST_F(UsageCacheTest, ARecordThatCantBePutInItsPlaceLeavesNothingBehind) {
  tree.folder("caches/vantile/" + usageRecordName(volume) + "/in the way");
  cache.keep(volume, true, index);
  EXPECT_EQ(log.lines.size(), 1u);
  EXPECT_EQ(keptFiles(), 1u);
}

TEST_F(UsageCacheTest, WhatAProcessLeftUnfinishedIsRemovedADayLater) {
  const auto recent = tree.file("caches/vantile/" + usageRecordName(volume) + ".recent");
  const auto old = tree.file("caches/vantile/" + usageRecordName(volume) + ".old");
  std::filesystem::last_write_time(
      old, std::filesystem::file_time_type::clock::now() - std::chrono::hours(25));
  cache.keep(volume, true, index);
  EXPECT_TRUE(std::filesystem::exists(recent));
  EXPECT_FALSE(std::filesystem::exists(old));
}

}  // namespace
}  // namespace vantile
