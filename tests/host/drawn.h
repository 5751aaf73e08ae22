#pragma once

#include <algorithm>
#include <string>
#include <string_view>
#include <vector>

#include "dashboard/pane.h"

namespace vantile::host {

/// The rows that a pane draws in a region of that size, as text.
inline std::vector<std::string> drawn(const Pane& pane, Size size) {
  Canvas canvas(size);
  pane.draw(canvas.region(), 1);
  return canvas.rows();
}

inline bool contains(const std::vector<std::string>& rows, std::string_view text) {
  return std::ranges::any_of(
      rows, [&](const std::string& row) { return row.find(text) != std::string::npos; });
}

}  // namespace vantile::host
