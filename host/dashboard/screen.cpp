#include "dashboard/screen.h"

#include <algorithm>
#include <string_view>

#include "dashboard/frame.h"
#include "dashboard/layout.h"
#include "text.h"

namespace vantile::host {
namespace {

constexpr Size least{28, 7};
constexpr Style faint{Colour::Grey};

void drawCentred(Region region, int y, std::string_view text, Style style) {
  const int cells = cellsOf(text);
  region.text(cells < region.width() ? (region.width() - cells) / 2 : 0, y, text, style);
}

void drawTooSmall(Region region) {
  const int y = region.height() >= 3 ? (region.height() - 1) / 2 : 0;
  drawCentred(region, y, "too small", {Colour::Yellow, Colour::Default, true});
  drawCentred(region, y + 1,
              "needs " + std::to_string(least.width) + "×" + std::to_string(least.height), faint);
}

void drawHead(Region row, const Surroundings& around) {
  int x = 1;
  x += row.text(x, 0, "vantile-host", {Colour::Teal, Colour::Default, true}) + 1;
  const auto where = around.machine.empty() ? "" : "on " + around.machine;
  const auto when =
      "every " + formatSpan(static_cast<std::uint64_t>(around.interval)) + "  " + around.clock;
  const bool both = x + cellsOf(printable(where)) + cellsOf(when) + 3 <= row.width();
  if (both) row.text(x, 0, where, faint);
  row.textEndingAt(row.width() - 1, 0, both ? when : around.clock, faint);
}

void drawFoot(Region row, const Surroundings& around, std::size_t page, std::size_t pages,
              bool sorts) {
  constexpr Style key{Colour::Default, Colour::Default, true};
  int x = 1;
  const auto hint = [&](std::string_view name, std::string_view what) {
    if (x + cellsOf(name) + 1 + cellsOf(what) > row.width()) return;
    x += row.text(x, 0, name, key) + 1;
    x += row.text(x, 0, what, faint) + 3;
  };
  hint("q", "quit");
  if (pages > 1) {
    hint("Tab", "page " + std::to_string(page + 1) + " of " + std::to_string(pages));
  }
  if (sorts) {
    hint("s", "sort");
    hint("r", "reverse");
  }
  if (!around.message.empty())
    row.text(x, 0, clipped(around.message, row.width() - x), {Colour::Yellow});
}

}  // namespace

std::size_t drawScreen(Canvas& canvas, const std::vector<std::unique_ptr<Pane>>& panes,
                       const Surroundings& around) {
  const auto whole = canvas.region();
  if (whole.width() < least.width || whole.height() < least.height) {
    drawTooSmall(whole);
    return 1;
  }

  const auto area = whole.part({0, 1, whole.width(), whole.height() - 2});
  const Size size{area.width(), area.height()};
  std::vector<PaneRows> rows;
  rows.reserve(panes.size());
  for (const auto& pane : panes) rows.push_back(pane->rows());
  const auto pages = layOut(rows, size);
  const auto page = std::min(around.page, pages.size() - 1);

  drawHead(whole.row(0), around);
  bool sorts = false;
  for (const auto& [at, rect] : pages[page]) {
    const auto& pane = *panes[at];
    sorts |= pane.sorts();
    pane.draw(drawFrame(area.part(rect), pane.title(), pane.note(), frameRows(size)),
              around.interval);
  }
  drawFoot(whole.row(whole.height() - 1), around, page, pages.size(), sorts);
  return pages.size();
}

}  // namespace vantile::host
