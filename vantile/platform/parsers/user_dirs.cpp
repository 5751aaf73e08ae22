#include "vantile/platform/parsers/user_dirs.h"

#include <algorithm>

#include "vantile/platform/parsers/text.h"

namespace vantile {
namespace {

std::string_view withoutLeadingBlanks(std::string_view text) {
  text.remove_prefix(std::min(text.find_first_not_of(" \t"), text.size()));
  return text;
}

/// What stands between double quotes at the beginning of `text`, its backslash escapes resolved.
std::optional<std::string> quoted(std::string_view text) {
  if (!text.starts_with('"')) return std::nullopt;
  std::string value;
  for (std::size_t i = 1; i < text.size(); ++i) {
    if (text[i] == '"') return value;
    if (text[i] == '\\' && i + 1 < text.size()) ++i;
    value.push_back(text[i]);
  }
  return std::nullopt;
}

std::optional<std::string> folder(std::string value, std::string_view home) {
  constexpr std::string_view variable = "$HOME";
  if (value == variable || value.starts_with("$HOME/"))
    value.replace(0, variable.size(), home);
  else if (!value.starts_with('/'))
    return std::nullopt;
  while (value.size() > 1 && value.ends_with('/')) value.pop_back();
  return value;
}

}  // namespace

std::optional<std::string> parseUserDirs(std::string_view text, std::string_view name,
                                         std::string_view home) {
  std::optional<std::string> found;
  while (!text.empty()) {
    auto line = withoutLeadingBlanks(takeLine(text));
    if (!line.starts_with(name)) continue;
    line = withoutLeadingBlanks(line.substr(name.size()));
    if (!line.starts_with('=')) continue;
    if (auto value = quoted(withoutLeadingBlanks(line.substr(1))))
      if (auto path = folder(std::move(*value), home)) found = std::move(path);
  }
  return found;
}

}  // namespace vantile
