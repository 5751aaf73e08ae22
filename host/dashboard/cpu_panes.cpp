#include "dashboard/cpu_panes.h"

#include <algorithm>
#include <cstddef>
#include <string>
#include <vector>

#include "dashboard/bar.h"
#include "dashboard/drawing.h"
#include "text.h"

namespace vantile::host {
namespace {

constexpr Style plain{};
constexpr Style faint{Colour::Grey};
constexpr Colour systemColour = Colour::Orange, userColour = Colour::Teal;

constexpr int leastColumn = 20;  // of a processor's number, bar and percentage
constexpr int numberWidth = 4;
constexpr int percentWidth = 8;
constexpr int gap = 2;

int inRows(int count, int columns) {
  return (count + columns - 1) / columns;
}

void drawCore(Region row, std::size_t number, const CpuFigures::Core& core) {
  row.textEndingAt(numberWidth - 1, 0, std::to_string(number), faint);
  const int bar = row.width() - numberWidth - percentWidth;
  drawBar(row.part({numberWidth, 0, bar, 1}),
          {{core.system, {systemColour}}, {core.user, {userColour}}}, U'─');
  row.textEndingAt(row.width(), 0, formatPercent(core.busy()), plain);
}

/// A column of up to eight eighths for each processor, row after row.
void drawColumns(Region region, const std::vector<CpuFigures::Core>& cores) {
  constexpr int eighths = 8;
  const int width = region.width();
  for (std::size_t i = 0; width > 0 && i < cores.size(); ++i) {
    const int place = static_cast<int>(i);
    const double busy = std::clamp(cores[i].busy(), 0.0, 1.0);
    const int height = busy > 0 ? std::max(static_cast<int>(busy * eighths), 1) : 0;
    const char32_t glyph = height == 0 ? U'·' : U'▁' + static_cast<char32_t>(height - 1);
    const auto ink = busy >= 0.8   ? Colour::Red
                     : busy >= 0.5 ? Colour::Yellow
                     : height > 0  ? Colour::Green
                                   : Colour::DarkGrey;
    region.put(place % width, place / width, glyph, {ink});
  }
}

/// The processors, in as few columns as the rows allow.
void drawCores(Region region, const std::vector<CpuFigures::Core>& cores) {
  const int count = static_cast<int>(cores.size());
  const int most = std::max((region.width() + gap) / (leastColumn + gap), 1);
  int columns = 1;
  while (columns < most && inRows(count, columns) > region.height()) ++columns;
  const int rows = inRows(count, columns);
  if (rows > region.height()) return drawColumns(region, cores);
  const int width = (region.width() + gap) / columns - gap;
  for (int i = 0; i < count; ++i) {
    const auto place = static_cast<std::size_t>(i);
    drawCore(region.part({i / rows * (width + gap), i % rows, width, 1}), place, cores[place]);
  }
}

/// Load, tasks and temperature, closer to each other where the width is scarce; what has no room
/// even then is left out.
std::string figuresLine(const CpuFigures& now, int width) {
  std::vector<std::string> parts;
  if (now.load) {
    parts.emplace_back("load");
    for (const double average : *now.load) parts.back() += " " + formatFixed(average, 2);
  }
  if (now.tasks && now.threads)
    parts.push_back(std::to_string(*now.tasks) + " tasks, " + std::to_string(*now.threads) +
                    " threads");
  if (now.hasSensor)
    parts.push_back((now.celsius ? formatFixed(*now.celsius, 1) : "–") + " °C");
  else
    parts.emplace_back("no temperature sensor");

  int spare = width;
  for (const auto& part : parts) spare -= cellsOf(part) + 3;
  const std::string between = spare + 3 >= 0 ? "   " : "  ";
  std::string line;
  for (const auto& part : parts) {
    const auto more = (line.empty() ? "" : between) + part;
    if (cellsOf(line) + cellsOf(more) <= width) line += more;
  }
  return line;
}

}  // namespace

void CpuFigures::take(const Report& report) {
  const auto real = [&report](std::size_t place) { return report.real(place).value_or(0); };
  if (report.operation == "cpuUsedWithCoreWithSystemWithUserWithIdle") {
    takeCore(report);
  } else if (report.operation == "cpuUsedWithSystemWithUserWithIdle") {
    all = {real(0), real(1)};
    busyShare.push(all.busy());
  } else if (report.operation == "processorWithTaskCountWithThreadCount") {
    tasks = report.number(0);
    threads = report.number(1);
  } else if (report.operation == "loadAverageWith1mWith5mWith15m") {
    load = {real(0), real(1), real(2)};
  } else if (report.operation == "cpuWithTemperature") {
    celsius = report.real(0);
    hasSensor = true;
  }
}

void CpuFigures::takeCore(const Report& report) {
  const auto core = report.number(0);
  if (!core) return;
  if (*core == 0) {  // a sample begins; what it leaves out is not known
    cores.clear();
    celsius.reset();
  }
  cores.push_back({report.real(1).value_or(0), report.real(2).value_or(0)});
}

std::string CpuPane::note() const {
  if (!figures().known()) return {};
  auto text = std::to_string(figures().cores.size());
  if (figures().speed) text += " at " + *figures().speed;
  return text;
}

PaneRows CpuPane::rows() const {
  constexpr int most = 9, usualColumns = 2;
  const int count = static_cast<int>(figures().cores.size());
  return {2, std::clamp(1 + inRows(count, usualColumns), 3, most), false};
}

void CpuPane::draw(Region region, std::int32_t) const {
  if (!figures().known()) return drawWaiting(region);
  region.text(0, 0, figuresLine(figures(), region.width()), plain);
  drawCores(region.part({0, 1, region.width(), region.height() - 1}), figures().cores);
}

std::string CpuHistoryPane::note() const {
  if (!figures().known()) return {};
  const auto& all = figures().all;
  return formatPercent(all.busy()) + " (system " + formatPercent(all.system) + ")";
}

void CpuHistoryPane::draw(Region region, std::int32_t interval) const {
  if (!figures().known()) return drawWaiting(region);
  drawShareHistory(region, figures().busyShare, interval);
}

}  // namespace vantile::host
