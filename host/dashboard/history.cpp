#include "dashboard/history.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <limits>

namespace vantile::host {
namespace {

constexpr std::size_t kept = 2048;
constexpr int dotsPerCell = 4;

/// Dots that a number fills of a column `height` dots high; -1 without a number.
int dotsOf(double number, double top, int height) {
  if (std::isnan(number)) return -1;
  if (number <= 0 || top <= 0) return 0;
  const double dots = std::clamp(number / top, 0.0, 1.0) * height;
  return std::max(1, static_cast<int>(std::lround(dots)));
}

/// One column's dots in a cell, filled from below.
char32_t column(int dots, bool right) {
  static constexpr std::array<char32_t, 4> left{0x40, 0x04, 0x02, 0x01};
  static constexpr std::array<char32_t, 4> rightward{0x80, 0x20, 0x10, 0x08};
  char32_t bits = 0;
  for (std::size_t dot = 0; dot < static_cast<std::size_t>(std::clamp(dots, 0, dotsPerCell));
       ++dot) {
    bits |= right ? rightward[dot] : left[dot];
  }
  return bits;
}

Colour colourAt(int row, int height, const GraphStyle& style) {
  const double middle = (height - row - 0.5) / height;
  if (height > 1 && middle >= 0.8) return style.high;
  if (height > 1 && middle >= 0.5) return style.medium;
  return style.low;
}

}  // namespace

void History::push(double number) {
  numbers_.push_back(number);
  if (numbers_.size() > kept) numbers_.pop_front();
}

double History::ago(std::size_t ago) const {
  return ago < numbers_.size() ? numbers_[numbers_.size() - 1 - ago]
                               : std::numeric_limits<double>::quiet_NaN();
}

double History::greatest(std::size_t count) const {
  double greatest = 0;
  for (std::size_t at = 0; at < std::min(count, numbers_.size()); ++at) {
    if (ago(at) > greatest) greatest = ago(at);
  }
  return greatest;
}

void drawHistory(Region region, const History& history, const GraphStyle& style) {
  const int height = region.height() * dotsPerCell;
  for (int x = 0; x < region.width(); ++x) {
    const auto newer = static_cast<std::size_t>(region.width() - 1 - x) * 2;
    const int left = dotsOf(history.ago(newer + 1), style.top, height);
    const int right = dotsOf(history.ago(newer), style.top, height);
    for (int y = 0; y < region.height(); ++y) {
      const int below = (region.height() - 1 - y) * dotsPerCell;
      const char32_t bits = column(left - below, false) | column(right - below, true);
      const bool ground = y == region.height() - 1 && (left >= 0 || right >= 0);
      if (bits != 0) {
        const char32_t line = ground ? (left >= 0 ? 0x40u : 0u) | (right >= 0 ? 0x80u : 0u) : 0u;
        region.put(x, y, 0x2800 + (bits | line), {colourAt(y, region.height(), style)});
      } else if (ground) {
        const char32_t line = (left >= 0 ? 0x40u : 0u) | (right >= 0 ? 0x80u : 0u);
        region.put(x, y, 0x2800 + line, {Colour::DarkGrey});
      }
    }
  }
}

double roundTop(double number, double least) {
  if (!(number > least)) return least;
  const double power = std::pow(10, std::floor(std::log10(number)));
  for (const double step : {1.0, 2.0, 5.0}) {
    if (number <= step * power) return step * power;
  }
  return 10 * power;
}

}  // namespace vantile::host
