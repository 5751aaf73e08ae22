#pragma once

#include <cstddef>
#include <deque>

#include "dashboard/canvas.h"

namespace vantile::host {

/// The latest numbers of a series, enough for the widest graph.
class History {
 public:
  void push(double number);
  std::size_t size() const { return numbers_.size(); }
  /// The number that came `ago` numbers before the latest one; NaN before the first.
  double ago(std::size_t ago) const;
  /// The greatest of the latest `count`; 0 without any.
  double greatest(std::size_t count) const;

 private:
  std::deque<double> numbers_;
};

/// How a graph looks.
struct GraphStyle {
  double top = 1;  ///< the number that fills its height
  Colour low = Colour::Teal;
  Colour medium = Colour::Teal;  ///< from half of the height
  Colour high = Colour::Teal;    ///< from four fifths of the height
};

/// The numbers that a graph of that width shows.
inline std::size_t graphSpan(int width) {
  return static_cast<std::size_t>(width) * 2;
}

/// Fills the region with the history in braille dots, two numbers a cell, the latest at the right.
/// A number above 0 shows, however small; where there are numbers, the ground line does too.
void drawHistory(Region region, const History& history, const GraphStyle& style);

/// A round number not below `number` for a graph's top, at least `least`.
double roundTop(double number, double least);

}  // namespace vantile::host
