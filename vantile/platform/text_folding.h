#pragma once

#include <memory>
#include <string>
#include <string_view>

#include "vantile/foundation/api.h"

namespace vantile {

/// Text without the differences that a comparison is not to see, by Unicode's rules in whatever
/// locale. What is not UTF-8 is left as it is but for its ASCII letters. Any thread.
class TextFolding {
 public:
  virtual ~TextFolding() = default;

  /// In lower case. macOS: CFStringLowercase. Linux: g_utf8_strdown.
  virtual std::string lowerCased(std::string_view text) = 0;

  /// Without case and diacritics: equal for "É", "é" and "e". macOS: CFStringFold. Linux:
  /// g_utf8_casefold of the decomposed text without its marks.
  virtual std::string folded(std::string_view text) = 0;
};

/// The system's rules, shared by the process.
VANTILE_API std::shared_ptr<TextFolding> systemTextFolding();

}  // namespace vantile
