#include "text.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <cmath>
#include <cstddef>

namespace vantile::host {
namespace {

constexpr char32_t replacement = U'\uFFFD';

struct Range {
  char32_t first, last;
};

bool within(std::initializer_list<Range> ranges, char32_t character) {
  return std::ranges::any_of(
      ranges, [&](Range range) { return character >= range.first && character <= range.last; });
}

/// Of the symbols among narrow ones, those that terminals draw as pictures.
bool isWideSymbol(char32_t character) {
  return within(
      {{0x231A, 0x231B}, {0x23E9, 0x23EC}, {0x23F0, 0x23F0}, {0x23F3, 0x23F3}, {0x25FD, 0x25FE},
       {0x2614, 0x2615}, {0x2648, 0x2653}, {0x267F, 0x267F}, {0x2693, 0x2693}, {0x26A1, 0x26A1},
       {0x26AA, 0x26AB}, {0x26BD, 0x26BE}, {0x26C4, 0x26C5}, {0x26CE, 0x26CE}, {0x26D4, 0x26D4},
       {0x26EA, 0x26EA}, {0x26F2, 0x26F3}, {0x26F5, 0x26F5}, {0x26FA, 0x26FA}, {0x26FD, 0x26FD},
       {0x2705, 0x2705}, {0x270A, 0x270B}, {0x2728, 0x2728}, {0x274C, 0x274C}, {0x274E, 0x274E},
       {0x2753, 0x2755}, {0x2757, 0x2757}, {0x2795, 0x2797}, {0x27B0, 0x27B0}, {0x27BF, 0x27BF},
       {0x2B1B, 0x2B1C}, {0x2B50, 0x2B50}, {0x2B55, 0x2B55}},
      character);
}

std::string threeDigits(double number) {
  // The borders are where rounding would add a digit.
  if (number < 9.995) return formatFixed(number, 2);
  if (number < 99.95) return formatFixed(number, 1);
  return formatFixed(number, 0);
}

bool isContinuation(char byte) {
  return (static_cast<unsigned char>(byte) & 0xC0) == 0x80;
}

struct Decoded {
  char32_t character;
  std::size_t length;
};

Decoded decodeOne(std::string_view text) {
  const auto lead = static_cast<unsigned char>(text.front());
  if (lead < 0x80) return {lead, 1};
  const std::size_t length = lead >= 0xF0 ? 4 : lead >= 0xE0 ? 3 : 2;
  if (lead < 0xC2 || lead > 0xF4 || text.size() < length) return {replacement, 1};
  char32_t character = lead & (0x7Fu >> length);
  for (std::size_t at = 1; at < length; ++at) {
    if (!isContinuation(text[at])) return {replacement, 1};
    character = (character << 6) | (static_cast<unsigned char>(text[at]) & 0x3Fu);
  }
  constexpr std::array<char32_t, 5> least{0, 0, 0x80, 0x800, 0x10000};
  if (character < least[length] || character > 0x10FFFF || within({{0xD800, 0xDFFF}}, character)) {
    return {replacement, 1};
  }
  return {character, length};
}

}  // namespace

std::string formatFixed(double number, int digits) {
  std::array<char, 400> buffer;  // the largest double has 309 digits before the point
  const auto end = std::to_chars(buffer.data(), buffer.data() + buffer.size(), number,
                                 std::chars_format::fixed, digits);
  return {buffer.data(), end.ptr};
}

std::string formatBytes(std::uint64_t bytes) {
  if (bytes < 1024) return std::to_string(bytes) + " B";
  static constexpr std::array units{" KiB", " MiB", " GiB", " TiB", " PiB", " EiB"};
  double number = static_cast<double>(bytes) / 1024;
  std::size_t unit = 0;
  while (number >= 999.5 && unit + 1 < units.size()) {
    number /= 1024;
    ++unit;
  }
  return threeDigits(number) + units[unit];
}

std::string formatChange(std::uint64_t before, std::uint64_t after) {
  return after >= before ? "+" + formatBytes(after - before) : "-" + formatBytes(before - after);
}

std::string formatPercent(double share) {
  return formatFixed(share * 100, 1) + " %";
}

std::string formatCount(double count) {
  if (!(count > 0)) return "0";
  if (count < 9999.5) return formatFixed(count, 0);
  static constexpr std::array units{"k", "M", "G", "T", "P", "E"};
  std::size_t unit = 0;
  count /= 1000;
  while (count >= 999.5 && unit + 1 < units.size()) {
    count /= 1000;
    ++unit;
  }
  return threeDigits(count) + units[unit];
}

std::string formatSpan(std::uint64_t seconds) {
  if (seconds < 120) return std::to_string(seconds) + " s";
  const auto minutes = (seconds + 30) / 60;
  if (minutes < 120) return std::to_string(minutes) + " min";
  const auto rest = minutes % 60;
  const auto hours = std::to_string(minutes / 60) + " h";
  return rest == 0 ? hours : hours + " " + std::to_string(rest) + " min";
}

std::string formatClock(std::time_t moment) {
  std::tm local = {};
  std::array<char, 16> text{};
  if (!localtime_r(&moment, &local)) return {};
  std::strftime(text.data(), text.size(), "%H:%M:%S", &local);
  return text.data();
}

std::u32string decodeUtf8(std::string_view text) {
  std::u32string characters;
  while (!text.empty()) {
    const auto [character, length] = decodeOne(text);
    characters.push_back(character);
    text.remove_prefix(length);
  }
  return characters;
}

void appendUtf8(std::string& text, char32_t character) {
  const auto byte = [&](char32_t bits) { text.push_back(static_cast<char>(bits)); };
  if (character < 0x80) {
    byte(character);
  } else if (character < 0x800) {
    byte(0xC0 | (character >> 6));
    byte(0x80 | (character & 0x3F));
  } else if (character < 0x10000) {
    byte(0xE0 | (character >> 12));
    byte(0x80 | ((character >> 6) & 0x3F));
    byte(0x80 | (character & 0x3F));
  } else {
    byte(0xF0 | (character >> 18));
    byte(0x80 | ((character >> 12) & 0x3F));
    byte(0x80 | ((character >> 6) & 0x3F));
    byte(0x80 | (character & 0x3F));
  }
}

bool isControl(char32_t character) {
  return within({{0, 0x1F}, {0x7F, 0x9F}, {0x2028, 0x202E}, {0x2066, 0x2069}}, character);
}

std::string printable(std::string_view text) {
  std::string line;
  for (const auto character : decodeUtf8(text))
    appendUtf8(line, isControl(character) ? replacement : character);
  return line;
}

// The C library's wcwidth depends on the locale; these are the blocks that matter for names.
int cellsOf(char32_t character) {
  if (within({{0, 0x1F},
              {0x7F, 0x9F},
              {0x300, 0x36F},
              {0x61C, 0x61C},
              {0x200B, 0x200F},
              {0x2060, 0x2064},
              {0x20D0, 0x20FF},
              {0xFE00, 0xFE0F},
              {0xFE20, 0xFE2F},
              {0xFEFF, 0xFEFF},
              {0xE0000, 0xE0FFF}},
             character)) {
    return 0;
  }
  const bool wide = within({{0x1100, 0x115F},
                            {0x2E80, 0xA4CF},
                            {0xAC00, 0xD7A3},
                            {0xF900, 0xFAFF},
                            {0xFE30, 0xFE6F},
                            {0xFF00, 0xFF60},
                            {0xFFE0, 0xFFE6},
                            {0x1F300, 0x1F64F},
                            {0x1F680, 0x1F6FF},
                            {0x1F900, 0x1F9FF},
                            {0x1FA70, 0x1FAFF},
                            {0x20000, 0x3FFFD}},
                           character);
  return wide || isWideSymbol(character) ? 2 : 1;
}

int cellsOf(std::string_view text) {
  int cells = 0;
  for (const auto character : decodeUtf8(text)) cells += cellsOf(character);
  return cells;
}

std::string clipped(std::string_view text, int cells) {
  auto line = printable(text);
  if (cellsOf(line) <= cells) return line;
  std::string head;
  if (cells <= 0) return head;
  int left = cells - 1;  // but for the ellipsis
  for (const auto character : decodeUtf8(line)) {
    left -= cellsOf(character);
    if (left < 0) break;
    appendUtf8(head, character);
  }
  appendUtf8(head, U'…');
  return head;
}

}  // namespace vantile::host
