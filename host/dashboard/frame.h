#pragma once

#include <string_view>

#include "dashboard/canvas.h"

namespace vantile::host {

/// Draws a frame with a title and a note into the region and gives what is left inside: a box, or
/// where `rows` is 1 a title line alone.
Region drawFrame(Region region, std::string_view title, std::string_view note, int rows);

}  // namespace vantile::host
