#include "vantile/platform/parsers/usage_record.h"

#include <gtest/gtest.h>

#include <algorithm>

#include "unit/platform/names_of.h"

namespace vantile {
namespace {

using namespace std::string_literals;

struct UsageRecordTest : ::testing::Test {
  UsageRecordTest() {
    index.setFolders(UsageIndex::root, "a\0b\0"s);
    const auto a = index.first(UsageIndex::root);
    index.setFolders(a, "deep\0"s);
    const FolderSums sums{{1, 2, 3, 4}, {{99, 8, UsageKind::movies}}};
    index.setContents(index.first(a), 11, sums, NameList("film.mkv\0"s));
    index.setContents(a, 12, {}, {});
    index.setContents(UsageIndex::root, 13, {}, {});
  }

  std::string written(bool complete = true) {
    std::string body;
    const auto head = writeUsageRecord(volume, complete, index, [&body](std::string_view piece) {
      body.append(piece);
      return true;
    });
    return head.value() + body;
  }
  /// The text with the checksum, FNV-1a, of what stands behind the head.
  static std::string sealed(std::string text) {
    std::uint64_t sum = 0xcbf29ce484222325;
    for (const char byte : std::string_view(text).substr(usageRecordHead))
      sum = (sum ^ static_cast<unsigned char>(byte)) * 0x100000001b3;
    for (std::size_t at = 0; at < 8; ++at)
      text[usageRecordHead - 8 + at] = static_cast<char>(sum >> (8 * at));
    return text;
  }
  /// The record in the text, which comes in pieces of that size.
  static std::optional<UsageRecord> read(const std::string& text, const UsageVolume& of,
                                         std::size_t pieceSize = 7) {
    std::string_view left = text;
    const UsageRecordSource source = [&] {
      const auto piece = left.substr(0, pieceSize);
      left.remove_prefix(piece.size());
      return piece;
    };
    auto record = readUsageRecord(source, text.size(), of);
    if (record)
      record->index.setKept([text](std::uint64_t fromEnd, char* to, std::size_t size) {
        return text.copy(to, size, text.size() - static_cast<std::size_t>(fromEnd)) == size;
      });
    return record;
  }

