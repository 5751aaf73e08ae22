#include "vantile/platform/parsers/usage_record.h"

#include <gtest/gtest.h>

namespace vantile {
namespace {

using namespace std::string_literals;

struct UsageRecordTest : ::testing::Test {
  UsageRecordTest() {
    index.setFolders(UsageIndex::root, "a\0b\0"s);
    const auto a = index.first(UsageIndex::root);
    index.setFolders(a, "deep\0"s);
    FolderContents contents;
    contents.blocks = {1, 2, 3, 4};
    contents.linked = {{99, 8, UsageKind::movies}};
    contents.files = "film.mkv\0"s;
    index.setContents(index.first(a), 11, contents);
    index.setContents(a, 12, {});
    index.setContents(UsageIndex::root, 13, {});
  }

  std::string written(bool complete = true) const {
    std::string body;
    const auto head = writeUsageRecord(volume, complete, index,
                                       [&body](std::string_view piece) { body.append(piece); });
    return head + body;
  }

  const UsageVolume volume{.fileSystem = 77, .root = 2, .mountPoint = "/mnt/\xFF disk"};
  UsageIndex index;
};

TEST_F(UsageRecordTest, WhatIsWrittenIsReadBack) {
  const auto record = readUsageRecord(written(), volume);
  ASSERT_TRUE(record);
  EXPECT_TRUE(record->complete);
  const auto& read = record->index;
  EXPECT_EQ(read.blocks(), index.blocks());
  EXPECT_EQ(read.size(), 4u);
  EXPECT_EQ(read.stamp(UsageIndex::root), 13u);
  const auto a = read.first(UsageIndex::root);
  EXPECT_EQ(read.name(a), "a");
  EXPECT_EQ(read.name(read.next(a)), "b");
  EXPECT_EQ(read.stamp(read.next(a)), 0u);
  EXPECT_EQ(read.name(read.first(a)), "deep");
  EXPECT_EQ(read.files(read.first(a)), "film.mkv\0"s);
  EXPECT_EQ(read.stamp(read.first(a)), 11u);
}

TEST_F(UsageRecordTest, ItsHeadHasItsSize) {
  EXPECT_EQ(writeUsageRecord(volume, true, index, [](std::string_view) {}).size(), usageRecordHead);
}

TEST_F(UsageRecordTest, AnInterruptedPassIsKnownAsOne) {
  EXPECT_FALSE(readUsageRecord(written(false), volume)->complete);
}

TEST_F(UsageRecordTest, AnyDamageIsNoticed) {
  const auto whole = written();
  for (std::size_t at = 0; at < whole.size(); ++at) {
    auto damaged = whole;
    damaged[at] = static_cast<char>(damaged[at] ^ 1);
    EXPECT_FALSE(readUsageRecord(damaged, volume)) << at;
    EXPECT_FALSE(readUsageRecord(whole.substr(0, at), volume)) << at;
  }
  EXPECT_FALSE(readUsageRecord(whole + "x", volume));
}

TEST_F(UsageRecordTest, AnotherVolumesRecordIsNone) {
  auto other = volume;
  other.fileSystem = 78;
  EXPECT_FALSE(readUsageRecord(written(), other));
  other = volume;
  other.root = 5;
  EXPECT_FALSE(readUsageRecord(written(), other));
  other = volume;
  other.mountPoint = "/mnt";
  EXPECT_FALSE(readUsageRecord(written(), other));
}

TEST_F(UsageRecordTest, VolumesHaveRecordsOfTheirOwn) {
  auto other = volume;
  other.fileSystem = 78;
  EXPECT_NE(usageRecordName(other), usageRecordName(volume));
  EXPECT_EQ(usageRecordName(volume).size(), 22u);
}

TEST_F(UsageRecordTest, AVeryDeepTreeIsWrittenAndReadWithoutRecursion) {
  auto folder = index.first(UsageIndex::root);
  for (int depth = 0; depth < 100000; ++depth) {
    index.setFolders(folder, "d\0"s);
    folder = index.first(folder);
  }
  const auto record = readUsageRecord(written(), volume);
  ASSERT_TRUE(record);
  EXPECT_EQ(record->index.size(), index.size());
}

}  // namespace
}  // namespace vantile
