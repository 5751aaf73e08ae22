#include "dashboard/memory_panes.h"

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <string_view>
#include <vector>

#include "dashboard/bar.h"
#include "dashboard/drawing.h"
#include "text.h"

namespace vantile::host {
namespace {

constexpr Style plain{};
constexpr Style faint{Colour::Grey};

constexpr int labelWidth = 13;
constexpr int bytesWidth = 10;
constexpr int percentWidth = 9;
constexpr int leastBar = 6;

/// "Label  bar  bytes  percent"; a narrow region goes without the bar, then the percentage.
void drawMeter(Region row, std::string_view name, Colour colour, std::uint64_t bytes,
               double share) {
  const bool withPercent = row.width() >= labelWidth + bytesWidth + percentWidth;
  const int figures = bytesWidth + (withPercent ? percentWidth : 0);
  row.put(0, 0, U'■', {colour});
  row.text(2, 0, name, plain);
  const int bar = row.width() - labelWidth - figures;
  if (bar >= leastBar) drawBar(row.part({labelWidth, 0, bar, 1}), {{share, {colour}}}, U'─');
  const int end = row.width();
  row.textEndingAt(withPercent ? end - percentWidth : end, 0, formatBytes(bytes), plain);
  if (withPercent) row.textEndingAt(end, 0, formatPercent(share), faint);
}

std::string rateText(const History& perSecond) {
  const double latest = perSecond.ago(0);
  return std::isnan(latest) ? "–" : formatCount(latest) + "/s";
}

/// A rate in words at the left, its graph at the right, on as many rows as there are.
void drawRate(Region region, std::string_view name, const MemoryFigures::Paging& paging,
              Colour colour) {
  constexpr int words = 21;
  const int graphWidth = region.width() - words;
  region.text(0, 0, name, plain);
  region.textEndingAt(words - 2, 0, rateText(paging.perSecond), plain);
  if (graphWidth < leastBar) return;
  const auto graph = region.part({words, 0, graphWidth, region.height()});
  const double peak = paging.perSecond.greatest(graphSpan(graphWidth));
  const auto detail = [&](int row, std::string_view what, const std::string& text) {
    if (region.height() < row + 1) return;
    region.text(0, row, what, faint);
    region.textEndingAt(words - 2, row, text, faint);
  };
  detail(1, "  peak", formatCount(peak) + "/s");
  detail(2, "  since boot", formatCount(static_cast<double>(paging.sinceBoot)));
  drawGuide(graph, graph.height() - 1);
  drawHistory(graph, paging.perSecond, {roundTop(peak, 10), colour, colour, colour});
}

}  // namespace

std::string MemoryPane::note() const {
  if (!figures().known()) return {};
  return formatBytes(figures().used) + " of " + formatBytes(figures().total) + " used";
}

void MemoryPane::draw(Region region, std::int32_t) const {
  const auto& now = figures();
  if (!now.known()) return drawWaiting(region);

  struct Line {
    std::string_view name;
    Colour colour;
    std::uint64_t bytes;
  };
  const std::vector<Line> lines{
      {"Used", Colour::Teal, now.used},           {"Wired", Colour::Orange, now.wired},
      {"Active", Colour::Blue, now.active},       {"Compressed", Colour::Purple, now.compressed},
      {"Inactive", Colour::Yellow, now.inactive}, {"Free", Colour::Green, now.freePages}};
  int y = 0;
  if (region.height() > static_cast<int>(lines.size())) {
    std::vector<BarPart> whole;
    for (const auto& line : lines) {
      if (line.colour != Colour::Teal) whole.push_back({now.share(line.bytes), {line.colour}});
    }
    drawBar(region.row(y++), whole);
  }
  for (const auto& line : lines) {
    drawMeter(region.row(y++), line.name, line.colour, line.bytes, now.share(line.bytes));
  }
}

std::string MemoryHistoryPane::note() const {
  return figures().known() ? formatPercent(figures().share(figures().used)) : "";
}

void MemoryHistoryPane::draw(Region region, std::int32_t interval) const {
  if (!figures().known()) return drawWaiting(region);
  drawShareHistory(region, figures().usedShare, interval);
}

std::string PagingPane::note() const {
  std::string text;
  const auto add = [&](const char* what, std::optional<double> rate) {
    if (rate) text += (text.empty() ? "" : " · ") + std::string(what) + formatCount(*rate) + "/s";
  };
  add("faults ", figures().faultsPerSecond);
  if (figures().compressed > 0) {
    add("compressed ", figures().compressionsPerSecond);
    add("decompressed ", figures().decompressionsPerSecond);
  }
  return text;
}

void PagingPane::draw(Region region, std::int32_t) const {
  const int gap = region.height() >= 6 ? 1 : 0;
  const int upper = (region.height() - gap + 1) / 2;
  const int lower = region.height() - gap - upper;
  drawRate(region.part({0, 0, region.width(), upper}), "Page-ins", figures().pageIns, Colour::Blue);
  drawRate(region.part({0, upper + gap, region.width(), lower}), "Page-outs", figures().pageOuts,
           Colour::Orange);
}

std::string SwapPane::note() const {
  if (!figures().swap) return {};
  const auto& swap = *figures().swap;
  if (swap.files == 0) return {};
  std::string text = std::to_string(swap.files) + (swap.files == 1 ? " file" : " files");
  if (swap.peakFiles > swap.files) text += ", peak " + std::to_string(swap.peakFiles);
  if (!swap.path.empty()) text += " in " + swap.path;
  return text + (swap.encrypted ? ", encrypted" : "");
}

void SwapPane::draw(Region region, std::int32_t) const {
  if (!figures().known()) return drawWaiting(region);
  if (!figures().swap || figures().swap->size == 0) {
    region.text(0, 0, "no swap in use", faint);
    return;
  }
  const auto& swap = *figures().swap;
  const double share = static_cast<double>(swap.used) / static_cast<double>(swap.size);
  if (swap.used == 0) {
    region.text(0, 0, formatBytes(swap.size) + ", none of it known to be in use", faint);
    return;
  }
  drawMeter(region.row(0), "of " + formatBytes(swap.size), Colour::Red, swap.used, share);
}

}  // namespace vantile::host
