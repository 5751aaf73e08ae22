#include "dashboard/bar.h"

#include <gtest/gtest.h>

#include <limits>
#include <string>
#include <vector>

namespace vantile::host {
namespace {

constexpr Style red{Colour::Red};
constexpr Style blue{Colour::Blue};

std::string drawn(const std::vector<BarPart>& parts, int width = 4) {
  Canvas canvas({width, 1});
  drawBar(canvas.region(), parts, U'.');
  return canvas.rows().front();
}

TEST(HostBar, FillsItsShare) {
  EXPECT_EQ(drawn({{0.5, red}}), "██..");
}

TEST(HostBar, ShowsEighthsOfACell) {
  EXPECT_EQ(drawn({{9.0 / 32, red}}), "█▏..");
  EXPECT_EQ(drawn({{15.0 / 32, red}}), "█▉..");
}

TEST(HostBar, ASmallShareShows) {
  EXPECT_EQ(drawn({{0.0001, red}}), "▏...");
}

TEST(HostBar, NothingIsNothing) {
  EXPECT_EQ(drawn({{0, red}}), "....");
  EXPECT_EQ(drawn({}), "....");
}

TEST(HostBar, SharesThatMakeNoSenseAreHeldWithinTheBar) {
  EXPECT_EQ(drawn({{7, red}}), "████");
  EXPECT_EQ(drawn({{-1, red}}), "....");
  EXPECT_EQ(drawn({{std::numeric_limits<double>::quiet_NaN(), red}}), "....");
}

TEST(HostBar, PartsFollowEachOther) {
  Canvas canvas({4, 1});
  drawBar(canvas.region(), {{0.25, red}, {0.5, blue}}, U'.');
  EXPECT_EQ(canvas.rows().front(), "███.");
  EXPECT_EQ(canvas.at(0, 0).style, red);
  EXPECT_EQ(canvas.at(1, 0).style, blue);
  EXPECT_EQ(canvas.at(2, 0).style, blue);
}

TEST(HostBar, TwoPartsThatMeetInACellShareIt) {
  Canvas canvas({4, 1});
  drawBar(canvas.region(), {{0.375, red}, {0.625, blue}});
  EXPECT_EQ(canvas.rows().front(), "█▌██");
  EXPECT_EQ(canvas.at(1, 0).style, (Style{Colour::Red, Colour::Blue}));
}

TEST(HostBar, APartOfNothingBetweenTwoLeavesNoTrace) {
  Canvas canvas({4, 1});
  drawBar(canvas.region(), {{0.375, red}, {0, {Colour::Green}}, {0.625, blue}});
  EXPECT_EQ(canvas.at(1, 0).style, (Style{Colour::Red, Colour::Blue}));
}

TEST(HostBar, ANarrowBarDrawsNothing) {
  Canvas canvas({0, 1});
  drawBar(canvas.region(), {{1, red}});
  EXPECT_EQ(canvas.rows().front(), "");
}

}  // namespace
}  // namespace vantile::host
