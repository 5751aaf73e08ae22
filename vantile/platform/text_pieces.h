#pragma once

#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "vantile/foundation/api.h"

namespace vantile {

/// Text taken apart at characters of a kind, by Unicode's categories in whatever locale. Two such
/// characters in a row have an empty piece in between, and a text without any is one piece. A byte
/// that is not UTF-8 belongs to its piece. Any thread.
class TextPieces {
 public:
  virtual ~TextPieces() = default;

  /// The pieces between characters that are not alphanumeric: neither letters nor marks nor
  /// numbers. macOS: kCFCharacterSetAlphaNumeric. Linux: g_unichar_type.
  virtual std::vector<std::string> alphanumericPieces(std::string_view text) = 0;

  /// The pieces between punctuation characters; symbols such as "+" are none.
  /// macOS: kCFCharacterSetPunctuation. Linux: g_unichar_type.
  virtual std::vector<std::string> piecesBetweenPunctuation(std::string_view text) = 0;
};

/// The system's categories, shared by the process.
VANTILE_API std::shared_ptr<TextPieces> systemTextPieces();

}  // namespace vantile
