#include "vantile/platform/parsers/utf16.h"

namespace vantile {
namespace {

constexpr char32_t replacement = U'\uFFFD';

bool isHighHalf(char32_t unit) {
  return unit >= 0xD800 && unit < 0xDC00;
}
bool isLowHalf(char32_t unit) {
  return unit >= 0xDC00 && unit < 0xE000;
}

/// Takes the first character off `text`, which has one.
char32_t takeCharacter(std::u16string_view& text) {
  const char32_t first = text.front();
  const char32_t second = text.size() > 1 ? text[1] : 0;
  const bool isPair = isHighHalf(first) && isLowHalf(second);
  text.remove_prefix(isPair ? 2 : 1);
  if (isPair) return 0x10000 + ((first - 0xD800) << 10) + (second - 0xDC00);
  return isHighHalf(first) || isLowHalf(first) ? replacement : first;
}

void append(std::string& text, char32_t character) {
  const auto put = [&](char32_t byte) { text += static_cast<char>(byte); };
  if (character < 0x80) return put(character);
  if (character < 0x800) {
    put(0xC0 | character >> 6);
  } else if (character < 0x10000) {
    put(0xE0 | character >> 12);
    put(0x80 | (character >> 6 & 0x3F));
  } else {
    put(0xF0 | character >> 18);
    put(0x80 | (character >> 12 & 0x3F));
    put(0x80 | (character >> 6 & 0x3F));
  }
  put(0x80 | (character & 0x3F));
}

}  // namespace

std::string utf8Of(std::u16string_view text) {
  std::string bytes;
  bytes.reserve(text.size());
  while (!text.empty()) append(bytes, takeCharacter(text));
  return bytes;
}

}  // namespace vantile
