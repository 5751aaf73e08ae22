// Passes over volumes that do not give all that is on them.

#include <sys/syscall.h>

#include <cerrno>

#include "unit/platform/names_of.h"
#include "unit/platform/refused_calls.h"
#include "unit/platform/usage_pass_fixture.h"

namespace vantile {
namespace {

struct UsagePassFailuresTest : testing::UsagePassTest {
  UsagePassFailuresTest() { kinds.of("a.jpg"); }  // the database is not what fails

  /// A whole pass in which that call fails; what it missed, or nothing where none can be made fail.
  std::optional<std::size_t> missed(long call, int error) {
    std::size_t count = 0;
    const bool isRefused = testing::withRefused(call, error, [&] {
      auto whole = pass();
      EXPECT_EQ(whole.run(all, never), UsagePass::Came::toTheEnd);
      count = whole.missed();
    });
    return isRefused ? std::optional(count) : std::nullopt;
  }
};

#define MISSED_OR_SKIPPED(count, call, error) \
  const auto count = missed(call, error);     \
  if (!count) GTEST_SKIP() << "no system call can be refused here"

TEST_F(UsagePassFailuresTest, AFileThatCantBeAskedCountsOnceItCan) {
  tree.file("a/b.jpg", contents(1));
  for (const int error : {EIO, ENOTCONN, ESTALE, ENOMEM}) {
    index = UsageIndex();
    MISSED_OR_SKIPPED(count, SYS_newfstatat, error);
    EXPECT_EQ(*count, 1u);
    EXPECT_EQ(counted(), sums(0, 0, 0, 0));
    EXPECT_EQ(run(), 1u);
    EXPECT_EQ(counted(), sums(0, 0, 0, bytes("a/b.jpg")));
    EXPECT_EQ(run(), 0u);
  }
}

TEST_F(UsagePassFailuresTest, AFileThatIsGoneIsNotLookedForAgain) {
  tree.file("a/b.jpg", contents(1));
  MISSED_OR_SKIPPED(count, SYS_newfstatat, ENOENT);
  EXPECT_EQ(*count, 0u);
  EXPECT_EQ(run(), 0u);
}

TEST_F(UsagePassFailuresTest, AFileThatIsClosedToUsIsNotMissedButLookedForAgain) {
  tree.file("a/b.jpg", contents(1));
  MISSED_OR_SKIPPED(count, SYS_newfstatat, EACCES);
  EXPECT_EQ(*count, 0u);
  EXPECT_EQ(run(), 1u);
  EXPECT_EQ(counted(), sums(0, 0, 0, bytes("a/b.jpg")));
}

TEST_F(UsagePassFailuresTest, WhereNamesAreNotWhatTheyWereTheFolderIsListedTheNextTime) {
  tree.file("a/b.jpg", contents(1));
  tree.file("c/d.jpg", contents(1));
  for (const std::string_view wrong : {"/.jpg", "x.jpg", "b.jqg"}) {
    index = UsageIndex();
    tree.file("a/b.jpg", contents(1));
    run();
    std::string kept;
    testing::keepNames(index, kept);
    tree.file("a/b.jpg", contents(9));
    kept.replace(kept.find("b.jpg"), wrong.size(), wrong);
    EXPECT_EQ(run(), 0u);
    EXPECT_EQ(counted(), sums(0, 0, 0, 2 * bytes("c/d.jpg"))) << wrong;
    EXPECT_EQ(run(), 1u);
    EXPECT_EQ(counted(), sums(0, 0, 0, bytes("a/b.jpg") + bytes("c/d.jpg"))) << wrong;
    EXPECT_EQ(run(), 0u);
  }
}

TEST_F(UsagePassFailuresTest, NamesThatAreGivenUpBetweenTwoPartsLoseNothing) {
  for (int number = 0; number < 10; ++number)
    tree.file("a/" + std::to_string(number) + ".jpg", contents(1));
  run();
  const auto expected = counted();
  for (std::size_t parts = 1; parts < 14; ++parts) {
    auto again = pass();
    for (std::size_t part = 0; part < parts; ++part) (void)again.run(1, never);
    const auto folder = index.first(UsageIndex::root);
    index.setContents(folder, 0, index.sums(folder), NameList());
    (void)again.run(all, never);
    EXPECT_EQ(counted(), expected) << parts;
    run();
    EXPECT_EQ(counted(), expected) << parts;
  }
}

TEST_F(UsagePassFailuresTest, AKnownFileThatCantBeAskedKeepsItsSizeUntilItCan) {
  tree.file("a/b.jpg", contents(1));
  run();
  const auto before = counted();
  tree.file("a/b.jpg", contents(500));
  MISSED_OR_SKIPPED(count, SYS_newfstatat, EIO);
  EXPECT_EQ(*count, 1u);
  EXPECT_EQ(counted(), before);
  EXPECT_EQ(run(), 1u);
  EXPECT_EQ(counted(), sums(0, 0, 0, bytes("a/b.jpg")));
}

TEST_F(UsagePassFailuresTest, AFolderThatCantBeListedKeepsWhatWasKnownUntilItCan) {
  tree.file("a/b.jpg", contents(1));
  run();
  const auto before = counted();
  tree.file("a/c.jpg", contents(7));
  MISSED_OR_SKIPPED(count, SYS_getdents64, EIO);
  EXPECT_EQ(*count, 1u);
  EXPECT_EQ(counted(), before);
  EXPECT_EQ(run(), 1u);
  EXPECT_EQ(counted(), sums(0, 0, 0, bytes("a/b.jpg") + bytes("a/c.jpg")));
}

TEST_F(UsagePassFailuresTest, AFolderThatGoesAsItIsListedIsNotMissed) {
  tree.file("a.jpg", contents(1));
  MISSED_OR_SKIPPED(count, SYS_getdents64, ENOENT);
  EXPECT_EQ(*count, 0u);
}

TEST_F(UsagePassFailuresTest, AFolderThatCantBeOpenedKeepsWhatWasKnownUntilItCan) {
  tree.file("a/b.jpg", contents(1));
  run();
  const auto before = counted();
  for (const int error : {EIO, ESTALE, EMFILE}) {
    MISSED_OR_SKIPPED(count, SYS_openat, error);
    EXPECT_EQ(*count, 1u);
    EXPECT_EQ(counted(), before);
  }
  MISSED_OR_SKIPPED(gone, SYS_openat, ENOENT);
  EXPECT_EQ(*gone, 0u);
  EXPECT_EQ(counted(), sums(0, 0, 0, 0));
}

TEST_F(UsagePassFailuresTest, WhatCantBeOpenedForTheNextPartIsMissed) {
  tree.file("a/b/c.jpg", contents(1));
  for (const auto& [error, expected] : {std::pair(EIO, 1u), std::pair(ENOENT, 0u)}) {
    index = UsageIndex();
    auto parts = pass();
    while (parts.listed() < 2) parts.run(1, never);
    const bool isRefused = testing::withRefused(SYS_openat, error, [&] { parts.run(all, never); });
    if (!isRefused) GTEST_SKIP() << "no system call can be refused here";
    EXPECT_EQ(parts.missed(), expected);
  }
}

TEST_F(UsagePassFailuresTest, WhatATreeThatIsMovedMeanwhileHadAroundItIsMissed) {
  constexpr int depth = 60;  // of which the inner ones alone are held open
  std::string deep, shallow;
  for (int level = 0; level < depth; ++level) {
    deep += "d/";
    if (level < 20) shallow += "d/";
  }
  tree.file(deep + "a.jpg", contents(1));
  auto whole = pass();
  bool isMoved = false;
  const auto move = [&] {
    if (whole.listed() > depth && !std::exchange(isMoved, true))
      std::filesystem::rename(tree.path(shallow), tree.path("moved"));
    return false;
  };
  EXPECT_EQ(whole.run(all, move), UsagePass::Came::toTheEnd);
  EXPECT_TRUE(isMoved);
  EXPECT_EQ(whole.missed(), 1u);
}

}  // namespace
}  // namespace vantile
