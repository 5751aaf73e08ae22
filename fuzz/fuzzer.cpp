#include "fuzz/fuzzer.h"

#include <cstdio>
#include <cstdlib>
#include <limits>

namespace vantile::fuzz {

void require(bool holds, const char* what) {
  if (holds) return;
  std::fprintf(stderr, "does not hold: %s\n", what);
  std::abort();
}

std::vector<std::string_view> completeLines(std::string_view text) {
  auto lines = split(text, '\n');
  lines.pop_back();
  return lines;
}

std::vector<std::string_view> split(std::string_view text, char separator) {
  std::vector<std::string_view> pieces(1, text.substr(0, 0));
  std::size_t begin = 0;
  for (std::size_t at = 0; at < text.size(); ++at) {
    if (text[at] == separator) {
      begin = at + 1;
      pieces.push_back(text.substr(begin, 0));
    } else {
      pieces.back() = text.substr(begin, at + 1 - begin);
    }
  }
  return pieces;
}

std::vector<std::string_view> fieldsOf(std::string_view text) {
  std::vector<std::string_view> fields;
  for (const auto piece : split(text, ' '))
    for (const auto field : split(piece, '\t'))
      if (!field.empty()) fields.push_back(field);
  return fields;
}

std::optional<std::uint64_t> numberIn(std::string_view text) {
  constexpr auto largest = std::numeric_limits<std::uint64_t>::max();
  while (!text.empty() && (text[0] == ' ' || text[0] == '\t')) text.remove_prefix(1);
  std::optional<std::uint64_t> number;
  for (; !text.empty() && text[0] >= '0' && text[0] <= '9'; text.remove_prefix(1)) {
    const auto digit = static_cast<std::uint64_t>(text[0] - '0');
    if (number.value_or(0) > (largest - digit) / 10) return std::nullopt;
    number = number.value_or(0) * 10 + digit;
  }
  return number;
}

bool isOnALine(std::optional<std::uint64_t> found, std::string_view name, std::string_view text) {
  bool anyLine = false;
  for (const auto line : completeLines(text)) {
    if (!line.starts_with(name)) continue;
    anyLine = true;
    if (numberIn(line.substr(name.size())) == found) return true;
  }
  return !anyLine && !found;
}

std::string asKernelWrites(std::string_view name) {
  std::string written;
  for (const char byte : name) {
    if (byte == ' ' || byte == '\t' || byte == '\n' || byte == '\\') {
      const auto code = static_cast<unsigned char>(byte);
      written.push_back('\\');
      for (const int shift : {6, 3, 0})
        written.push_back(static_cast<char>('0' + (code >> shift) % 8));
    } else {
      written.push_back(byte);
    }
  }
  return written;
}

}  // namespace vantile::fuzz
