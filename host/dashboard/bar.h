#pragma once

#include <vector>

#include "dashboard/canvas.h"

namespace vantile::host {

/// A part of a bar.
struct BarPart {
  double share;  ///< of the whole bar, 0 to 1
  Style style;   ///< its ink fills the part
};

/// Draws one row: the parts one after the other, to an eighth of a cell, on a ground of `ground`.
/// A part that is not 0 shows, however small. Parts beyond the bar's end are cut off.
void drawBar(Region row, const std::vector<BarPart>& parts, char32_t ground = U' ');

}  // namespace vantile::host
