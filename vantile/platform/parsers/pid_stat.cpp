#include "vantile/platform/parsers/pid_stat.h"

#include <algorithm>
#include <charconv>

namespace vantile {
namespace {

/// Takes numbers off a text, each with a space before it, or skips them.
class Fields {
 public:
  explicit Fields(std::string_view text) : text_(text) {}

  template <class Number>
  bool take(Number& number) {
    if (!text_.starts_with(' ')) return false;
    const char* const end = text_.data() + text_.size();
    const auto parsed = std::from_chars(text_.data() + 1, end, number);
    // A number behind which nothing stands may have been cut off.
    if (parsed.ec != std::errc() || parsed.ptr == end) return false;
    text_.remove_prefix(static_cast<std::size_t>(parsed.ptr - text_.data()));
    return true;
  }

  bool skip(int count) {
    for (; count > 0; --count) {
      if (!text_.starts_with(' ')) return false;
      text_.remove_prefix(std::min(text_.find(' ', 1), text_.size()));
    }
    return true;
  }

 private:
  std::string_view text_;
};

bool isLetter(char byte) {
  return (byte >= 'A' && byte <= 'Z') || (byte >= 'a' && byte <= 'z');
}

}  // namespace

std::optional<PidStat> parsePidStat(std::string_view text) {
  PidStat stat;
  const auto pid = std::from_chars(text.data(), text.data() + text.size(), stat.pid);
  if (pid.ec != std::errc() || stat.pid <= 0) return std::nullopt;
  const auto begin = static_cast<std::size_t>(pid.ptr - text.data());
  // The name may itself contain ") " and newlines, so it ends at the last one.
  const auto end = text.rfind(')');
  if (end == std::string_view::npos || end < begin + 2 || text.substr(begin, 2) != " (" ||
      text.size() < end + 3)
    return std::nullopt;
  stat.name = text.substr(begin + 2, end - begin - 2);
  stat.state = text[end + 2];
  if (text[end + 1] != ' ' || !isLetter(stat.state)) return std::nullopt;

  Fields fields(text.substr(end + 3));
  // The numbers of the fields are those of proc(5): ppid is 4.
  const bool isWhole = fields.take(stat.parent) && fields.skip(1) && fields.take(stat.session) &&
                       fields.skip(7) && fields.take(stat.userTicks) &&        // 14
                       fields.take(stat.systemTicks) && fields.skip(3) &&      // 15
                       fields.take(stat.nice) && fields.take(stat.threads) &&  // 19, 20
                       fields.skip(1) && fields.take(stat.startTicks) &&       // 22
                       fields.take(stat.virtualBytes) &&                       // 23
                       fields.take(stat.residentPages) && fields.skip(1) &&    // 24
                       fields.take(stat.codeStart) && fields.skip(1) &&        // 26
                       fields.take(stat.stackStart);                           // 28
  return isWhole ? std::optional(stat) : std::nullopt;
}

}  // namespace vantile
