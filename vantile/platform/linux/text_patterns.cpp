#include "vantile/platform/text_patterns.h"

#include <glib.h>

#include <string>

namespace vantile {
namespace {

struct FreePattern {
  void operator()(GRegex* pattern) const { g_regex_unref(pattern); }
};
struct FreeMatch {
  void operator()(GMatchInfo* match) const { g_match_info_free(match); }
};

class GlibPattern final : public TextPattern {
 public:
  explicit GlibPattern(GRegex* pattern) : pattern_(pattern) {}

  void matches(std::string_view text,
               const std::function<void(const Groups&)>& visit) const override {
    constexpr std::size_t longest = G_MAXINT;  // GLib's offsets are ints
    const auto size = static_cast<gssize>(text.size());
    // The text may be null, a zero byte in it is no end of it to GLib.
    if (text.empty()) text = "";
    if (text.size() > longest || !isUtf8(text)) return;
    GMatchInfo* first = nullptr;
    g_regex_match_full(pattern_.get(), text.data(), size, 0, {}, &first, nullptr);
    const std::unique_ptr<GMatchInfo, FreeMatch> match(first);
    Groups groups;
    while (match && g_match_info_matches(match.get())) {
      take(match.get(), text, groups);
      visit(groups);
      g_match_info_next(match.get(), nullptr);
    }
  }

 private:
  /// GLib takes text on trust, and takes a zero byte for an end when it looks at it first.
  static bool isUtf8(std::string_view text) {
    while (true) {
      const auto piece = text.substr(0, text.find('\0'));
      if (!g_utf8_validate(piece.data(), static_cast<gssize>(piece.size()), nullptr)) return false;
      if (piece.size() == text.size()) return true;
      text.remove_prefix(piece.size() + 1);
    }
  }

  void take(GMatchInfo* match, std::string_view text, Groups& groups) const {
    groups.clear();
    for (gint group = 0; group <= g_regex_get_capture_count(pattern_.get()); ++group) {
      gint begin = -1, end = -1;
      // Of groups at the end that took no part there is no position.
      const bool told = g_match_info_fetch_pos(match, group, &begin, &end) != FALSE;
      if (told && begin >= 0 && end >= begin) {
        groups.emplace_back(
            text.substr(static_cast<std::size_t>(begin), static_cast<std::size_t>(end - begin)));
      } else {
        groups.emplace_back();
      }
    }
  }

  const std::unique_ptr<GRegex, FreePattern> pattern_;
};

class GlibPatterns final : public TextPatterns {
 public:
  std::shared_ptr<const TextPattern> compile(std::string_view pattern) override {
    const std::string text(pattern);
    const bool isWhole = text.find('\0') == std::string::npos;
    const bool isUtf8 = g_utf8_validate(text.data(), static_cast<gssize>(text.size()), nullptr);
    if (!isWhole || !isUtf8) return nullptr;
    GRegex* const compiled = g_regex_new(text.c_str(), G_REGEX_OPTIMIZE, {}, nullptr);
    return compiled ? std::make_shared<GlibPattern>(compiled) : nullptr;
  }
};

}  // namespace

std::shared_ptr<TextPatterns> systemTextPatterns() {
  static auto& patterns = *new std::shared_ptr<TextPatterns>(std::make_shared<GlibPatterns>());
  return patterns;
}

}  // namespace vantile
