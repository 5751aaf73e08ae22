#include "dashboard/canvas.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace vantile::host {
namespace {

using Rows = std::vector<std::string>;

TEST(HostCanvas, TextIsCutAtTheRegion) {
  Canvas canvas({6, 2});
  canvas.region().part({1, 0, 3, 1}).text(0, 0, "abcdef");
  EXPECT_EQ(canvas.rows(), (Rows{" abc  ", "      "}));
}

TEST(HostCanvas, TextOutsideDrawsNothing) {
  Canvas canvas({3, 1});
  canvas.region().text(0, 1, "below");
  canvas.region().text(0, -1, "above");
  canvas.region().textEndingAt(-1, 0, "left");
  EXPECT_EQ(canvas.rows(), (Rows{"   "}));
}

TEST(HostCanvas, TextEndsBeforeAColumn) {
  Canvas canvas({6, 1});
  canvas.region().textEndingAt(5, 0, "12");
  EXPECT_EQ(canvas.rows(), (Rows{"   12 "}));
}

TEST(HostCanvas, AWideCharacterTakesTwoCells) {
  Canvas canvas({5, 1});
  EXPECT_EQ(canvas.region().text(0, 0, "日x"), 3);
  EXPECT_EQ(canvas.at(1, 0).glyph, U'\0');
  EXPECT_EQ(canvas.rows(), (Rows{"日x  "}));
}

TEST(HostCanvas, HalfAWideCharacterIsLeftOut) {
  Canvas canvas({3, 1});
  canvas.region().text(0, 0, "日本");
  EXPECT_EQ(canvas.rows(), (Rows{"日 "}));
}

TEST(HostCanvas, APartOfAPartStaysWithinBoth) {
  Canvas canvas({8, 4});
  const auto inner = canvas.region().part({2, 1, 4, 2}).part({3, 1, 9, 9});
  EXPECT_EQ(inner.width(), 1);
  EXPECT_EQ(inner.height(), 1);
}

TEST(HostCanvas, AnAsciiTerminalGetsLikenesses) {
  Canvas canvas({10, 1});
  canvas.region().text(0, 0, "╭─│█▎⣿⣀é■…");
  canvas.makeAscii();
  EXPECT_EQ(canvas.rows(), (Rows{"+-|##:.?*."}));
  canvas.region().text(0, 0, "↓1 ↑2 –3×4");
  canvas.makeAscii();
  EXPECT_EQ(canvas.rows(), (Rows{"v1 ^2 -3x4"}));
}

TEST(HostCanvas, ANegativeSizeIsEmpty) {
  EXPECT_TRUE(Canvas({-3, -1}).rows().empty());
}

}  // namespace
}  // namespace vantile::host
