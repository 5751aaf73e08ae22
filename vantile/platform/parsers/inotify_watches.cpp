#include "vantile/platform/parsers/inotify_watches.h"

#include <charconv>
#include <limits>
#include <system_error>

#include "vantile/platform/parsers/text.h"

namespace vantile {

std::unordered_set<int> parseInotifyWatches(std::string_view text) {
  constexpr std::string_view beginning = "inotify wd:";
  constexpr unsigned most = std::numeric_limits<int>::max();
  std::unordered_set<int> watches;
  while (!text.empty()) {
    auto line = takeLine(text);
    if (!line.starts_with(beginning)) continue;
    line.remove_prefix(beginning.size());
    unsigned watch = 0;
    const auto end = line.data() + line.size();
    const auto read = std::from_chars(line.data(), end, watch, 16);
    const bool whole = read.ec == std::errc() && read.ptr != end && *read.ptr == ' ';
    if (whole && watch <= most) watches.insert(static_cast<int>(watch));
  }
  return watches;
}

}  // namespace vantile
