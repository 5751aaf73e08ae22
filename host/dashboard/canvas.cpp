#include "dashboard/canvas.h"

#include <algorithm>

#include "text.h"

namespace vantile::host {
namespace {

char32_t likeness(char32_t glyph) {
  if (glyph < 0x80) return glyph;
  switch (glyph) {
    case U'─':
    case U'╌':
    case U'–':
      return U'-';
    case U'│':
      return U'|';
    case U'·':
    case U'•':
    case U'…':
      return U'.';
    case U'╭':
    case U'╮':
    case U'╰':
    case U'╯':
      return U'+';
    case U'↓':
      return U'v';
    case U'↑':
      return U'^';
    case U'×':
      return U'x';
    case U'°':
      return U' ';
    default:
      break;
  }
  if (glyph >= 0x2800 && glyph < 0x2900) {
    const auto dots = glyph - 0x2800;
    if (dots == 0) return U' ';
    // Whether anything stands in the upper half of the cell.
    return (dots & 0x1B) != 0 ? U':' : U'.';
  }
  if (glyph >= U'█' && glyph <= U'▏') return U'#';
  if (glyph >= 0x2580 && glyph < 0x2600) return glyph == U'■' ? U'*' : U' ';
  return U'?';
}

}  // namespace

Region Region::part(Rect rect) const {
  const int left = std::clamp(rect.x, 0, rect_.width);
  const int top = std::clamp(rect.y, 0, rect_.height);
  const int right = std::clamp(rect.x + rect.width, left, rect_.width);
  const int bottom = std::clamp(rect.y + rect.height, top, rect_.height);
  return {*canvas_, {rect_.x + left, rect_.y + top, right - left, bottom - top}};
}

void Region::put(int x, int y, char32_t glyph, Style style) const {
  if (x < 0 || y < 0 || x >= rect_.width || y >= rect_.height) return;
  canvas_->at(rect_.x + x, rect_.y + y) = {glyph, style};
}

int Region::text(int x, int y, std::string_view utf8, Style style) const {
  const int start = x;
  for (const auto glyph : decodeUtf8(printable(utf8))) {
    const int cells = cellsOf(glyph);
    if (cells == 0) continue;
    if (cells == 1) {
      put(x, y, glyph, style);
    } else {
      const bool fits = x >= 0 && x + 1 < width();
      put(x, y, fits ? glyph : U' ', style);
      put(x + 1, y, 0, style);
    }
    x += cells;
  }
  return x - start;
}

void Region::textEndingAt(int x, int y, std::string_view utf8, Style style) const {
  text(x - cellsOf(printable(utf8)), y, utf8, style);
}

Canvas::Canvas(Size size)
    : size_{std::max(size.width, 0), std::max(size.height, 0)},
      cells_(static_cast<std::size_t>(size_.width) * static_cast<std::size_t>(size_.height)) {}

std::vector<std::string> Canvas::rows() const {
  std::vector<std::string> rows(static_cast<std::size_t>(size_.height));
  for (int y = 0; y < size_.height; ++y) {
    for (int x = 0; x < size_.width; ++x) {
      if (const auto glyph = at(x, y).glyph) appendUtf8(rows[static_cast<std::size_t>(y)], glyph);
    }
  }
  return rows;
}

void Canvas::makeAscii() {
  for (auto& cell : cells_) {
    cell.glyph = cell.glyph == 0 ? U' ' : likeness(cell.glyph);
  }
}

}  // namespace vantile::host
