#include "vantile/platform/parsers/utf16.h"

#include "fuzz/fuzzer.h"

namespace vantile::fuzz {
namespace {

constexpr char32_t replacement = 0xFFFD;

/// The characters of well-formed UTF-8.
std::u32string charactersOf(std::string_view bytes) {
  std::u32string characters;
  while (!bytes.empty()) {
    const auto lead = static_cast<unsigned char>(bytes.front());
    const std::size_t size = lead < 0x80 ? 1 : lead < 0xE0 ? 2 : lead < 0xF0 ? 3 : 4;
    require((lead < 0x80 || lead >= 0xC2) && lead < 0xF5 && bytes.size() >= size, "a whole one");
    char32_t character = size == 1 ? lead : lead & (0x7Fu >> size);
    for (std::size_t i = 1; i < size; ++i) {
      const auto next = static_cast<unsigned char>(bytes[i]);
      require((next & 0xC0) == 0x80, "a byte that goes on");
      character = character << 6 | (next & 0x3F);
    }
    constexpr char32_t least[] = {0, 0x80, 0x800, 0x10000};
    require(character >= least[size - 1] && character <= 0x10FFFF, "as short as it can be");
    require(character < 0xD800 || character > 0xDFFF, "no half of a pair");
    characters += character;
    bytes.remove_prefix(size);
  }
  return characters;
}

}  // namespace

void consume(std::string_view input) {
  std::u16string text;
  for (std::size_t at = 0; at + 1 < input.size(); at += 2)
    text += static_cast<char16_t>(static_cast<unsigned char>(input[at]) |
                                  static_cast<unsigned char>(input[at + 1]) << 8);
  const auto characters = charactersOf(utf8Of(text));
  std::size_t unit = 0;
  for (const char32_t character : characters) {
    require(unit < text.size(), "nothing is made up");
    const char32_t first = text[unit++];
    if (character < 0x10000) {
      const bool isHalf = first >= 0xD800 && first <= 0xDFFF;
      require(character == (isHalf ? replacement : first), "a unit is itself, half a pair is none");
    } else {
      require(unit < text.size(), "a pair has two units");
      require(first == 0xD800 + ((character - 0x10000) >> 10), "its first unit");
      require(text[unit++] == 0xDC00 + ((character - 0x10000) & 0x3FF), "its second unit");
    }
  }
  require(unit == text.size(), "nothing is left out");
}

}  // namespace vantile::fuzz
