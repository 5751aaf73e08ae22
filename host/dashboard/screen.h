#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <string>
#include <vector>

#include "dashboard/canvas.h"
#include "dashboard/pane.h"

namespace vantile::host {

/// What the dashboard shows besides its panes.
struct Surroundings {
  std::string machine, clock, message;
  std::int32_t interval = 1;
  std::size_t page = 0;  ///< one that is not there shows the last
};

/// Draws the whole screen: a head line, a page of panes, a foot line. A canvas too small for that
/// says so instead. Gives the number of pages.
std::size_t drawScreen(Canvas& canvas, const std::vector<std::unique_ptr<Pane>>& panes,
                       const Surroundings& surroundings);

}  // namespace vantile::host