  const UsageVolume volume{
      .fileSystem = 77, .root = 2, .identifier = "1234-ABCD", .mountPoint = "/mnt/\xFF disk"};
  UsageIndex index;
};

TEST_F(UsageRecordTest, WhatIsWrittenIsReadBack) {
  const auto record = read(written(), volume);
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
  EXPECT_EQ(testing::namesOf(read, read.first(a)), "film.mkv\0"s);
  EXPECT_EQ(read.stamp(read.first(a)), 11u);
}

TEST_F(UsageRecordTest, ItsHeadHasItsSize) {
  const auto head = writeUsageRecord(volume, true, index, [](std::string_view) { return true; });
  ASSERT_TRUE(head);
  EXPECT_EQ(head->size(), usageRecordHead);
}

TEST_F(UsageRecordTest, ItComesInPiecesOfAnySize) {
  const auto whole = written();
  for (std::size_t size = 1; size <= whole.size(); ++size)
    EXPECT_TRUE(read(whole, volume, size)) << size;
}

TEST_F(UsageRecordTest, ALargeFolderIsHandedOnInSmallPieces) {
  std::string large;
  for (int file = 0; file < 50000; ++file)
    large.append("IMG_" + std::to_string(file)).push_back('\0');
  index.setContents(index.first(UsageIndex::root), 12, {}, NameList(large));
  std::size_t pieces = 0, longest = 0;
  const auto count = [&](std::string_view piece) {
    ++pieces;
    longest = std::max(longest, piece.size());
    return true;
  };
  EXPECT_TRUE(writeUsageRecord(volume, true, index, count));
  EXPECT_EQ(longest, 65536u);
  EXPECT_GE(pieces, 7u);
  const auto record = read(written(), volume, 1000);
  ASSERT_TRUE(record);
  EXPECT_EQ(testing::namesOf(record->index, record->index.first(UsageIndex::root)), large);
}

TEST_F(UsageRecordTest, ASinkThatWantsNoMoreEndsIt) {
  NameList large;
  for (int file = 0; file < 3000; ++file) large.append(std::string(100, 'x'));
  index.setContents(UsageIndex::root, 13, {}, std::move(large));
  int pieces = 0;
  EXPECT_FALSE(
      writeUsageRecord(volume, true, index, [&pieces](std::string_view) { return ++pieces < 2; }));
  EXPECT_EQ(pieces, 2);
}

TEST_F(UsageRecordTest, ALengthBeyondTheRecordTakesNoMemory) {
  auto whole = written();
  const auto before = whole.size();
  // The root's length, behind the volume, the mark and the root's stamp and number of folders.
  const auto at = usageRecordHead + 16 + 1 + volume.identifier.size() + 1 +
                  volume.mountPoint.size() + 1 + 8 + 1;
  whole.replace(at, 1, "\xFF\xFF\xFF\xFF\xFF\xFF\xFF\x7F");
  ASSERT_GT(whole.size(), before);
  EXPECT_FALSE(read(whole, volume));
}

TEST_F(UsageRecordTest, NamesOfAnotherLengthThanIsSaidAreNone) {
  const auto whole = written();
  EXPECT_TRUE(read(sealed(whole), volume));
  EXPECT_FALSE(read(sealed(whole + "x\0"s), volume));
  EXPECT_FALSE(read(sealed(whole.substr(0, whole.size() - 9)), volume));
}

TEST_F(UsageRecordTest, AFolderWhoseNamesCantBeReadIsToBeListedAndLosesNothingElse) {
  const auto whole = written();
  auto record = read(whole, volume);
  auto& taken = record->index;
  bool reads = false;
  taken.setKept([&](std::uint64_t fromEnd, char* to, std::size_t size) {
    return reads && whole.copy(to, size, whole.size() - static_cast<std::size_t>(fromEnd)) == size;
  });
  const auto other = taken.next(taken.first(UsageIndex::root));
  taken.setContents(other, 21, {}, NameList("held\0"s));
  const auto sink = [](std::string_view) { return true; };
  EXPECT_FALSE(writeUsageRecord(volume, true, taken, sink));
  const auto deep = taken.first(taken.first(UsageIndex::root));
  EXPECT_EQ(taken.stamp(deep), 0u);
  EXPECT_EQ(taken.namesSize(deep), 0u);
  EXPECT_EQ(taken.blocks(), index.blocks());
  EXPECT_EQ(taken.stamp(other), 21u);
  EXPECT_EQ(testing::namesOf(taken, other), "held\0"s);
  EXPECT_TRUE(writeUsageRecord(volume, true, taken, sink));
}

TEST_F(UsageRecordTest, WhatWasTakenUpIsWrittenAgain) {
  const auto whole = written();
  auto record = read(whole, volume);
  std::string body;
  const auto head = writeUsageRecord(volume, true, record->index, [&body](std::string_view piece) {
    body.append(piece);
    return true;
  });
  EXPECT_EQ(head.value() + body, whole);
}

TEST_F(UsageRecordTest, AnInterruptedPassIsKnownAsOne) {
  EXPECT_FALSE(read(written(false), volume)->complete);
}

TEST_F(UsageRecordTest, AnyDamageIsNoticed) {
  const auto whole = written();
  for (std::size_t at = 0; at < whole.size(); ++at) {
    auto damaged = whole;
    damaged[at] = static_cast<char>(damaged[at] ^ 1);
    EXPECT_FALSE(read(damaged, volume)) << at;
    EXPECT_FALSE(read(whole.substr(0, at), volume)) << at;
  }
  EXPECT_FALSE(read(whole + "x", volume));
}

TEST_F(UsageRecordTest, WhatWasCountedByFormerRulesIsNone) {
  for (const auto* const former : {"vantile usage 1\n", "vantile usage 2\n", "vantile usage 3\n"})
    EXPECT_FALSE(read(former + written().substr(16), volume));
}

TEST_F(UsageRecordTest, AnotherVolumesRecordIsNone) {
  auto other = volume;
  other.fileSystem = 78;
  EXPECT_FALSE(read(written(), other));
  other = volume;
  other.root = 5;
  EXPECT_FALSE(read(written(), other));
  other = volume;
  other.identifier = "1234-ABCE";
  EXPECT_FALSE(read(written(), other));
  other = volume;
  other.mountPoint = "/mnt";
  EXPECT_FALSE(read(written(), other));
}

TEST_F(UsageRecordTest, VolumesHaveRecordsOfTheirOwn) {
  auto other = volume;
  other.fileSystem = 78;
  EXPECT_NE(usageRecordName(other), usageRecordName(volume));
  other = volume;
  other.identifier = "1234-ABCE";
  EXPECT_NE(usageRecordName(other), usageRecordName(volume));
  EXPECT_EQ(usageRecordName(volume).size(), 22u);
}

TEST_F(UsageRecordTest, AVeryDeepTreeIsWrittenAndReadWithoutRecursion) {
  auto folder = index.first(UsageIndex::root);
  for (int depth = 0; depth < 100000; ++depth) {
    index.setFolders(folder, "d\0"s);
    folder = index.first(folder);
  }
  const auto record = read(written(), volume);
  ASSERT_TRUE(record);
  EXPECT_EQ(record->index.size(), index.size());
}

}  // namespace
}  // namespace vantile
