#include "vantile/platform/parsers/swaps.h"

#include <limits>
#include <optional>

#include "vantile/platform/parsers/text.h"

namespace vantile {
namespace {

std::optional<std::uint64_t> kibibytes(std::string_view field) {
  const auto number = leadingNumber(field);
  if (!number || *number > std::numeric_limits<std::uint64_t>::max() / 1024) return std::nullopt;
  return *number * 1024;
}

std::string areaPath(std::string_view escaped) {
  constexpr std::string_view deleted = "\\040(deleted)";
  if (escaped.ends_with(deleted)) escaped.remove_suffix(deleted.size());
  return withoutOctalEscapes(escaped);
}

}  // namespace

std::vector<SwapLine> parseSwaps(std::string_view text) {
  std::vector<SwapLine> lines;
  while (!text.empty()) {
    const auto fields = words(takeLine(text));
    if (fields.size() < 4 || !fields[0].starts_with('/')) continue;  // the heading, for one
    const auto size = kibibytes(fields[2]);
    const auto used = kibibytes(fields[3]);
    if (size && used) lines.push_back({{areaPath(fields[0]), fields[1] == "file", *size}, *used});
  }
  return lines;
}

}  // namespace vantile
