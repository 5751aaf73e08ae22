#include "vantile/platform/parsers/text_pieces.h"

#include "fuzz/fuzzer.h"

namespace vantile::fuzz {
namespace {

std::string utf8Of(char32_t code) {
  const auto low = [code](unsigned shift) {
    return static_cast<char>(0x80u | ((code >> shift) & 0x3Fu));
  };
  if (code < 0x80) return {static_cast<char>(code)};
  if (code < 0x800) return {static_cast<char>(0xC0u | (code >> 6)), low(0)};
  if (code < 0x10000) return {static_cast<char>(0xE0u | (code >> 12)), low(6), low(0)};
  return {static_cast<char>(0xF0u | (code >> 18)), low(12), low(6), low(0)};
}

}  // namespace

void consume(std::string_view input) {
  // One character in four separates, of each length in bytes.
  std::vector<std::string> separators;
  const auto pieces = piecesBetween(input, [&separators](char32_t character) {
    require(character <= 0x10FFFF && (character < 0xD800 || character > 0xDFFF), "a character");
    if (character % 4 != 0) return false;
    separators.push_back(utf8Of(character));
    return true;
  });
  require(pieces.size() == separators.size() + 1, "one piece more than separators");
  std::string text = pieces.front();
  for (std::size_t i = 0; i < separators.size(); ++i) text += separators[i] + pieces[i + 1];
  require(text == input, "nothing is lost");
}

}  // namespace vantile::fuzz
