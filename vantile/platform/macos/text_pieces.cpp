#include "vantile/platform/text_pieces.h"

#include "vantile/platform/macos/core_foundation.h"
#include "vantile/platform/parsers/text_pieces.h"

namespace vantile {
namespace {

/// Whether the character is in one of the system's own sets, which live as long as the process.
bool isIn(CFCharacterSetPredefinedSet set, char32_t character) {
  return CFCharacterSetIsLongCharacterMember(CFCharacterSetGetPredefined(set), character) != 0;
}

class MacosTextPieces final : public TextPieces {
 public:
  std::vector<std::string> alphanumericPieces(std::string_view text) override {
    return piecesBetween(
        text, [](char32_t character) { return !isIn(kCFCharacterSetAlphaNumeric, character); });
  }
  std::vector<std::string> piecesBetweenPunctuation(std::string_view text) override {
    return piecesBetween(
        text, [](char32_t character) { return isIn(kCFCharacterSetPunctuation, character); });
  }
};

}  // namespace

std::shared_ptr<TextPieces> systemTextPieces() {
  static auto& pieces = *new std::shared_ptr<TextPieces>(std::make_shared<MacosTextPieces>());
  return pieces;
}

}  // namespace vantile
