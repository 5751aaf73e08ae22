#include "dashboard/layout.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <vector>

namespace vantile::host {
namespace {

const std::vector<PaneRows> memoryLike{
    {6, 7, false},  // bars
    {2, 5, true},   // a graph
    {2, 2, true},   // rates
    {1, 1, false},  // one line
};

Rect rectOf(const Page& page, std::size_t pane) {
  const auto found = std::ranges::find(page, pane, &PlacedPane::pane);
  return found == page.end() ? Rect{} : found->rect;
}

TEST(HostLayout, ANarrowScreenStacksThePanesInOrder) {
  const auto pages = layOut(memoryLike, {80, 22});
  ASSERT_EQ(pages.size(), 1u);
  EXPECT_EQ(rectOf(pages[0], 0), (Rect{0, 0, 80, 9}));
  EXPECT_EQ(rectOf(pages[0], 1), (Rect{0, 9, 80, 6}));
  EXPECT_EQ(rectOf(pages[0], 2), (Rect{0, 15, 80, 4}));
  EXPECT_EQ(rectOf(pages[0], 3), (Rect{0, 19, 80, 3}));
}

TEST(HostLayout, AnOrdinaryTerminalTakesAllPanesAtTheirLeast) {
  auto panes = memoryLike;
  panes.push_back({1, 4, true});  // a list
  const auto pages = layOut(panes, {80, 22});
  ASSERT_EQ(pages.size(), 1u);
  EXPECT_EQ(rectOf(pages[0], 4), (Rect{0, 19, 80, 3}));
}

TEST(HostLayout, AWideScreenHasColumnsThatFillIt) {
  const auto pages = layOut(memoryLike, {120, 38});
  ASSERT_EQ(pages.size(), 1u);
  EXPECT_EQ(rectOf(pages[0], 0).width, 60);
  EXPECT_EQ(rectOf(pages[0], 1).x, 60);
  int bottom = 0;
  for (const auto& placed : pages[0]) {
    bottom = std::max(bottom, placed.rect.y + placed.rect.height);
  }
  EXPECT_EQ(bottom, 38);
}

TEST(HostLayout, PanesThatDoNotFitGoToFurtherPages) {
  const auto pages = layOut(memoryLike, {40, 10});
  ASSERT_EQ(pages.size(), 2u);
  EXPECT_EQ(pages[0].size(), 2u);
  EXPECT_EQ(pages[1].size(), 2u);
}

TEST(HostLayout, APaneThatFitsNowhereGetsAPageOfItsOwn) {
  const auto pages = layOut(memoryLike, {40, 4});
  ASSERT_EQ(pages[0].size(), 1u);
  EXPECT_EQ(pages[0][0].rect, (Rect{0, 0, 40, 4}));
}

TEST(HostLayout, EveryPaneIsOnExactlyOnePageAndInsideIt) {
  const std::vector<PaneRows> many(12, {3, 5, true});
  for (const Size area : {Size{28, 5}, {80, 22}, {200, 60}, {57, 1}}) {
    std::vector<std::size_t> seen;
    for (const auto& page : layOut(many, area)) {
      for (const auto& [pane, rect] : page) {
        seen.push_back(pane);
        EXPECT_LE(rect.x + rect.width, area.width);
        EXPECT_LE(rect.y + rect.height, area.height);
      }
    }
    std::ranges::sort(seen);
    ASSERT_EQ(seen.size(), many.size());
    EXPECT_TRUE(std::ranges::adjacent_find(seen) == seen.end());
  }
}

TEST(HostLayout, WithoutPanesThereIsOneEmptyPage) {
  const auto pages = layOut({}, {80, 22});
  ASSERT_EQ(pages.size(), 1u);
  EXPECT_TRUE(pages[0].empty());
}

}  // namespace
}  // namespace vantile::host
