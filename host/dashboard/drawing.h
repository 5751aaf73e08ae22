#pragma once

#include <cstdint>
#include <string>

#include "dashboard/canvas.h"
#include "dashboard/history.h"

namespace vantile::host {

/// Says that nothing was told yet.
void drawWaiting(Region region);

/// Says that so many more have no room.
void drawMore(Region row, int count);

/// Draws a dotted line, to go behind a graph.
void drawGuide(Region region, int y);

/// Draws a history of shares from 0 to 1 as a graph with its axes. `interval` is that of the
/// samples, in seconds.
void drawShareHistory(Region region, const History& history, std::int32_t interval);

}  // namespace vantile::host
