#include "vantile/platform/parsers/user_dirs.h"

#include "vantile/platform/parsers/shell_assignments.h"
#include "vantile/platform/parsers/text.h"

namespace vantile {
namespace {

/// The text up to the closing double quote, its backslash escapes resolved.
std::optional<std::string> unquoted(std::string_view text) {
  std::string value;
  for (std::size_t i = 0; i < text.size(); ++i) {
    if (text[i] == '"') return value;
    if (text[i] == '\\' && i + 1 < text.size()) ++i;
    value.push_back(text[i]);
  }
  return std::nullopt;
}

/// The folder that the quoted text at the beginning of `text` names.
std::optional<std::string> folder(std::string_view text, std::string_view home) {
  constexpr std::string_view variable = "\"$HOME";  // an escaped "$" is none
  const bool belowHome = text.starts_with(variable);
  if (!belowHome && !text.starts_with('"')) return std::nullopt;
  auto value = unquoted(text.substr(belowHome ? variable.size() : 1));
  const bool isPath = value && (value->starts_with('/') || (belowHome && value->empty()));
  if (!isPath) return std::nullopt;
  if (belowHome && home != "/") value->insert(0, home);
  while (value->size() > 1 && value->ends_with('/')) value->pop_back();
  return value->empty() ? std::string(home) : *value;
}

}  // namespace

std::optional<std::string> parseUserDirs(std::string_view text, std::string_view name,
                                         std::string_view home) {
  std::optional<std::string> found;
  while (!text.empty()) {
    const auto assigned = assignedText(takeLine(text), name);
    auto path = assigned ? folder(*assigned, home) : std::nullopt;
    if (path) found = std::move(path);
  }
  return found;
}

}  // namespace vantile
