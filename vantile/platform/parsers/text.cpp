#include "vantile/platform/parsers/text.h"

#include <algorithm>
#include <charconv>

namespace vantile {

std::optional<std::uint64_t> leadingNumber(std::string_view text) {
  text.remove_prefix(std::min(text.find_first_not_of(" \t"), text.size()));
  std::uint64_t number = 0;
  const auto parsed = std::from_chars(text.data(), text.data() + text.size(), number);
  return parsed.ec == std::errc() ? std::optional(number) : std::nullopt;
}

std::vector<std::string_view> words(std::string_view line) {
  const auto isBlank = [](char byte) { return byte == ' ' || byte == '\t'; };
  std::vector<std::string_view> found;
  found.reserve(20);  // the kernel's tables have no more columns
  auto begin = std::find_if_not(line.begin(), line.end(), isBlank);
  while (begin != line.end()) {
    const auto end = std::find_if(begin, line.end(), isBlank);
    found.emplace_back(begin, end);
    begin = std::find_if_not(end, line.end(), isBlank);
  }
  return found;
}

std::string_view takeLine(std::string_view& text) {
  const auto end = text.find('\n');
  const auto line = text.substr(0, end);
  text.remove_prefix(end == std::string_view::npos ? text.size() : end + 1);
  return line;
}

std::string withoutOctalEscapes(std::string_view text) {
  const auto isOctal = [](char digit) { return digit >= '0' && digit <= '7'; };
  std::string plain;
  plain.reserve(text.size());
  for (std::size_t i = 0; i < text.size(); ++i) {
    const auto digits = text.substr(i + 1, 3);
    const bool escape = text[i] == '\\' && digits.size() == 3 && digits[0] <= '3' &&
                        std::all_of(digits.begin(), digits.end(), isOctal);
    if (!escape) {
      plain.push_back(text[i]);
      continue;
    }
    plain.push_back(
        static_cast<char>((digits[0] - '0') * 64 + (digits[1] - '0') * 8 + (digits[2] - '0')));
    i += 3;
  }
  return plain;
}

std::string withoutHexEscapes(std::string_view text) {
  std::string plain;
  plain.reserve(text.size());
  for (std::size_t i = 0; i < text.size(); ++i) {
    const auto escape = text.substr(i, 4);
    unsigned code = 0;
    const bool opens = escape.size() == 4 && escape.starts_with("\\x");
    const auto* const end = escape.data() + escape.size();
    if (opens && std::from_chars(end - 2, end, code, 16).ptr == end) {
      plain.push_back(static_cast<char>(code));
      i += 3;
    } else {
      plain.push_back(text[i]);
    }
  }
  return plain;
}

std::optional<std::size_t> NamedNumbers::lineOf(std::string_view name, std::size_t from,
                                                std::size_t to) const {
  while (from < to) {
    const auto end = text_.find('\n', from);
    if (end == std::string_view::npos) return std::nullopt;
    if (text_.compare(from, name.size(), name) == 0) return from;
    from = end + 1;
  }
  return std::nullopt;
}

std::optional<std::uint64_t> NamedNumbers::find(std::string_view name) {
  auto line = lineOf(name, next_, text_.size());
  if (!line) line = lineOf(name, 0, next_);
  if (!line) return std::nullopt;
  const auto end = text_.find('\n', *line);
  next_ = end + 1;
  const auto rest = *line + name.size();
  return rest <= end ? leadingNumber(text_.substr(rest, end - rest)) : std::nullopt;
}

}  // namespace vantile
