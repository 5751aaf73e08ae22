#include "vantile/platform/text_pieces.h"

#include <glib.h>

#include "vantile/platform/parsers/text_pieces.h"

namespace vantile {
namespace {

bool isAlphanumeric(char32_t character) {
  switch (g_unichar_type(character)) {
    case G_UNICODE_LOWERCASE_LETTER:
    case G_UNICODE_MODIFIER_LETTER:
    case G_UNICODE_OTHER_LETTER:
    case G_UNICODE_TITLECASE_LETTER:
    case G_UNICODE_UPPERCASE_LETTER:
    case G_UNICODE_SPACING_MARK:
    case G_UNICODE_ENCLOSING_MARK:
    case G_UNICODE_NON_SPACING_MARK:
    case G_UNICODE_DECIMAL_NUMBER:
    case G_UNICODE_LETTER_NUMBER:
    case G_UNICODE_OTHER_NUMBER:
      return true;
    default:
      return false;
  }
}

bool isPunctuation(char32_t character) {
  switch (g_unichar_type(character)) {
    case G_UNICODE_CONNECT_PUNCTUATION:
    case G_UNICODE_DASH_PUNCTUATION:
    case G_UNICODE_CLOSE_PUNCTUATION:
    case G_UNICODE_FINAL_PUNCTUATION:
    case G_UNICODE_INITIAL_PUNCTUATION:
    case G_UNICODE_OTHER_PUNCTUATION:
    case G_UNICODE_OPEN_PUNCTUATION:
      return true;
    default:
      return false;
  }
}

class GlibTextPieces final : public TextPieces {
 public:
  std::vector<std::string> alphanumericPieces(std::string_view text) override {
    return piecesBetween(text, [](char32_t character) { return !isAlphanumeric(character); });
  }
  std::vector<std::string> piecesBetweenPunctuation(std::string_view text) override {
    return piecesBetween(text, isPunctuation);
  }
};

}  // namespace

std::shared_ptr<TextPieces> systemTextPieces() {
  static auto& pieces = *new std::shared_ptr<TextPieces>(std::make_shared<GlibTextPieces>());
  return pieces;
}

}  // namespace vantile
