#include "vantile/platform/parsers/mountinfo.h"

#include <algorithm>

#include "vantile/platform/parsers/text.h"

namespace vantile {

std::vector<Mount> parseMountinfo(std::string_view text) {
  std::vector<Mount> mounts;
  while (!text.empty()) {
    const auto fields = words(takeLine(text));
    // Six fields, then any number of optional ones, then "-", type, source and options.
    if (fields.size() < 10) continue;
    const auto dash = std::find(fields.begin() + 6, fields.end(), "-");
    if (fields.end() - dash < 4) continue;
    mounts.push_back({withoutOctalEscapes(fields[3]), withoutOctalEscapes(fields[4]),
                      withoutOctalEscapes(dash[1]), withoutOctalEscapes(dash[2]),
                      withoutOctalEscapes(dash[3])});
  }
  return mounts;
}

}  // namespace vantile
