#include "vantile/platform/parsers/loadavg.h"

#include "vantile/platform/parsers/text.h"

namespace vantile {

std::optional<std::uint64_t> threadsInLoadavg(std::string_view text) {
  for (int field = 0; field < 3; ++field) {  // the load averages
    const auto blank = text.find(' ');
    if (blank == std::string_view::npos) return std::nullopt;
    text.remove_prefix(blank + 1);
  }
  text = text.substr(0, text.find(' '));
  const auto slash = text.find('/');
  return slash == std::string_view::npos ? std::nullopt : leadingNumber(text.substr(slash + 1));
}

}  // namespace vantile
