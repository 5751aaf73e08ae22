#include "vantile/platform/text_folding.h"

#include "vantile/platform/linux/glib_text.h"

namespace vantile {
namespace {

std::string withAsciiLowered(std::string_view text) {
  std::string lowered(text);
  for (char& byte : lowered) byte = g_ascii_tolower(byte);
  return lowered;
}

void append(std::string& text, gunichar character) {
  char bytes[6];
  const int size = g_unichar_to_utf8(character, bytes);
  text.append(bytes, static_cast<std::size_t>(size));
}

/// Calls `each` with the characters of `text`, which is UTF-8.
template <class Each>
void forEachCharacter(std::string_view text, const Each& each) {
  const char* const end = text.data() + text.size();
  for (const char* at = text.data(); at < end; at = g_utf8_next_char(at)) each(g_utf8_get_char(at));
}

/// g_utf8_strdown in the locale "C", whatever the process's is: in a Turkish, Azeri or Lithuanian
/// one it lowers the letters I and J by rules of its own. It gets them lowered; what is left to it
/// is the sigma, whose form depends on what follows.
std::string lowered(std::string_view text) {
  constexpr gunichar dottedCapitalI = 0x130, combiningDot = 0x307, capitalSigma = 0x3A3;
  std::string almost;
  almost.reserve(text.size());
  forEachCharacter(text, [&almost](gunichar character) {
    append(almost, character == capitalSigma ? character : g_unichar_tolower(character));
    if (character == dottedCapitalI) append(almost, combiningDot);
  });
  return GlibText(g_utf8_strdown(almost.data(), static_cast<gssize>(almost.size()))).get();
}

bool isMark(gunichar character) {
  return g_unichar_combining_class(character) != 0 ||
         g_unichar_type(character) == G_UNICODE_NON_SPACING_MARK;
}

std::string withoutCaseAndMarks(std::string_view text) {
  const GlibText decomposed(
      g_utf8_normalize(text.data(), static_cast<gssize>(text.size()), G_NORMALIZE_NFD));
  std::string plain;
  forEachCharacter(decomposed.get(), [&plain](gunichar character) {
    // Lowered first, since GLib would fold the two cases of Cherokee into each other.
    if (!isMark(character)) append(plain, g_unichar_tolower(character));
  });
  return GlibText(g_utf8_casefold(plain.data(), static_cast<gssize>(plain.size()))).get();
}

/// `text` turned by `turn`, piece by piece: GLib would stop at a zero byte. A piece that is not
/// UTF-8 only has its ASCII letters lowered.
template <class Turn>
std::string turned(std::string_view text, const Turn& turn) {
  std::string result;
  while (true) {
    const auto piece = text.substr(0, text.find('\0'));
    const bool isUtf8 = g_utf8_validate(piece.data(), static_cast<gssize>(piece.size()), nullptr);
    if (!piece.empty()) result += isUtf8 ? turn(piece) : withAsciiLowered(piece);
    if (piece.size() == text.size()) return result;
    result.push_back('\0');
    text.remove_prefix(piece.size() + 1);
  }
}

class GlibTextFolding final : public TextFolding {
 public:
  std::string lowerCased(std::string_view text) override { return turned(text, lowered); }
  std::string folded(std::string_view text) override { return turned(text, withoutCaseAndMarks); }
};

}  // namespace

std::shared_ptr<TextFolding> systemTextFolding() {
  static auto& folding = *new std::shared_ptr<TextFolding>(std::make_shared<GlibTextFolding>());
  return folding;
}

}  // namespace vantile
