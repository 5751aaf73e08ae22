#pragma once

#include <cstddef>
#include <span>
#include <vector>

#include "dashboard/canvas.h"
#include "dashboard/pane.h"

namespace vantile::host {

/// Where a pane goes, its frame included.
struct PlacedPane {
  std::size_t pane;
  Rect rect;
};

using Page = std::vector<PlacedPane>;

/// Rows that a frame takes from a pane: the title's and, where there is room, the bottom's.
inline int frameRows(Size area) {
  return area.height < 18 ? 1 : 2;
}

/// Spreads panes over pages of that size, in order, in as many columns as the width allows. Panes
/// share a page as long as each gets its minimum; the rows to spare go first to those that want
/// more, then to those that grow. There is always one page.
std::vector<Page> layOut(std::span<const PaneRows> panes, Size area);

}  // namespace vantile::host
