#include "vantile/platform/parsers/text_pieces.h"

#include <array>
#include <optional>

namespace vantile {
namespace {

struct Character {
  std::optional<char32_t> code;  // nothing for a byte that is not UTF-8
  std::size_t bytes = 1;
};

bool continues(char byte) {
  return (static_cast<unsigned char>(byte) & 0xC0) == 0x80;
}

Character firstOf(std::string_view text) {
  const auto lead = static_cast<unsigned char>(text.front());
  if (lead < 0x80) return {lead, 1};
  const std::size_t bytes = lead >= 0xF0 ? 4 : lead >= 0xE0 ? 3 : 2;
  if (lead < 0xC2 || lead > 0xF4 || text.size() < bytes) return {};
  char32_t code = lead & (0x7Fu >> bytes);
  for (std::size_t i = 1; i < bytes; ++i) {
    if (!continues(text[i])) return {};
    code = (code << 6) | (static_cast<unsigned char>(text[i]) & 0x3Fu);
  }
  constexpr std::array<char32_t, 5> least = {0, 0, 0x80, 0x800, 0x10000};
  const bool isSurrogate = code >= 0xD800 && code <= 0xDFFF;
  if (code < least[bytes] || code > 0x10FFFF || isSurrogate) return {};
  return {code, bytes};
}

}  // namespace

std::vector<std::string> piecesBetween(std::string_view text,
                                       const std::function<bool(char32_t)>& separates) {
  std::vector<std::string> pieces(1);
  while (!text.empty()) {
    const auto character = firstOf(text);
    if (character.code && separates(*character.code)) {
      pieces.emplace_back();
    } else {
      pieces.back().append(text.substr(0, character.bytes));
    }
    text.remove_prefix(character.bytes);
  }
  return pieces;
}

}  // namespace vantile
