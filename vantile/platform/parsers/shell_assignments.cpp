#include "vantile/platform/parsers/shell_assignments.h"

#include <algorithm>

#include "vantile/platform/parsers/text.h"

namespace vantile {
namespace {

constexpr std::string_view blanks = " \t\r";  // lines of another system end in "\r\n"

std::string_view withoutLeadingBlanks(std::string_view text) {
  text.remove_prefix(std::min(text.find_first_not_of(blanks), text.size()));
  return text;
}

/// Takes the quoted part that `text` begins with, and appends what it stands for; false where it
/// has no end.
bool takeQuoted(std::string_view& text, std::string& value) {
  const char quote = text.front();
  constexpr std::string_view escapable = "\"\\$`";  // in double quotes; any other backslash stays
  for (std::size_t i = 1; i < text.size(); ++i) {
    if (text[i] == quote) {
      text.remove_prefix(i + 1);
      return true;
    }
    const bool escapes = quote == '"' && text[i] == '\\' && i + 1 < text.size() &&
                         escapable.find(text[i + 1]) != std::string_view::npos;
    if (escapes) ++i;
    value.push_back(text[i]);
  }
  return false;
}

/// Takes blanks; they are part of the value where more of it follows.
void takeBlanks(std::string_view& text, std::string& value) {
  const auto rest = withoutLeadingBlanks(text);
  if (rest.starts_with('#')) {
    text = {};
    return;
  }
  if (!rest.empty()) value.append(text.substr(0, text.size() - rest.size()));
  text = rest;
}

std::optional<std::string> shellValue(std::string_view text) {
  std::string value;
  while (!text.empty()) {
    const char first = text.front();
    if (first == '"' || first == '\'') {
      if (!takeQuoted(text, value)) return std::nullopt;
    } else if (blanks.find(first) != std::string_view::npos) {
      takeBlanks(text, value);
    } else {
      if (first == '\\') text.remove_prefix(1);
      if (text.empty()) break;
      value.push_back(text.front());
      text.remove_prefix(1);
    }
  }
  return value;
}

}  // namespace

std::optional<std::string_view> assignedText(std::string_view line, std::string_view name) {
  line = withoutLeadingBlanks(line);
  if (!line.starts_with(name)) return std::nullopt;
  line = withoutLeadingBlanks(line.substr(name.size()));
  if (!line.starts_with('=')) return std::nullopt;
  line.remove_prefix(1);
  const auto value = withoutLeadingBlanks(line);
  const bool isComment = value.size() < line.size() && value.starts_with('#');
  return isComment ? std::string_view() : value;
}

std::optional<std::string> shellAssignment(std::string_view text, std::string_view name) {
  std::optional<std::string> found;
  while (!text.empty()) {
    const auto assigned = assignedText(takeLine(text), name);
    auto value = assigned ? shellValue(*assigned) : std::nullopt;
    if (value) found = std::move(value);
  }
  return found;
}

}  // namespace vantile
