// Passes that go on in parts.

#include "unit/platform/names_of.h"
#include "unit/platform/usage_pass_fixture.h"

namespace vantile {
namespace {

using testing::UsagePassTest;

TEST_F(UsagePassTest, APassThatIsTakenUpAsksNoFileAgainThatItHadCounted) {
  tree.file("a/b.jpg", contents(1));
  tree.file("c/d.jpg", contents(1));
  run();
  auto again = pass(false);
  EXPECT_EQ(again.run(all, never), UsagePass::Came::toTheEnd);
  EXPECT_EQ(again.listed(), 0u);
  EXPECT_EQ(again.asked(), 2u);
}

TEST_F(UsagePassTest, AStoppedPassGoesOnWhereItWas) {
  for (int number = 0; number < 20; ++number)
    tree.file("f" + std::to_string(number) + "/a.jpg", contents(1));
  auto interrupted = pass();
  int left = 45;
  EXPECT_EQ(interrupted.run(all, [&left] { return --left < 0; }), UsagePass::Came::stopped);
  const auto listed = interrupted.listed();
  EXPECT_GT(listed, 5u);
  EXPECT_LT(listed, 20u);
  EXPECT_EQ(interrupted.run(all, never), UsagePass::Came::toTheEnd);
  EXPECT_LE(interrupted.listed(), 22u);  // 21, the one that it was in a second time
  EXPECT_EQ(counted()[3], 20 * bytes("f0/a.jpg"));
}

TEST_F(UsagePassTest, WhatAStoppedPassHadCountedANewOneDoesNotList) {
  for (int number = 0; number < 20; ++number)
    tree.file("f" + std::to_string(number) + "/a.jpg", contents(1));
  std::size_t listed = 0;
  {
    auto interrupted = pass();
    EXPECT_EQ(interrupted.run(10, never), UsagePass::Came::some);
    listed = interrupted.listed();
  }
  EXPECT_GT(listed, 2u);
  EXPECT_LE(listed + run(false), 22u);  // the one that it was in a second time
  EXPECT_EQ(counted()[3], 20 * bytes("f0/a.jpg"));
}

TEST_F(UsagePassTest, StoppedInAFolderItChangesNothingThere) {
  tree.file("a.jpg", contents(1));
  tree.file("b.jpg", contents(1));
  run();
  const auto before = counted();
  tree.file("c.jpg", contents(1));
  int left = 2;
  EXPECT_EQ(pass().run(all, [&left] { return --left < 0; }), UsagePass::Came::stopped);
  EXPECT_EQ(counted(), before);
}

TEST_F(UsagePassTest, AtAnyMomentThatItIsStoppedItComesToTheSame) {
  tree.file("a/b/c.jpg", contents(1));
  tree.file("a/d/e.jpg", contents(2));
  tree.file("usr/f", contents(3));
  run();
  const auto expected = counted();
  for (int moment = 0; moment < 30; ++moment) {
    index = UsageIndex();
    auto interrupted = pass();
    auto left = moment;
    while (interrupted.run(all, [&left] { return left-- == 0; }) == UsagePass::Came::stopped) {
    }
    EXPECT_EQ(counted(), expected) << moment;
  }
}

TEST_F(UsagePassTest, AFolderOfManyFilesIsCountedInParts) {
  constexpr std::size_t files = 3000;  // more than one reading of the folder gives
  for (std::size_t number = 0; number < files; ++number)
    tree.file("a/" + std::string(30, 'x') + std::to_string(number) + ".jpg");
  tree.file("a/" + std::string(30, 'x') + "5.jpg", contents(3));
  tree.file("a/below/b.mkv", contents(2));
  const auto expected =
      sums(0, bytes("a/below/b.mkv"), 0, bytes("a/" + std::string(30, 'x') + "5.jpg"));
  auto first = pass();
  std::size_t parts = 1, before = 0;
  const auto descriptors = testing::openDescriptors();
  while (first.run(100, never) == UsagePass::Came::some) {
    EXPECT_LE(first.asked() - before, 100u);
    EXPECT_EQ(testing::openDescriptors(), descriptors);
    before = first.asked();
    ++parts;
  }
  EXPECT_GE(parts, files / 100);
  EXPECT_EQ(first.listed(), 3u);
  EXPECT_EQ(first.asked(), files + 1 + 2);
  EXPECT_EQ(counted(), expected);
  std::string kept;
  testing::keepNames(index, kept);
  auto again = pass();
  tree.file("a/" + std::string(30, 'x') + "7.jpg", contents(9));
  for (parts = 1; again.run(100, never) == UsagePass::Came::some;) ++parts;
  EXPECT_GE(parts, files / 100);
  EXPECT_EQ(again.listed(), 0u);
  EXPECT_EQ(again.asked(), files + 1 + 2);
  EXPECT_EQ(counted()[3], expected[3] + bytes("a/" + std::string(30, 'x') + "7.jpg"));
}

TEST_F(UsagePassTest, AtItsEndAPassStays) {
  tree.file("a/b.jpg", contents(1));
  auto whole = pass();
  EXPECT_EQ(whole.run(all, never), UsagePass::Came::toTheEnd);
  const auto asked = whole.asked();
  EXPECT_EQ(whole.run(all, never), UsagePass::Came::toTheEnd);
  EXPECT_EQ(whole.asked(), asked);
  EXPECT_EQ(counted(), sums(0, 0, 0, bytes("a/b.jpg")));
}

TEST_F(UsagePassTest, StoppedInAFolderOfManyFilesItGoesOnThere) {
  constexpr std::size_t files = 2500;
  for (std::size_t number = 0; number < files; ++number)
    tree.file("a/" + std::string(30, 'x') + std::to_string(number) + ".txt");
  tree.file("a/b.jpg", contents(1));
  auto interrupted = pass();
  std::size_t stops = 0, looks = 0;
  while (interrupted.run(all, [&looks] { return ++looks % 200 == 0; }) == UsagePass::Came::stopped)
    ++stops;
  EXPECT_GE(stops, files / 200);
  EXPECT_LE(looks, files + 2 * stops + 10);  // none of its entries is looked at twice
  EXPECT_EQ(counted(), sums(0, 0, 0, bytes("a/b.jpg")));
}

TEST_F(UsagePassTest, AFolderThatGoesWhileItIsCountedEndsNothing) {
  for (int number = 0; number < 100; ++number)
    tree.file("a/" + std::to_string(number) + ".jpg", contents(1));
  tree.file("z/e.jpg", contents(1));
  auto parts = pass();
  for (int part = 0; part < 5; ++part) parts.run(5, never);
  tree.remove("a");
  while (parts.run(5, never) == UsagePass::Came::some) {
  }
  run();
  EXPECT_EQ(counted(), sums(0, 0, 0, bytes("z/e.jpg")));
}

TEST_F(UsagePassTest, APartHoldsTheVolumeForAWhileAlone) {
  for (int number = 0; number < 400; ++number) tree.file("a/" + std::to_string(number) + ".txt");
  tree.file("b/c.jpg", contents(1));
  hold = std::chrono::milliseconds(3);
  tick = std::chrono::milliseconds(1);
  auto slow = pass();
  std::size_t parts = 1;
  while (slow.run(all, never) == UsagePass::Came::some) ++parts;
  EXPECT_GE(parts, 400u / 24 - 1);  // a look at the clock at every eighth
  EXPECT_LE(parts, 400u / 16);
  EXPECT_EQ(slow.listed(), 3u);
  EXPECT_EQ(counted(), sums(0, 0, 0, bytes("b/c.jpg")));
}

TEST_F(UsagePassTest, APartThatOpensForLongerThanItMayHoldGetsOnAllTheSame) {
  tree.file("a/b/c/d.jpg", contents(1));
  hold = std::chrono::nanoseconds(0);
  auto slow = pass();
  int parts = 1;
  while (slow.run(all, never) == UsagePass::Came::some && parts < 100) ++parts;
  EXPECT_LE(parts, 3);
  EXPECT_EQ(counted(), sums(0, 0, 0, bytes("a/b/c/d.jpg")));
}

TEST_F(UsagePassTest, BetweenItsPartsItHoldsNoDescriptor) {
  tree.file("a/b/c/d.jpg", contents(1));
  const auto before = testing::openDescriptors();
  auto parts = pass();
  while (parts.run(1, never) == UsagePass::Came::some)
    EXPECT_EQ(testing::openDescriptors(), before);
  EXPECT_EQ(parts.listed(), 4u);
  EXPECT_EQ(counted(), sums(0, 0, 0, bytes("a/b/c/d.jpg")));
}

TEST_F(UsagePassTest, AFolderThatGoesBetweenTwoPartsEndsNothing) {
  tree.file("a/b/c/d.jpg", contents(1));
  tree.file("z/e.jpg", contents(1));
  auto parts = pass();
  for (int part = 0; part < 3; ++part) parts.run(1, never);
  tree.remove("a");
  while (parts.run(1, never) == UsagePass::Came::some) {
  }
  run();
  EXPECT_EQ(counted(), sums(0, 0, 0, bytes("z/e.jpg")));
}

}  // namespace
}  // namespace vantile
