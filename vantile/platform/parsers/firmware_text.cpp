#include "vantile/platform/parsers/firmware_text.h"

#include <algorithm>
#include <array>

#include "vantile/platform/parsers/text.h"

namespace vantile {
namespace {

// In lower case. Seen in serial numbers, identifiers and names of products.
constexpr std::array<std::string_view, 22> placeholders = {
    "to be filled by o.e.m.",
    "to be filled by o.e.m",
    "to be filled by oem",
    "default string",
    "default_string",
    "not specified",
    "not applicable",
    "not available",
    "not defined",
    "none",
    "null",
    "n/a",
    "unknown",
    "empty",
    "invalid",
    "o.e.m.",
    "oem",
    "system serial number",
    "system product name",
    "123456789",
    "0123456789",
    "03000200-0400-0500-0006-000700080009",  // the one identifier of many a board
};

/// Whether it is one of the characters of never-written memory and fields, again and again.
bool isFilling(std::string_view text) {
  constexpr std::string_view fillings = "0f.*";
  constexpr std::size_t shortestOther = 4;  // "F" may be a name, "0" is none
  const char first = text.front();
  if (fillings.find(first) == std::string_view::npos) return false;
  if (first != '0' && text.size() < shortestOther) return false;
  return std::all_of(text.begin(), text.end(),
                     [first](char byte) { return byte == first || byte == '-'; });
}

}  // namespace

std::optional<std::string> firmwareText(std::string_view text) {
  constexpr std::string_view blanks = " \t\r\n";
  text = text.substr(0, text.find('\0'));
  const auto begin = text.find_first_not_of(blanks);
  if (begin == std::string_view::npos) return std::nullopt;
  text = text.substr(begin, text.find_last_not_of(blanks) - begin + 1);

  std::string low(text);
  std::transform(low.begin(), low.end(), low.begin(), asciiLowered);
  const bool isPlaceholder = isFilling(low) || std::find(placeholders.begin(), placeholders.end(),
                                                         low) != placeholders.end();
  return isPlaceholder ? std::nullopt : std::optional<std::string>(text);
}

}  // namespace vantile
