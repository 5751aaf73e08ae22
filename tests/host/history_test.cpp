#include "dashboard/history.h"

#include <gtest/gtest.h>

#include <cmath>
#include <initializer_list>
#include <string>
#include <vector>

namespace vantile::host {
namespace {

History historyOf(std::initializer_list<double> numbers) {
  History history;
  for (const double number : numbers) history.push(number);
  return history;
}

std::vector<std::string> drawn(const History& history, Size size, double top = 1) {
  Canvas canvas(size);
  GraphStyle style;
  style.top = top;
  drawHistory(canvas.region(), history, style);
  return canvas.rows();
}

using Rows = std::vector<std::string>;

TEST(HostHistory, TheLatestNumberIsAtTheRight) {
  EXPECT_EQ(drawn(historyOf({0, 1}), {2, 1}), (Rows{" ⣸"}));
}

TEST(HostHistory, ATallColumnFillsTheCellsBelowItsTop) {
  EXPECT_EQ(drawn(historyOf({1, 1}), {1, 2}), (Rows{"⣿", "⣿"}));
  EXPECT_EQ(drawn(historyOf({0.75, 0.75}), {1, 2}), (Rows{"⣤", "⣿"}));
}

TEST(HostHistory, ASmallNumberShows) {
  EXPECT_EQ(drawn(historyOf({1e-9, 1e-9}), {1, 2}), (Rows{" ", "⣀"}));
}

TEST(HostHistory, AZeroShowsTheGroundLineAlone) {
  Canvas canvas({2, 1});
  drawHistory(canvas.region(), historyOf({0, 0}), {});
  EXPECT_EQ(canvas.rows(), (Rows{" ⣀"}));
  EXPECT_EQ(canvas.at(1, 0).style, Style{Colour::DarkGrey});
}

TEST(HostHistory, NumbersAboveTheTopStayInTheGraph) {
  EXPECT_EQ(drawn(historyOf({5, 5}), {1, 1}, 2), (Rows{"⣿"}));
}

TEST(HostHistory, OldNumbersLeaveAtTheLeft) {
  EXPECT_EQ(drawn(historyOf({1, 1, 1, 1, 0, 0}), {2, 1}), (Rows{"⣿⣀"}));
}

TEST(HostHistory, HighPartsHaveAnotherColour) {
  Canvas canvas({1, 10});
  drawHistory(canvas.region(), historyOf({1, 1}), {1, Colour::Green, Colour::Yellow, Colour::Red});
  EXPECT_EQ(canvas.at(0, 9).style.ink, Colour::Green);
  EXPECT_EQ(canvas.at(0, 4).style.ink, Colour::Yellow);
  EXPECT_EQ(canvas.at(0, 0).style.ink, Colour::Red);
}

TEST(HostHistory, KeepsNoMoreThanTheWidestGraphShows) {
  History history;
  for (int number = 0; number < 5000; ++number) history.push(number);
  EXPECT_EQ(history.size(), 2048u);
  EXPECT_EQ(history.ago(0), 4999);
  EXPECT_TRUE(std::isnan(history.ago(2048)));
}

TEST(HostHistory, TheGreatestIsThatOfTheLatest) {
  EXPECT_EQ(historyOf({9, 2, 3}).greatest(2), 3);
  EXPECT_EQ(History().greatest(5), 0);
}

TEST(HostHistory, ATopIsARoundNumber) {
  EXPECT_EQ(roundTop(0, 10), 10);
  EXPECT_EQ(roundTop(11, 10), 20);
  EXPECT_EQ(roundTop(2001, 10), 5000);
  EXPECT_EQ(roundTop(5001, 10), 10000);
}

}  // namespace
}  // namespace vantile::host
