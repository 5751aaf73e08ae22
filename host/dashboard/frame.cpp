#include "dashboard/frame.h"

#include <string>

#include "text.h"

namespace vantile::host {
namespace {

constexpr Style line{Colour::DarkGrey};

void drawTitle(Region region, std::string_view title, std::string_view note) {
  const auto label = " " + std::string(title) + " ";
  const int end = 2 + region.text(2, 0, label, {Colour::Default, Colour::Default, true});
  if (note.empty()) return;
  const auto text = " " + std::string(note) + " ";
  const int start = region.width() - 2 - cellsOf(printable(text));
  if (start > end) region.text(start, 0, text, {Colour::Grey});
}

}  // namespace

Region drawFrame(Region region, std::string_view title, std::string_view note, int rows) {
  const int right = region.width() - 1;
  const int bottom = region.height() - 1;
  for (int x = 0; x <= right; ++x) region.put(x, 0, U'─', line);
  if (rows > 1) {
    for (int x = 0; x <= right; ++x) region.put(x, bottom, U'─', line);
    for (int y = 0; y <= bottom; ++y) {
      region.put(0, y, U'│', line);
      region.put(right, y, U'│', line);
    }
    region.put(0, 0, U'╭', line);
    region.put(right, 0, U'╮', line);
    region.put(0, bottom, U'╰', line);
    region.put(right, bottom, U'╯', line);
  }
  drawTitle(region, title, note);
  if (rows > 1) return region.part({2, 1, region.width() - 4, region.height() - 2});
  return region.part({1, 1, region.width() - 2, region.height() - 1});
}

}  // namespace vantile::host
