#include "vantile/platform/linux/usage_cache.h"

#include <fcntl.h>
#include <signal.h>
#include <sys/resource.h>

#include <fstream>

#include "vantile/platform/posix/files.h"

#include "fakes/open_descriptors.h"
#include "fakes/recorded_log.h"
#include "unit/platform/names_of.h"
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

  std::optional<UsageRecord> taken(const UsageVolume& of) const {
    std::optional<UsageRecord> record;
    EXPECT_EQ(cache.take(of, record, never), UsageCache::Came::toTheEnd);
    return record;
  }
  void keep(const UsageVolume& of, bool complete = true) {
    EXPECT_EQ(cache.keep(of, complete, index, never), UsageCache::Came::toTheEnd);
  }
  /// A folder of some 700 KiB.
  void makeLarge() {
    large.clear();
    for (int number = 0; number < 50000; ++number)
      large.append("IMG_" + std::to_string(100000 + number) + ".x").push_back('\0');
    index.setContents(UsageIndex::root, 1, {}, NameList(large));
  }

  const UsageCache::IsStopped never = [] { return false; };
  const UsageVolume volume{.fileSystem = 1, .root = 2, .mountPoint = "/mnt"};
  const std::string folder = tree.path("caches/vantile");
  const std::string file = folder + "/" + usageRecordName(volume);
  UsageCache cache{folder};
  UsageIndex index;
  std::string large;
  testing::RecordedLog log;
};

TEST_F(UsageCacheTest, WhatIsKeptIsTakenUp) {
  keep(volume);
  const auto record = taken(volume);
  ASSERT_TRUE(record);
  EXPECT_TRUE(record->complete);
  EXPECT_EQ(record->index.size(), 3u);
  EXPECT_TRUE(log.lines.empty());
}

TEST_F(UsageCacheTest, TheFolderIsMadeForTheUserAlone) {
  keep(volume);
  EXPECT_EQ(std::filesystem::status(folder).permissions(), std::filesystem::perms::owner_all);
  EXPECT_EQ(std::filesystem::status(file).permissions(),
            std::filesystem::perms::owner_read | std::filesystem::perms::owner_write);
}

TEST_F(UsageCacheTest, WithoutARecordThereIsNone) {
  EXPECT_FALSE(taken(volume));
  EXPECT_TRUE(log.lines.empty());
}

TEST_F(UsageCacheTest, ADamagedRecordGoesWithOneLogLine) {
  keep(volume);
  std::filesystem::resize_file(file, 40);
  EXPECT_FALSE(taken(volume));
  EXPECT_FALSE(taken(volume));
  EXPECT_EQ(log.lines,
            (std::vector<std::string>{"usage by category: " + file +
                                      " is damaged or another volume's, and begun anew"}));
}

TEST_F(UsageCacheTest, AnotherVolumesRecordGoesToo) {
  keep({.fileSystem = 3, .root = 2, .mountPoint = "/mnt"});
  std::filesystem::rename(
      folder + "/" + usageRecordName({.fileSystem = 3, .root = 2, .mountPoint = "/mnt"}), file);
  EXPECT_FALSE(taken(volume));
  EXPECT_EQ(log.lines.size(), 1u);
  EXPECT_FALSE(std::filesystem::exists(file));
}

TEST_F(UsageCacheTest, ARecordIsReplacedAsAWhole) {
  keep(volume, false);
  index.setFolders(UsageIndex::root, "a\0"s);
  UsageCache(folder).keep(volume, true, index, never);  // another process's
  EXPECT_TRUE(taken(volume)->complete);
  EXPECT_EQ(taken(volume)->index.size(), 2u);
  EXPECT_EQ(keptFiles(), 1u);
}

TEST_F(UsageCacheTest, AFolderThatCantBeWrittenCostsOneLogLine) {
  tree.file("caches", "no folder");
  keep(volume);
  keep(volume);
  EXPECT_EQ(log.lines, (std::vector<std::string>{"usage by category is not kept in " + folder +
                                                 ": Not a directory"}));
  EXPECT_FALSE(taken(volume));
}

TEST_F(UsageCacheTest, ARecordThatCantBePutInItsPlaceLeavesNothingBehind) {
  tree.folder("caches/vantile/" + usageRecordName(volume) + "/in the way");
  keep(volume);
  EXPECT_EQ(log.lines.size(), 1u);
  EXPECT_EQ(keptFiles(), 1u);
}

TEST_F(UsageCacheTest, WhatAProcessLeftUnfinishedIsRemovedADayLater) {
  const auto recent = tree.file("caches/vantile/" + usageRecordName(volume) + ".recent");
  const auto old = tree.file("caches/vantile/" + usageRecordName(volume) + ".old");
  std::filesystem::last_write_time(
      old, std::filesystem::file_time_type::clock::now() - std::chrono::hours(25));
  keep(volume);
  EXPECT_TRUE(std::filesystem::exists(recent));
  EXPECT_FALSE(std::filesystem::exists(old));
}

TEST_F(UsageCacheTest, ARecordHasNoLargestSize) {
  makeLarge();
  keep(volume);
  EXPECT_GT(std::filesystem::file_size(file), 500000u);
  const auto record = taken(volume);
  ASSERT_TRUE(record);
  EXPECT_EQ(testing::namesOf(record->index, UsageIndex::root), large);
}

TEST_F(UsageCacheTest, NamesThatWereKeptAreReadFromTheRecord) {
  makeLarge();
  keep(volume);
  EXPECT_EQ(index.heldSize(), 0u);
  EXPECT_EQ(testing::namesOf(index, UsageIndex::root), large);
}

