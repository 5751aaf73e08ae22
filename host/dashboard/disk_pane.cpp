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

constexpr int nameWidth = 18;
constexpr int bytesWidth = 20;  // "999 GiB of 999 GiB"
constexpr int leastBar = 6;

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

std::uint64_t bytes(const Dictionary& volume, Key key) {
  return volume.uint64(key).value_or(0);
}

VolumeRow rowOf(const Dictionary& volume) {
  const auto* const name = volume.text(keys::disk_name);
  VolumeRow row;
  row.name = name ? *name : "";
  row.total = bytes(volume, keys::disk_totalsize);
  row.used = bytes(volume, keys::disk_usedsize);
  row.movies = bytes(volume, keys::disk_movies);
  row.apps = bytes(volume, keys::disk_apps);
  row.audio = bytes(volume, keys::disk_audio);
  row.photos = bytes(volume, keys::disk_photos);
  row.isSplit = volume.boolean(keys::has_accumulated_sizes).value_or(false);
  return row;
}

/// Kinds that come to more than is used say nothing of the bar's length, and are left out.
std::vector<BarPart> partsOf(const VolumeRow& row) {
  const auto share = [&row](std::uint64_t part) {
    return row.total == 0 ? 0 : static_cast<double>(part) / static_cast<double>(row.total);
  };
  std::array<std::uint64_t, 5> sizes = {0, 0, 0, 0, row.used};
  if (row.isSplit) {
    const auto rest = row.used - row.movies - row.apps - row.audio - row.photos;
    sizes = {row.movies, row.apps, row.audio, row.photos, rest};
  }
  std::vector<BarPart> parts;
  for (std::size_t i = 0; i < kinds.size(); ++i)
    parts.push_back({share(sizes[i]), {kinds[i].colour}});
  return parts;
}

void drawLegend(Region row) {
  int x = 0;
  for (const auto& kind : kinds) {
    row.put(x, 0, U'■', {kind.colour});
    x += 2 + row.text(x + 2, 0, kind.name, faint) + 2;
  }
  row.put(x, 0, U'■', {Colour::Track});
  row.text(x + 2, 0, "free", faint);
}

/// "Name  bar  used of total"; a narrow region goes without the bar.
void drawVolume(Region row, const VolumeRow& volume) {
  const int bar = row.width() - nameWidth - bytesWidth;
  const int room = bar >= leastBar ? nameWidth : row.width() - bytesWidth;
  row.text(0, 0, clipped(volume.name, std::max(room - 1, 0)), plain);
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
}

std::string DiskPane::note() const {
  return figures_->rows().empty() ? "" : std::to_string(figures_->rows().size());
}

PaneRows DiskPane::rows() const {
  constexpr int most = 9;
  const int count = static_cast<int>(std::min<std::size_t>(figures_->rows().size(), most));
  return {1, std::max(count, 1) + 1, false};
}

void DiskPane::draw(Region region, std::int32_t) const {
  if (!figures_->known()) return drawWaiting(region);
  const auto& volumes = figures_->rows();
  if (volumes.empty()) {
    region.text(0, 0, clipped("no volume is mounted", region.width()), faint);
    return;
  }
  int y = 0;
  if (region.height() > static_cast<int>(volumes.size())) drawLegend(region.row(y++));
  for (const auto& volume : volumes) {
    if (y == region.height()) return;
    drawVolume(region.row(y++), volume);
  }
}

}  // namespace vantile::host
