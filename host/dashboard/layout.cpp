#include "dashboard/layout.h"

#include <algorithm>
#include <numeric>
#include <optional>

namespace vantile::host {
namespace {

constexpr int leastColumnWidth = 56;
constexpr int mostColumns = 3;

using Column = std::vector<std::size_t>;

/// Gives out the rows of one column.
std::vector<int> heightsOf(const Column& column, std::span<const PaneRows> panes, Size area) {
  const int frame = frameRows(area);
  std::vector<int> heights;
  for (const auto pane : column) heights.push_back(panes[pane].minimum + frame);
  int spare = area.height - std::accumulate(heights.begin(), heights.end(), 0);

  for (std::size_t at = 0; at < column.size() && spare > 0; ++at) {
    const int more = std::min(spare, panes[column[at]].wanted - panes[column[at]].minimum);
    heights[at] += more;
    spare -= more;
  }
  auto growing = std::ranges::count_if(column, [&](auto pane) { return panes[pane].grows; });
  for (std::size_t at = 0; at < column.size() && spare > 0; ++at) {
    if (!panes[column[at]].grows) continue;
    const int more = spare / static_cast<int>(growing--);
    heights[at] += more;
    spare -= more;
  }
  return heights;
}

/// Deals panes out to columns of even height: first those that keep their height, so that those
/// that grow fill up beside them.
std::vector<Column> dealt(std::size_t first, std::size_t last, std::span<const PaneRows> panes,
                          std::size_t columns, int frame) {
  std::vector<Column> dealt(columns);
  std::vector<int> heights(columns, 0);
  for (const bool growing : {false, true}) {
    for (auto pane = first; pane < last; ++pane) {
      if (panes[pane].grows != growing) continue;
      const auto at = static_cast<std::size_t>(std::ranges::min_element(heights) - heights.begin());
      dealt[at].push_back(pane);
      heights[at] += panes[pane].wanted + frame;
    }
  }
  for (auto& column : dealt) std::ranges::sort(column);
  std::erase_if(dealt, [](const Column& column) { return column.empty(); });
  // By their first pane, so that the reading order is that of the panes.
  std::ranges::sort(dealt);
  return dealt;
}

/// The page of those panes, where each gets its minimum.
std::optional<Page> placed(std::size_t first, std::size_t last, std::span<const PaneRows> panes,
                           Size area) {
  const int fitting = std::clamp(area.width / leastColumnWidth, 1, mostColumns);
  const auto columns =
      dealt(first, last, panes, static_cast<std::size_t>(fitting), frameRows(area));
  Page page;
  for (std::size_t at = 0; at < columns.size(); ++at) {
    const int left = area.width * static_cast<int>(at) / static_cast<int>(columns.size());
    const int right = area.width * static_cast<int>(at + 1) / static_cast<int>(columns.size());
    const auto heights = heightsOf(columns[at], panes, area);
    if (std::accumulate(heights.begin(), heights.end(), 0) > area.height) return std::nullopt;
    int y = 0;
    for (std::size_t row = 0; row < heights.size(); ++row) {
      page.push_back({columns[at][row], {left, y, right - left, heights[row]}});
      y += heights[row];
    }
  }
  return page;
}

}  // namespace

std::vector<Page> layOut(std::span<const PaneRows> panes, Size area) {
  std::vector<Page> pages;
  std::size_t first = 0;
  while (first < panes.size()) {
    // One that does not fit even alone gets the whole page, to show what it can.
    Page page{{first, {0, 0, area.width, area.height}}};
    std::size_t last = first + 1;
    for (auto end = panes.size(); end > first; --end) {
      if (auto fitting = placed(first, end, panes, area)) {
        page = std::move(*fitting);
        last = end;
        break;
      }
    }
    pages.push_back(std::move(page));
    first = last;
  }
  if (pages.empty()) pages.emplace_back();
  return pages;
}

}  // namespace vantile::host
