#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

namespace vantile::host {

enum class Colour : std::uint8_t {
  Default,
  Grey,
  DarkGrey,
  Track,  ///< the ground of a bar
  Red,
  Orange,
  Yellow,
  Green,
  Teal,
  Blue,
  Purple,
};

struct Style {
  Colour ink = Colour::Default;
  Colour paper = Colour::Default;
  bool bold = false;
  friend bool operator==(const Style&, const Style&) = default;
};

struct Cell {
  char32_t glyph = U' ';  ///< 0 in the second cell of a wide character
  Style style = {};
  friend bool operator==(const Cell&, const Cell&) = default;
};

struct Size {
  int width = 0, height = 0;
  friend bool operator==(const Size&, const Size&) = default;
};

struct Rect {
  int x = 0, y = 0, width = 0, height = 0;
  friend bool operator==(const Rect&, const Rect&) = default;
};

class Canvas;

/// A rectangle of a canvas to draw into, with coordinates of its own; what falls outside of it is
/// cut off. Valid as long as its canvas.
class Region {
 public:
  Region(Canvas& canvas, Rect rect) : canvas_(&canvas), rect_(rect) {}

  int width() const { return rect_.width; }
  int height() const { return rect_.height; }

  /// A part of this one, cut to its borders.
  Region part(Rect rect) const;
  Region row(int y) const { return part({0, y, width(), 1}); }

  void put(int x, int y, char32_t glyph, Style style = {}) const;
  /// Draws UTF-8 text from `x` on; gives the cells that it takes, also where they are cut off.
  int text(int x, int y, std::string_view utf8, Style style = {}) const;
  /// Draws text that ends before `x`.
  void textEndingAt(int x, int y, std::string_view utf8, Style style = {}) const;

 private:
  Canvas* canvas_;
  Rect rect_;
};

/// A grid of cells: what a terminal is going to show.
class Canvas {
 public:
  explicit Canvas(Size size);

  Size size() const { return size_; }
  Region region() { return {*this, {0, 0, size_.width, size_.height}}; }
  const Cell& at(int x, int y) const { return cells_[index(x, y)]; }
  Cell& at(int x, int y) { return cells_[index(x, y)]; }

  /// The rows as UTF-8 text, without their styles.
  std::vector<std::string> rows() const;

  /// Replaces what a terminal without Unicode cannot show by its likeness in ASCII.
  void makeAscii();

 private:
  std::size_t index(int x, int y) const {
    return static_cast<std::size_t>(y) * static_cast<std::size_t>(size_.width) +
           static_cast<std::size_t>(x);
  }

  Size size_;
  std::vector<Cell> cells_;
};

}  // namespace vantile::host
