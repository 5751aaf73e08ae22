#include "dashboard/disk_pane.h"

#include <vantile/disk/disk_keys.h>

#include <algorithm>
#include <array>

#include "dashboard/bar.h"
#include "dashboard/drawing.h"
#include "text.h"

namespace vantile::host {
namespace {

constexpr Style plain{};
constexpr Style faint{Colour::Grey};

constexpr int leastName = 18;
constexpr int figuresWidth = 22;  // "98.3 GiB of 98.3 GiB" and a gap
constexpr int leastBar = 6;
constexpr int leastVolumes = 4, mostVolumes = 10;

/// What a bar shows, one after the other; the ground behind them is what is free.
struct Kind {
  std::string_view name;
  Colour colour;
};
constexpr std::array<Kind, 5> kinds = {{{"movies", Colour::Purple},
                                        {"apps", Colour::Blue},
                                        {"audio", Colour::Orange},
                                        {"photos", Colour::Yellow},
                                        {"other", Colour::Teal}}};
constexpr Kind unsplit = {"used", Colour::Grey}, ground = {"free", Colour::Track};

std::uint64_t bytes(const Dictionary& volume, Key key) {
  return volume.uint64(key).value_or(0);
}

VolumeRow rowOf(const Dictionary& volume) {
  const auto* const name = volume.text(keys::disk_name);
  const auto* const path = volume.text(keys::disk_path);
  VolumeRow row;
  row.name = name ? *name : "";
  row.path = path ? *path : "";
  row.total = bytes(volume, keys::disk_totalsize);
  row.used = bytes(volume, keys::disk_usedsize);
  row.movies = bytes(volume, keys::disk_movies);
  row.apps = bytes(volume, keys::disk_apps);
  row.audio = bytes(volume, keys::disk_audio);
  row.photos = bytes(volume, keys::disk_photos);
  row.isSplit = volume.boolean(keys::has_accumulated_sizes).value_or(false);
  row.isCounted = volume.contains(keys::disk_movies);
  return row;
}

/// Kinds that come to more than is used say nothing of the bar's length, and are left out.
std::vector<BarPart> partsOf(const VolumeRow& row) {
  const auto share = [&row](std::uint64_t part) {
    return row.total == 0 ? 0 : static_cast<double>(part) / static_cast<double>(row.total);
  };
  if (!row.isSplit) return {{share(row.used), {unsplit.colour}}};
  const auto rest = row.used - row.movies - row.apps - row.audio - row.photos;
  const std::array<std::uint64_t, 5> sizes = {row.movies, row.apps, row.audio, row.photos, rest};
  std::vector<BarPart> parts;
  for (std::size_t i = 0; i < kinds.size(); ++i)
    parts.push_back({share(sizes[i]), {kinds[i].colour}});
  return parts;
}

/// Of the colours that the bars have. What is free goes without saying where there is no room.
void drawLegend(Region row, const std::vector<VolumeRow>& volumes) {
  std::vector<Kind> shown;
  if (std::ranges::any_of(volumes, &VolumeRow::isSplit)) shown.assign(kinds.begin(), kinds.end());
  if (!std::ranges::all_of(volumes, &VolumeRow::isSplit)) shown.push_back(unsplit);
  shown.push_back(ground);
  int x = 0;
  for (const auto& kind : shown) {
    if (x + 2 + cellsOf(kind.name) > row.width()) return;
    row.put(x, 0, U'■', {kind.colour});
    x += 2 + row.text(x + 2, 0, kind.name, faint) + 2;
  }
}

/// The end of a path in at most that many cells.
std::string endOf(std::string_view path, int cells) {
  const auto text = printable(path);
  if (cellsOf(text) <= cells) return text;
  auto characters = decodeUtf8(text);
  std::size_t first = characters.size();
  for (int left = cells - 1; first > 0 && left >= cellsOf(characters[first - 1]); --first)
    left -= cellsOf(characters[first - 1]);
  std::string end;
  if (cells > 0) appendUtf8(end, U'…');
  for (; first < characters.size(); ++first) appendUtf8(end, characters[first]);
  return end;
}

/// The name, with the end of where it is mounted if another volume has that name.
void drawName(Region row, const VolumeRow& volume) {
  if (!volume.isNameRepeated) {
    row.text(0, 0, clipped(volume.name, row.width()), plain);
    return;
  }
  const int path = std::min(cellsOf(printable(volume.path)), row.width() / 2);
  const int x = row.text(0, 0, clipped(volume.name, row.width() - path - 1), plain) + 1;
  row.text(x, 0, endOf(volume.path, row.width() - x), faint);
}

/// Cells of the names' column, a gap behind them included.
int nameWidthOf(const std::vector<VolumeRow>& volumes, int width) {
  int widest = 0;
  for (const auto& volume : volumes) {
    const int path = volume.isNameRepeated ? cellsOf(printable(volume.path)) + 1 : 0;
    widest = std::max(widest, cellsOf(printable(volume.name)) + path);
  }
  return std::clamp(widest + 2, leastName, std::max(leastName, width / 3));
}

/// "Name  bar  used of total"; a narrow region goes without the bar.
void drawVolume(Region row, const VolumeRow& volume, int nameWidth) {
  const int bar = row.width() - nameWidth - figuresWidth;
  const int room = bar >= leastBar ? nameWidth : row.width() - figuresWidth + 1;
  drawName(row.part({0, 0, std::max(room - 1, 0), 1}), volume);
  if (bar >= leastBar) drawBar(row.part({nameWidth, 0, bar, 1}), partsOf(volume));
  const auto figures = formatBytes(volume.used) + " of " + formatBytes(volume.total);
  row.textEndingAt(row.width(), 0, figures, plain);
}

}  // namespace

void DiskFigures::take(const Report& report) {
  const auto* const volumes = report.operation == "diskDetails" ? report.array(0) : nullptr;
  if (!volumes) return;
  known_ = true;
  rows_.clear();
  for (const auto& volume : *volumes) {
    const auto* const held = volume.as<std::shared_ptr<Dictionary>>();
    if (held && *held) rows_.push_back(rowOf(**held));
  }
  for (auto& row : rows_)
    row.isNameRepeated = std::ranges::count(rows_, row.name, &VolumeRow::name) > 1;
}

std::string DiskPane::note() const {
  const auto& volumes = figures_->rows();
  if (volumes.empty()) return {};
  const auto uncounted = std::ranges::count(volumes, false, &VolumeRow::isCounted);
  auto note = std::to_string(volumes.size()) + " mounted";
  if (uncounted == 0) return note;
  const bool isEach = static_cast<std::size_t>(uncounted) == volumes.size();
  return note + ", contents " + (isEach ? "" : "of " + std::to_string(uncounted) + " ") +
         "not counted yet";
}

PaneRows DiskPane::rows() const {
  const int count = static_cast<int>(std::min<std::size_t>(figures_->rows().size(), mostVolumes));
  return {std::clamp(count, 1, leastVolumes), std::max(count, 1) + 1, false};
}

void DiskPane::draw(Region region, std::int32_t) const {
  if (!figures_->known()) return drawWaiting(region);
  const auto& volumes = figures_->rows();
  if (volumes.empty()) {
    region.text(0, 0, clipped("no volume is mounted", region.width()), faint);
    return;
  }
  const int count = static_cast<int>(volumes.size());
  int y = 0;
  // Of those that don't fit anyway, one more or less matters little.
  if (region.height() > count || (region.height() >= 4 && region.height() < count))
    drawLegend(region.row(y++), volumes);
  const int room = region.height() - y;
  const int shown = room >= count ? count : std::max(room - 1, 1);
  const int nameWidth = nameWidthOf(volumes, region.width());
  for (int at = 0; at < shown; ++at)
    drawVolume(region.row(y++), volumes[static_cast<std::size_t>(at)], nameWidth);
  if (shown < count) drawMore(region.row(y), count - shown);
}

}  // namespace vantile::host
