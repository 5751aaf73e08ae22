#include "vantile/platform/parsers/usage_index.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <utility>

#include "vantile/platform/parsers/packed_contents.h"

#include "unit/platform/names_of.h"

namespace vantile {
namespace {

using namespace std::string_literals;
using namespace std::string_view_literals;
using Number = UsageIndex::Number;

FolderSums withBlocks(UsageKind kind, std::uint64_t blocks) {
  FolderSums sums;
  sums.blocks[static_cast<std::size_t>(kind)] = blocks;
  return sums;
}

FolderSums withLink(UsageKind kind, std::uint64_t inode, std::uint64_t blocks) {
  FolderSums sums;
  sums.linked = {{inode, blocks, kind}};
  return sums;
}

UsageSums sums(std::uint64_t applications, std::uint64_t movies, std::uint64_t audio,
               std::uint64_t photos) {
  return {applications, movies, audio, photos};
}

std::string namesIn(const UsageIndex& index, Number folder) {
  std::string names;
  for (auto at = index.first(folder); at != UsageIndex::none; at = index.next(at))
    names.append(index.name(at)).append(" ");
  return names;
}

struct UsageIndexTest : ::testing::Test {
  UsageIndexTest() {
    index.setFolders(UsageIndex::root, "a\0b\0"s);
    a = index.first(UsageIndex::root);
    b = index.next(a);
  }
  void set(Number folder, std::uint64_t stamp, const FolderSums& sums,
           std::string_view names = "a\0"sv) {
    index.setContents(folder, stamp, sums, NameList(names));
  }
  std::string names(Number folder) const { return testing::namesOf(index, folder); }
  void keep() { testing::keepNames(index, kept); }
  UsageIndex index;
  Number a = UsageIndex::none, b = UsageIndex::none;
  std::string kept;
};

TEST_F(UsageIndexTest, FoldersAddUp) {
  set(a, 1, withBlocks(UsageKind::movies, 8));
  set(b, 1, withBlocks(UsageKind::movies, 16));
  set(UsageIndex::root, 1, withBlocks(UsageKind::audio, 24));
  EXPECT_EQ(index.blocks(), sums(0, 24, 24, 0));
}

TEST_F(UsageIndexTest, ContentsReplaceThoseBefore) {
  set(a, 1, withBlocks(UsageKind::movies, 8));
  set(a, 2, withBlocks(UsageKind::photos, 1));
  EXPECT_EQ(index.blocks(), sums(0, 0, 0, 1));
  EXPECT_EQ(index.stamp(a), 2u);
  EXPECT_EQ(index.name(a), "a");
}

TEST_F(UsageIndexTest, AFolderThatIsListedAgainKeepsThoseThatStayed) {
  set(b, 7, withBlocks(UsageKind::movies, 8));
  index.setFolders(UsageIndex::root, "c\0b\0"s);
  EXPECT_EQ(namesIn(index, UsageIndex::root), "c b ");
  EXPECT_EQ(index.next(index.first(UsageIndex::root)), b);
  EXPECT_EQ(index.stamp(b), 7u);
  EXPECT_EQ(index.blocks(), sums(0, 8, 0, 0));
  EXPECT_EQ(index.stamp(index.first(UsageIndex::root)), 0u);
}

TEST_F(UsageIndexTest, AFolderThatIsGoneGoesWithAllBelowIt) {
  index.setFolders(a, "below\0"s);
  set(index.first(a), 1, withBlocks(UsageKind::movies, 8));
  index.setFolders(UsageIndex::root, "b\0"s);
  EXPECT_EQ(index.blocks(), sums(0, 0, 0, 0));
  EXPECT_EQ(index.size(), 2u);
}

TEST_F(UsageIndexTest, AFolderIsMadeWhereOneHasGone) {
  index.setFolders(UsageIndex::root, "b\0"s);
  index.setFolders(UsageIndex::root, "b\0new\0"s);
  EXPECT_EQ(index.size(), 3u);
  EXPECT_EQ(namesIn(index, UsageIndex::root), "b new ");
  EXPECT_EQ(index.stamp(index.next(b)), 0u);
}

TEST_F(UsageIndexTest, ANameThatComesTwiceLeavesNothingBehind) {
  index.setFolders(a, "x\0x\0"s);
  index.setFolders(a, ""s);
  EXPECT_EQ(index.size(), 3u);
}

TEST_F(UsageIndexTest, AClearedFolderIsToBeListedAgain) {
  set(a, 3, withBlocks(UsageKind::movies, 8));
  index.setFolders(a, "below\0"s);
  index.clear(a);
  EXPECT_EQ(index.stamp(a), 0u);
  EXPECT_EQ(index.first(a), UsageIndex::none);
  EXPECT_EQ(index.blocks(), sums(0, 0, 0, 0));
  EXPECT_EQ(namesIn(index, UsageIndex::root), "a b ");
}

TEST_F(UsageIndexTest, AFileOfTwoNamesCountsOnce) {
  set(a, 1, withLink(UsageKind::movies, 42, 8));
  set(b, 1, withLink(UsageKind::movies, 42, 8));
  EXPECT_EQ(index.blocks(), sums(0, 8, 0, 0));
}

TEST_F(UsageIndexTest, AFileOfTwoNamesIsOfTheKindThatGoesBefore) {
  set(a, 1, withLink(UsageKind::movies, 42, 8));
  set(b, 1, withLink(UsageKind::applications, 42, 8));
  EXPECT_EQ(index.blocks(), sums(8, 0, 0, 0));
  index.clear(b);
  EXPECT_EQ(index.blocks(), sums(0, 8, 0, 0));
  index.clear(a);
  EXPECT_EQ(index.blocks(), sums(0, 0, 0, 0));
}

TEST_F(UsageIndexTest, AFileOfTwoNamesCountsAsItIsNow) {
  set(a, 1, withLink(UsageKind::movies, 42, 8));
  set(b, 1, withLink(UsageKind::movies, 42, 80));
  EXPECT_EQ(index.blocks(), sums(0, 80, 0, 0));
}

TEST_F(UsageIndexTest, AFileOfTwoNamesInOneFolderCountsOnce) {
  auto contents = withLink(UsageKind::photos, 42, 8);
  contents.linked.push_back(contents.linked.front());
  set(a, 1, contents);
  EXPECT_EQ(index.blocks(), sums(0, 0, 0, 8));
  set(a, 1, withLink(UsageKind::photos, 42, 8));
  EXPECT_EQ(index.blocks(), sums(0, 0, 0, 8));
}

TEST_F(UsageIndexTest, ContentsComeBackAsTheyWereSet) {
  FolderSums contents = withLink(UsageKind::photos, 1ull << 63, 1u << 30);
  contents.linked.push_back({7, 0, UsageKind::applications});
  contents.blocks = sums(1, 127, 128, 1ull << 50);
  set(a, 1, contents, "one\0\xFF name\0"sv);
  EXPECT_EQ(index.sums(a), contents);
  EXPECT_EQ(index.namesSize(a), 11u);
  EXPECT_EQ(names(a), "one\0\xFF name\0"s);
  EXPECT_EQ(index.sums(b), FolderSums());
  EXPECT_EQ(index.namesSize(b), 0u);
  EXPECT_EQ(names(b), "");
}

TEST_F(UsageIndexTest, FilesThatWereAskedAgainKeepTheirNames) {
  FolderSums contents = withLink(UsageKind::photos, 42, 8);
  contents.blocks = sums(0, 1, 0, 0);
  set(a, 3, contents);
  FolderSums now;
  now.blocks = sums(0, 1ull << 40, 0, 0);
  now.linked = {{42, 16, UsageKind::photos}};
  index.setSums(a, now);
  EXPECT_EQ(index.blocks(), sums(0, 1ull << 40, 0, 16));
  EXPECT_EQ(names(a), "a\0"s);
  EXPECT_EQ(index.name(a), "a");
  EXPECT_EQ(index.stamp(a), 3u);
  EXPECT_EQ(index.sums(a), now);
  index.clear(a);
  EXPECT_EQ(index.blocks(), sums(0, 0, 0, 0));
}

TEST_F(UsageIndexTest, ManyNamesAreReadInPieces) {
  std::string many;
  for (int file = 0; file < 20000; ++file) many.append(std::to_string(file)).push_back('\0');
  set(b, 1, {}, "b\0"sv);
  set(a, 1, {}, many);
  std::string piece;
  EXPECT_TRUE(index.readNames(a, 0, piece));
  EXPECT_LE(piece.size(), 65536u);
  EXPECT_EQ(piece.back(), '\0');
  EXPECT_FALSE(index.readNames(a, many.size(), piece));
  EXPECT_EQ(names(a), many);
  keep();
  EXPECT_EQ(names(a), many);
  EXPECT_EQ(names(b), "b\0"s);
}

TEST_F(UsageIndexTest, NamesThatAreKeptLeaveTheMemory) {
  set(a, 1, withBlocks(UsageKind::movies, 8), "a.mkv\0"sv);
  set(b, 1, withLink(UsageKind::photos, 42, 8), "b.jpg\0c.jpg\0"sv);
  EXPECT_EQ(index.heldSize(), 18u);
  keep();
  EXPECT_EQ(index.heldSize(), 0u);
  EXPECT_EQ(index.keptSize(), 18u);
  EXPECT_EQ(names(a), "a.mkv\0"s);
  EXPECT_EQ(names(b), "b.jpg\0c.jpg\0"s);
  EXPECT_EQ(index.blocks(), sums(0, 8, 0, 8));
}

TEST_F(UsageIndexTest, NewNamesAreHeldBesideThoseThatAreKept) {
  set(a, 1, {}, "a.mkv\0"sv);
  set(b, 1, {}, "b.jpg\0"sv);
  keep();
  set(a, 2, {}, "new.mkv\0"sv);
  EXPECT_EQ(index.heldSize(), 8u);
  EXPECT_EQ(names(a), "new.mkv\0"s);
  EXPECT_EQ(names(b), "b.jpg\0"s);
  keep();
  EXPECT_EQ(kept, "new.mkv\0b.jpg\0"s);
  EXPECT_EQ(names(a), "new.mkv\0"s);
  EXPECT_EQ(names(b), "b.jpg\0"s);
}

TEST_F(UsageIndexTest, NamesThatCantBeReadAreNone) {
  set(a, 1, {}, "a.mkv\0"sv);
  keep();
  for (const auto wrong : {""sv, "a.mk\0"sv, "/.mkv\0"sv, "a.mkvx"sv, "\0.mkv\0"sv, "..\0..\0"sv}) {
    kept = wrong;
    EXPECT_EQ(names(a), "") << wrong;
  }
}

TEST_F(UsageIndexTest, BehindTheLastNameThereAreNone) {
  set(a, 1, {}, "a.mkv\0"sv);
  index.setKept([](std::uint64_t, char* to, std::size_t size) {
    std::fill_n(to, size, 'x');
    to[size - 1] = '\0';
    return true;
  });
  std::string piece;
  EXPECT_TRUE(index.readNames(a, 3, piece));
  EXPECT_EQ(piece, "xx\0"s);
  for (const std::uint64_t from : {6u, 7u, 100000u}) {
    EXPECT_FALSE(index.readNames(a, from, piece)) << from;
    EXPECT_EQ(piece, "");
  }
}

TEST_F(UsageIndexTest, NamesThatNoFolderHasAnyMoreLeaveTheMemory) {
  const std::string large(1000, 'x');
  set(a, 1, {}, "kept before\0"sv);
  set(b, 1, {}, "b.jpg\0"sv);
  index.setFolders(b, "held\0"s);
  keep();
  set(index.first(b), 1, {}, "c.jpg\0d.jpg\0"sv);
  for (std::uint64_t time = 1; time < 1000; ++time) {
    NameList list;
    list.append(large);
    index.setFolders(a, "below\0"s);
    set(index.first(a), time, {}, large + '\0');
    index.setContents(a, time, {}, std::move(list));
    if (time % 3 == 0) index.setFolders(a, "");
    EXPECT_LE(index.heldSize(), 140000u);
  }
  EXPECT_EQ(names(b), "b.jpg\0"s);
  EXPECT_EQ(names(index.first(b)), "c.jpg\0d.jpg\0"s);
  EXPECT_EQ(names(a), large + '\0');
  EXPECT_LT(index.heldSize(), 140000u);
}

TEST_F(UsageIndexTest, WhatIsChangedIsSeen) {
  auto before = index.changes();
  const auto isChanged = [&] { return std::exchange(before, index.changes()) != before; };
  set(a, 1, {}, "b.jpg\0"sv);
  EXPECT_TRUE(isChanged());
  set(a, 1, {}, "c.jpg\0"sv);
  EXPECT_TRUE(isChanged());
  index.setSums(a, withBlocks(UsageKind::movies, 1));
  EXPECT_TRUE(isChanged());
  index.setStamp(a, 0);
  EXPECT_TRUE(isChanged());
  index.setStamp(a, 0);
  EXPECT_FALSE(isChanged());
  index.setFolders(a, "c\0"s);
  EXPECT_TRUE(isChanged());
  index.setFolders(a, "c\0"s);
  EXPECT_FALSE(isChanged());
  index.setFolders(a, {});
  EXPECT_TRUE(isChanged());
  index.clear(a);
  EXPECT_TRUE(isChanged());
  index.clear(a);
  keep();
  index.setContents(a, 0, {}, {});
  (void)isChanged();
  keep();
  EXPECT_FALSE(isChanged());
}

TEST_F(UsageIndexTest, FilesThatAreAskedAgainTakeNoFurtherNames) {
  set(a, 1, withBlocks(UsageKind::movies, 8), std::string(100000, 'x') + '\0');
  for (std::uint64_t blocks = 0; blocks < 10; ++blocks)
    index.setSums(a, withBlocks(UsageKind::movies, blocks));
  set(b, 1, {});
  EXPECT_EQ(index.heldSize(), 100003u);
}

TEST_F(UsageIndexTest, AFolderWithNothingCountedIsItsNameAlone) {
  EXPECT_EQ(index.packed(a), "a\0"s);
}

TEST_F(UsageIndexTest, VeryDeepTreesGoWithoutRecursion) {
  auto folder = a;
  for (int depth = 0; depth < 200000; ++depth) {
    index.setFolders(folder, "d\0"s);
    folder = index.first(folder);
  }
  index.clear(a);
  EXPECT_EQ(index.size(), 3u);
}

TEST(PackedContents, NumbersComeBack) {
  for (const std::uint64_t number : {0ull, 1ull, 127ull, 128ull, 16384ull, ~0ull}) {
    std::string text;
    appendPacked(text, number);
    std::string_view left = text;
    EXPECT_EQ(takePacked(left), number);
    EXPECT_EQ(left, "");
  }
}

TEST(PackedContents, ANumberThatIsCutOffOrTooLargeIsNone) {
  for (const std::string_view text : {"", "\x80", "\xFF\xFF\xFF\xFF\xFF\xFF\xFF\xFF\xFF\x02",
                                      "\xFF\xFF\xFF\xFF\xFF\xFF\xFF\xFF\xFF\xFF\x01"}) {
    auto left = text;
    EXPECT_EQ(takePacked(left), std::nullopt);
  }
}

TEST(PackedContents, NamesThatLeadElsewhereAreNone) {
  EXPECT_TRUE(areEntryNames("a\0\xFF\0"sv));
  EXPECT_TRUE(areEntryNames(""));
  for (const auto names : {"a/b\0"sv, "..\0"sv, ".\0"sv, "\0"sv, "a"sv, "a\0b"sv})
    EXPECT_FALSE(areEntryNames(names)) << names;
}

TEST(PackedContents, MoreFilesOfSeveralNamesThanThereAreBytesIsNone) {
  for (const auto text :
       {"\1\1\1\1\xFF\xFF\xFF\xFF\xFF\xFF\xFF\xFF\xFF\1"sv, "\1\1\1"sv, "\1\1\1\1\0"sv}) {
    auto left = text;
    EXPECT_FALSE(takeContents(left));
  }
}

TEST(PackedContents, WhatIsTakenIsWhatWasAppended) {
  PackedContents contents{{{1, 2, 3, 4}, {{99, 8, UsageKind::audio}}}, 300};
  std::string text;
  appendPacked(text, contents);
  text += "rest";
  std::string_view left = text;
  EXPECT_EQ(takeContents(left), contents);
  EXPECT_EQ(left, "rest");
}

}  // namespace
}  // namespace vantile
