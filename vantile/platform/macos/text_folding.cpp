#include "vantile/platform/text_folding.h"

#include "vantile/platform/macos/core_foundation.h"
#include "vantile/platform/parsers/text.h"

namespace vantile {
namespace {

std::string withAsciiLowered(std::string_view text) {
  std::string lowered(text);
  for (char& byte : lowered) byte = asciiLowered(byte);
  return lowered;
}

/// `text` turned by `turn`, which changes the string that it is given.
template <class Turn>
std::string turned(std::string_view text, const Turn& turn) {
  const auto source = stringOf(text);
  if (!source) return withAsciiLowered(text);
  const Owned<CFMutableStringRef> copy(CFStringCreateMutableCopy(nullptr, 0, source.get()));
  if (!copy) return withAsciiLowered(text);
  // The root locale's rules: by the user's own, a Turk's "I" would not be an "i".
  turn(copy.get(), CFLocaleGetSystem());
  auto result = textOf(copy.get());
  return result ? *std::move(result) : withAsciiLowered(text);
}

class MacosTextFolding final : public TextFolding {
 public:
  std::string lowerCased(std::string_view text) override { return turned(text, CFStringLowercase); }

  std::string folded(std::string_view text) override {
    return turned(text, [](CFMutableStringRef string, CFLocaleRef locale) {
      CFStringFold(string, kCFCompareCaseInsensitive | kCFCompareDiacriticInsensitive, locale);
    });
  }
};

}  // namespace

std::shared_ptr<TextFolding> systemTextFolding() {
  static auto& folding = *new std::shared_ptr<TextFolding>(std::make_shared<MacosTextFolding>());
  return folding;
}

}  // namespace vantile
