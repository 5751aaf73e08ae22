#include "vantile/platform/parsers/usage_index.h"

#include <gtest/gtest.h>

#include "vantile/platform/parsers/packed_contents.h"

namespace vantile {
namespace {

using namespace std::string_literals;
using Number = UsageIndex::Number;

FolderContents withBlocks(UsageKind kind, std::uint64_t blocks) {
  FolderContents contents;
  contents.blocks[static_cast<std::size_t>(kind)] = blocks;
  contents.files = "a\0"s;
  return contents;
}

FolderContents withLink(UsageKind kind, std::uint64_t inode, std::uint64_t blocks) {
  FolderContents contents;
  contents.linked = {{inode, blocks, kind}};
  contents.files = "a\0"s;
  return contents;
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
  UsageIndex index;
  Number a = UsageIndex::none, b = UsageIndex::none;
};

TEST_F(UsageIndexTest, FoldersAddUp) {
  index.setContents(a, 1, withBlocks(UsageKind::movies, 8));
  index.setContents(b, 1, withBlocks(UsageKind::movies, 16));
  index.setContents(UsageIndex::root, 1, withBlocks(UsageKind::audio, 24));
  EXPECT_EQ(index.blocks(), sums(0, 24, 24, 0));
}

TEST_F(UsageIndexTest, ContentsReplaceThoseBefore) {
  index.setContents(a, 1, withBlocks(UsageKind::movies, 8));
  index.setContents(a, 2, withBlocks(UsageKind::photos, 1));
  EXPECT_EQ(index.blocks(), sums(0, 0, 0, 1));
  EXPECT_EQ(index.stamp(a), 2u);
  EXPECT_EQ(index.name(a), "a");
}

TEST_F(UsageIndexTest, AFolderThatIsListedAgainKeepsThoseThatStayed) {
  index.setContents(b, 7, withBlocks(UsageKind::movies, 8));
  index.setFolders(UsageIndex::root, "c\0b\0"s);
  EXPECT_EQ(namesIn(index, UsageIndex::root), "c b ");
  EXPECT_EQ(index.next(index.first(UsageIndex::root)), b);
  EXPECT_EQ(index.stamp(b), 7u);
  EXPECT_EQ(index.blocks(), sums(0, 8, 0, 0));
  EXPECT_EQ(index.stamp(index.first(UsageIndex::root)), 0u);
}

TEST_F(UsageIndexTest, AFolderThatIsGoneGoesWithAllBelowIt) {
  index.setFolders(a, "below\0"s);
  index.setContents(index.first(a), 1, withBlocks(UsageKind::movies, 8));
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
  index.setContents(a, 3, withBlocks(UsageKind::movies, 8));
  index.setFolders(a, "below\0"s);
  index.clear(a);
  EXPECT_EQ(index.stamp(a), 0u);
  EXPECT_EQ(index.first(a), UsageIndex::none);
  EXPECT_EQ(index.blocks(), sums(0, 0, 0, 0));
  EXPECT_EQ(namesIn(index, UsageIndex::root), "a b ");
}

TEST_F(UsageIndexTest, AFileOfTwoNamesCountsOnce) {
  index.setContents(a, 1, withLink(UsageKind::movies, 42, 8));
  index.setContents(b, 1, withLink(UsageKind::movies, 42, 8));
  EXPECT_EQ(index.blocks(), sums(0, 8, 0, 0));
}

TEST_F(UsageIndexTest, AFileOfTwoNamesIsOfTheKindThatGoesBefore) {
  index.setContents(a, 1, withLink(UsageKind::movies, 42, 8));
  index.setContents(b, 1, withLink(UsageKind::applications, 42, 8));
  EXPECT_EQ(index.blocks(), sums(8, 0, 0, 0));
  index.clear(b);
  EXPECT_EQ(index.blocks(), sums(0, 8, 0, 0));
  index.clear(a);
  EXPECT_EQ(index.blocks(), sums(0, 0, 0, 0));
}

TEST_F(UsageIndexTest, AFileOfTwoNamesCountsAsItIsNow) {
  index.setContents(a, 1, withLink(UsageKind::movies, 42, 8));
  index.setContents(b, 1, withLink(UsageKind::movies, 42, 80));
  EXPECT_EQ(index.blocks(), sums(0, 80, 0, 0));
}

TEST_F(UsageIndexTest, AFileOfTwoNamesInOneFolderCountsOnce) {
  auto contents = withLink(UsageKind::photos, 42, 8);
  contents.linked.push_back(contents.linked.front());
  index.setContents(a, 1, contents);
  EXPECT_EQ(index.blocks(), sums(0, 0, 0, 8));
  index.setContents(a, 1, withLink(UsageKind::photos, 42, 8));
  EXPECT_EQ(index.blocks(), sums(0, 0, 0, 8));
}

TEST_F(UsageIndexTest, ContentsComeBackAsTheyWereSet) {
  FolderContents contents = withLink(UsageKind::photos, 1ull << 63, 1u << 30);
  contents.linked.push_back({7, 0, UsageKind::applications});
  contents.blocks = sums(1, 127, 128, 1ull << 50);
  contents.files = "one\0\xFF name\0"s;
  index.setContents(a, 1, contents);
  EXPECT_EQ(index.contents(a), contents);
  EXPECT_EQ(index.files(a), "one\0\xFF name\0"s);
  EXPECT_EQ(index.contents(b), FolderContents());
  EXPECT_EQ(index.files(b), "");
}

TEST_F(UsageIndexTest, FilesThatWereAskedAgainKeepTheirNames) {
  FolderContents contents = withLink(UsageKind::photos, 42, 8);
  contents.blocks = sums(0, 1, 0, 0);
  index.setContents(a, 3, contents);
  FolderSums now;
  now.blocks = sums(0, 1ull << 40, 0, 0);
  now.linked = {{42, 16, UsageKind::photos}};
  index.setSums(a, now);
  EXPECT_EQ(index.blocks(), sums(0, 1ull << 40, 0, 16));
  EXPECT_EQ(index.files(a), "a\0"s);
  EXPECT_EQ(index.name(a), "a");
  EXPECT_EQ(index.stamp(a), 3u);
  EXPECT_EQ(index.sums(a), now);
  index.clear(a);
  EXPECT_EQ(index.blocks(), sums(0, 0, 0, 0));
}

TEST(NameListTest, NamesComeOutAsTheyWentIn) {
  NameList names;
  std::string expected = "before";
  for (int number = 0; number < 20000; ++number) {
    names.append(std::to_string(number));
    expected.append(std::to_string(number)).push_back('\0');
  }
  EXPECT_EQ(names.size() + 6, expected.size());
  std::string text = "before";
  text.resize(expected.size());
  names.moveTo(text.data() + 6);
  EXPECT_EQ(text, expected);
  EXPECT_EQ(names.size(), 0u);
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
  const auto numbers = "\1\1\1\1"s + '\0';
  EXPECT_TRUE(contentsIn(numbers + "a\0"s));
  EXPECT_FALSE(contentsIn(numbers + "a/b\0"s));
  EXPECT_FALSE(contentsIn(numbers + "..\0"s));
  EXPECT_FALSE(contentsIn(numbers + ".\0"s));
  EXPECT_FALSE(contentsIn(numbers + "\0"s));
  EXPECT_FALSE(contentsIn(numbers + "a"s));
}

TEST(PackedContents, MoreFilesOfSeveralNamesThanThereAreBytesIsNone) {
  EXPECT_FALSE(contentsIn("\1\1\1\1\xFF\xFF\xFF\xFF\xFF\xFF\xFF\xFF\xFF\1"));
  EXPECT_FALSE(contentsIn("\1\1\1"));
}

}  // namespace
}  // namespace vantile
