#include "vantile/platform/parsers/firefox_profiles.h"

#include <algorithm>
#include <utility>

#include "vantile/platform/parsers/text.h"

namespace vantile {
namespace {

using Profiles = std::vector<std::string>;

struct Section {
  std::string_view name, defaultEntry, path;
};

/// The sections of the text, with the entries that are wanted here; of two the later counts.
std::vector<Section> sectionsOf(std::string_view text) {
  std::vector<Section> sections;
  while (!text.empty()) {
    auto line = takeLine(text);
    if (line.ends_with('\r')) line.remove_suffix(1);
    line.remove_prefix(std::min(line.find_first_not_of(" \t"), line.size()));
    const auto equals = line.find('=');
    if (line.starts_with('[')) {
      sections.push_back({line.substr(1, line.find(']') - 1), {}, {}});
    } else if (equals != std::string_view::npos && !sections.empty()) {
      const auto key = line.substr(0, equals);
      if (key == "Default") sections.back().defaultEntry = line.substr(equals + 1);
      if (key == "Path") sections.back().path = line.substr(equals + 1);
    }
  }
  return sections;
}

/// Whether a folder can have it for its path.
bool isPath(std::string_view text) {
  constexpr std::size_t longest = 4096;
  return !text.empty() && text.size() < longest && text.find('\0') == std::string_view::npos;
}

}  // namespace

std::optional<Profiles> parseFirefoxInstalls(std::string_view text) {
  if (!text.ends_with('\n')) return std::nullopt;
  Profiles profiles;
  for (const auto& section : sectionsOf(text)) {
    const auto& path = section.defaultEntry;
    if (isPath(path) && std::find(profiles.begin(), profiles.end(), path) == profiles.end())
      profiles.emplace_back(path);
  }
  return profiles;
}

std::optional<Profiles> parseFirefoxProfiles(std::string_view text) {
  if (!text.ends_with('\n')) return std::nullopt;
  Profiles all;
  for (const auto& section : sectionsOf(text)) {
    if (!section.name.starts_with("Profile") || !isPath(section.path)) continue;
    if (section.defaultEntry == "1") return Profiles{std::string(section.path)};
    all.emplace_back(section.path);
  }
  return all.size() == 1 ? all : Profiles();
}

}  // namespace vantile
