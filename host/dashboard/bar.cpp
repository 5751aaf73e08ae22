#include "dashboard/bar.h"

#include <algorithm>
#include <cmath>
#include <cstddef>

namespace vantile::host {
namespace {

constexpr int eighths = 8;

/// U+2588 is the full block; the ones after it lose an eighth each.
char32_t block(int filled) {
  return static_cast<char32_t>(0x2588 + eighths - filled);
}

/// Where each part ends, in eighths of a cell.
std::vector<int> endsOf(const std::vector<BarPart>& parts, int length) {
  std::vector<int> ends;
  double sum = 0;
  int end = 0;
  for (const auto& part : parts) {
    const double share = std::isfinite(part.share) ? std::max(part.share, 0.0) : 0;
    sum = std::min(sum + share, 1.0);
    const int exact = static_cast<int>(std::lround(sum * length));
    end = std::min(share > 0 ? std::max(exact, end + 1) : std::max(exact, end), length);
    ends.push_back(end);
  }
  return ends;
}

}  // namespace

void drawBar(Region row, const std::vector<BarPart>& parts, char32_t ground) {
  const auto ends = endsOf(parts, row.width() * eighths);
  const bool plainGround = ground == U' ';
  std::size_t at = 0;
  for (int x = 0; x < row.width(); ++x) {
    const int left = x * eighths;
    const int right = left + eighths;
    while (at < ends.size() && ends[at] <= left) ++at;
    if (at == ends.size()) {
      row.put(x, 0, ground,
              plainGround ? Style{Colour::Default, Colour::Track} : Style{Colour::DarkGrey});
      continue;
    }
    if (ends[at] >= right) {
      row.put(x, 0, block(eighths), parts[at].style);
      continue;
    }
    // Two colours share the cell: the part that ends here, and on the paper whichever reaches the
    // cell's far side or, failing that, comes next.
    auto next = at + 1;
    while (next + 1 < ends.size() && ends[next] == ends[at]) ++next;
    const bool followed = next < ends.size() && ends[next] > ends[at];
    Style style = parts[at].style;
    style.paper = followed ? parts[next].style.ink : plainGround ? Colour::Track : Colour::Default;
    row.put(x, 0, block(ends[at] - left), style);
  }
}

}  // namespace vantile::host
