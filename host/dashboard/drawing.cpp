#include "dashboard/drawing.h"

#include "text.h"

namespace vantile::host {
namespace {

constexpr Style faint{Colour::Grey};

}  // namespace

void drawWaiting(Region region) {
  region.text(0, 0, clipped("waiting for the first sample", region.width()), faint);
}

void drawMore(Region row, int count) {
  row.text(0, 0, clipped("and " + std::to_string(count) + " more", row.width()), faint);
}

void drawGuide(Region region, int y) {
  for (int x = region.width() - 1; x >= 0; x -= 4) region.put(x, y, U'·', {Colour::DarkGrey});
}

void drawShareHistory(Region region, const History& history, std::int32_t interval) {
  constexpr int axis = 6;
  const bool withTime = region.height() >= 4;
  const int height = region.height() - (withTime ? 1 : 0);
  const auto graph = region.part({axis, 0, region.width() - axis, height});
  const auto mark = [&](int y, const char* what) {
    region.textEndingAt(axis - 1, y, what, faint);
    drawGuide(graph, y);
  };
  mark(0, "100 %");
  if (height >= 9) mark((height - 1) / 4, "75 %");
  if (height >= 5) mark((height - 1) / 2, "50 %");
  if (height >= 9) mark((height - 1) * 3 / 4, "25 %");
  if (height >= 2) mark(height - 1, "0 %");
  drawHistory(graph, history, {1, Colour::Green, Colour::Yellow, Colour::Red});
  if (!withTime) return;
  const auto span = graphSpan(graph.width()) * static_cast<std::uint64_t>(interval);
  region.text(axis, height, formatSpan(span) + " ago", faint);
  region.textEndingAt(region.width(), height, "now", faint);
}

}  // namespace vantile::host
