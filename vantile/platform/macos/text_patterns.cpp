#include "vantile/platform/text_patterns.h"

#include <limits>
#include <string>
#include <utility>

#include "vantile/platform/macos/core_foundation.h"
#include "vantile/platform/macos/objective_c.h"

namespace vantile {
namespace {

/// NSRange and NSNotFound, which stand in headers of another language.
struct Range {
  unsigned long location, length;
};
constexpr auto notFound = static_cast<unsigned long>(std::numeric_limits<long>::max());

/// Where in the UTF-8 `text` each UTF-16 unit of it begins, and its end. Of the two units of one
/// character both begin where it does.
std::vector<std::size_t> unitsOf(std::string_view text) {
  std::vector<std::size_t> units;
  units.reserve(text.size() + 1);
  for (std::size_t at = 0; at < text.size(); ++at) {
    const auto byte = static_cast<unsigned char>(text[at]);
    const bool continues = (byte & 0xC0) == 0x80;
    if (!continues) units.push_back(at);
    if (byte >= 0xF0) units.push_back(at);
  }
  units.push_back(text.size());
  return units;
}

class MacosPattern final : public TextPattern {
 public:
  explicit MacosPattern(Owned<CFTypeRef> pattern) : pattern_(std::move(pattern)) {}

  void matches(std::string_view text,
               const std::function<void(const Groups&)>& visit) const override {
    const AutoreleasePool pool;
    const auto string = stringOf(text);
    if (!string) return;
    const auto units = unitsOf(text);
    const Range whole = {0, static_cast<unsigned long>(CFStringGetLength(string.get()))};
    if (whole.length + 1 != units.size()) return;
    const auto found = as<CFArrayRef>(
        CFArrayGetTypeID(), message<id>(bridged(pattern_.get()), "matchesInString:options:range:",
                                        bridged(string.get()), 0ul, whole));
    for (CFIndex i = 0; found && i < CFArrayGetCount(found); ++i)
      visit(groupsOf(bridged(CFArrayGetValueAtIndex(found, i)), text, units));
  }

 private:
  static Groups groupsOf(id match, std::string_view text, const std::vector<std::size_t>& units) {
    Groups groups(message<unsigned long>(match, "numberOfRanges"));
    for (std::size_t group = 0; group < groups.size(); ++group) {
      const auto range = message<Range>(match, "rangeAtIndex:", static_cast<unsigned long>(group));
      if (range.location == notFound || range.location >= units.size() ||
          range.length >= units.size() - range.location)
        continue;
      const auto begin = units[range.location], end = units[range.location + range.length];
      groups[group] = text.substr(begin, end - begin);
    }
    return groups;
  }

  const Owned<CFTypeRef> pattern_;
};

class MacosPatterns final : public TextPatterns {
 public:
  std::shared_ptr<const TextPattern> compile(std::string_view pattern) override {
    const AutoreleasePool pool;
    const auto text = stringOf(pattern);
    if (!text) return nullptr;
    const id compiled =
        message<id>(classNamed("NSRegularExpression"),
                    "regularExpressionWithPattern:options:error:", bridged(text.get()), 0ul,
                    static_cast<id*>(nullptr));
    if (!compiled) return nullptr;
    return std::make_shared<MacosPattern>(Owned<CFTypeRef>(CFRetain(compiled)));
  }
};

}  // namespace

std::shared_ptr<TextPatterns> systemTextPatterns() {
  static auto& patterns = *new std::shared_ptr<TextPatterns>(std::make_shared<MacosPatterns>());
  return patterns;
}

}  // namespace vantile
