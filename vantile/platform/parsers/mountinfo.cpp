#include "vantile/platform/parsers/mountinfo.h"

#include <algorithm>
#include <optional>

#include "vantile/platform/parsers/text.h"

namespace vantile {
namespace {

/// The kernel puts one space between fields, and none into them; a source may be empty.
std::vector<std::string_view> fieldsOf(std::string_view line) {
  std::vector<std::string_view> fields;
  fields.reserve(12);
  while (true) {
    const auto end = line.find(' ');
    fields.push_back(line.substr(0, end));
    if (end == std::string_view::npos) return fields;
    line.remove_prefix(end + 1);
  }
}

std::optional<DeviceNumber> deviceIn(std::string_view field) {
  const auto colon = field.find(':');
  if (colon == std::string_view::npos) return std::nullopt;
  const auto major = leadingNumber(field), minor = leadingNumber(field.substr(colon + 1));
  if (!major || !minor) return std::nullopt;
  return DeviceNumber{*major, *minor};
}

}  // namespace

std::vector<Mount> parseMountinfo(std::string_view text) {
  std::vector<Mount> mounts;
  while (!text.empty()) {
    const auto fields = fieldsOf(takeLine(text));
    // Six fields, then any number of optional ones, then "-", type, source and options.
    if (fields.size() < 10) continue;
    const auto dash = std::find(fields.begin() + 6, fields.end(), "-");
    if (fields.end() - dash < 4) continue;
    const auto id = leadingNumber(fields[0]), parent = leadingNumber(fields[1]);
    const auto device = deviceIn(fields[2]);
    if (!id || !parent || !device) continue;
    mounts.push_back({withoutOctalEscapes(fields[3]), withoutOctalEscapes(fields[4]),
                      withoutOctalEscapes(dash[1]), withoutOctalEscapes(dash[2]),
                      withoutOctalEscapes(dash[3]), *id, *parent, *device});
  }
  return mounts;
}

}  // namespace vantile