TEST_F(UsageCacheTest, ARecordThatWasReplacedIsStillRead) {
  makeLarge();
  keep(volume);
  auto record = taken(volume);
  UsageIndex other;
  UsageCache(folder).keep(volume, true, other, never);  // another process's
  EXPECT_EQ(testing::namesOf(index, UsageIndex::root), large);
  EXPECT_EQ(testing::namesOf(record->index, UsageIndex::root), large);
  keep(volume);
  EXPECT_EQ(testing::namesOf(taken(volume)->index, UsageIndex::root), large);
}

TEST_F(UsageCacheTest, NamesThatCouldNotBeKeptStayInMemory) {
  tree.file("caches", "no folder");
  makeLarge();
  keep(volume);
  EXPECT_EQ(index.heldSize(), large.size());
  EXPECT_EQ(testing::namesOf(index, UsageIndex::root), large);
}

TEST_F(UsageCacheTest, WhereARecordWasCutOffTheRestIsKeptAtOnce) {
  makeLarge();
  const auto a = index.first(UsageIndex::root);
  index.setContents(a, 7, {{0, 0, 0, 8}, {}}, NameList("a.jpg\0"s));
  keep(volume);
  std::filesystem::resize_file(file, 1000);
  EXPECT_EQ(testing::namesOf(index, UsageIndex::root), "");
  index.setContents(index.next(a), 8, {}, NameList("b.jpg\0"s));
  keep(volume);
  EXPECT_TRUE(log.lines.empty());
  EXPECT_EQ(keptFiles(), 1u);
  const auto record = taken(volume);
  ASSERT_TRUE(record);
  EXPECT_EQ(record->index.stamp(UsageIndex::root), 0u);
  EXPECT_EQ(record->index.stamp(record->index.first(UsageIndex::root)), 0u);
  EXPECT_EQ(record->index.blocks()[3], 8u);
  const auto after = record->index.next(record->index.first(UsageIndex::root));
  EXPECT_EQ(record->index.stamp(after), 8u);
  EXPECT_EQ(testing::namesOf(record->index, after), "b.jpg\0"s);
}

TEST_F(UsageCacheTest, ARecordThatIsWrittenToIsReadNoMore) {
  makeLarge();
  keep(volume);
  auto record = taken(volume);
  const auto size = std::filesystem::file_size(file);
  std::fstream(file, std::ios::in | std::ios::out).seekp(1000) << "other" << std::flush;
  std::filesystem::last_write_time(
      file, std::filesystem::last_write_time(file) + std::chrono::seconds(1));
  EXPECT_EQ(std::filesystem::file_size(file), size);
  EXPECT_EQ(testing::namesOf(index, UsageIndex::root), "");
  EXPECT_EQ(testing::namesOf(record->index, UsageIndex::root), "");
}

TEST_F(UsageCacheTest, AFullDiskLeavesTheRecordBeforeAndNothingElse) {
  keep(volume, false);
  makeLarge();
  struct rlimit before = {};
  ::getrlimit(RLIMIT_FSIZE, &before);
  struct rlimit small = before;
  small.rlim_cur = 100000;
  ::signal(SIGXFSZ, SIG_IGN);
  ::setrlimit(RLIMIT_FSIZE, &small);
  keep(volume);
  ::setrlimit(RLIMIT_FSIZE, &before);
  EXPECT_EQ(log.lines, (std::vector<std::string>{"usage by category is not kept in " + folder +
                                                 ": File too large"}));
  EXPECT_FALSE(taken(volume)->complete);
  EXPECT_EQ(keptFiles(), 1u);
  EXPECT_EQ(testing::namesOf(index, UsageIndex::root), large);
}

TEST_F(UsageCacheTest, ItsRecordIsNotHeldForWriting) {
  keep(volume);
  for (const auto& each : std::filesystem::directory_iterator("/proc/self/fd")) {
    std::error_code gone;
    const auto path = std::filesystem::read_symlink(each, gone).string();
    if (path.find(usageRecordName(volume)) == path.npos) continue;
    EXPECT_EQ(path, file);
    EXPECT_EQ(::fcntl(std::stoi(each.path().filename()), F_GETFL) & O_ACCMODE, O_RDONLY);
  }
}

TEST_F(UsageCacheTest, OneDescriptorIsHeldForEachRecordThatIsRead) {
  const auto before = testing::openDescriptors();
  for (int time = 0; time < 10; ++time) {
    makeLarge();
    keep(volume);
    EXPECT_EQ(testing::openDescriptors(), before + 1);
  }
  index = UsageIndex();
  EXPECT_EQ(testing::openDescriptors(), before);
}

TEST_F(UsageCacheTest, AStoppedWriteLeavesTheRecordBeforeAndNothingElse) {
  keep(volume, false);
  makeLarge();
  int pieces = 0;
  EXPECT_EQ(cache.keep(volume, true, index, [&pieces] { return ++pieces > 3; }),
            UsageCache::Came::stopped);
  EXPECT_EQ(pieces, 4);
  EXPECT_FALSE(taken(volume)->complete);
  EXPECT_EQ(keptFiles(), 1u);
  EXPECT_TRUE(log.lines.empty());
}

TEST_F(UsageCacheTest, AStoppedReadingLosesNothing) {
  makeLarge();
  keep(volume);
  int pieces = 0;
  std::optional<UsageRecord> record;
  EXPECT_EQ(cache.take(volume, record, [&pieces] { return ++pieces > 3; }),
            UsageCache::Came::stopped);
  EXPECT_EQ(pieces, 4);
  EXPECT_FALSE(record);
  EXPECT_TRUE(log.lines.empty());
  EXPECT_TRUE(taken(volume));
}

}  // namespace
}  // namespace vantile
