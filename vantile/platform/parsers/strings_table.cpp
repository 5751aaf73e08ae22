#include "vantile/platform/parsers/strings_table.h"

#include <algorithm>
#include <cstddef>

namespace vantile {
namespace {

constexpr std::string_view blanks = " \t\r\n\v\f";
constexpr std::string_view utf8Mark = "\xEF\xBB\xBF";

bool isOfAWord(char byte) {
  const bool isAlphanumeric =
      (byte >= '0' && byte <= '9') || (byte >= 'A' && byte <= 'Z') || (byte >= 'a' && byte <= 'z');
  return isAlphanumeric || std::string_view("_$/:.-").find(byte) != std::string_view::npos;
}

/// Reads the table from its beginning on. Once something was not as it must be, nothing follows.
class Reader {
 public:
  explicit Reader(std::string_view table) : rest_(table) {
    if (rest_.starts_with(utf8Mark)) rest_.remove_prefix(utf8Mark.size());
  }

  /// Whether the end was reached, behind blanks and comments.
  bool atEnd() {
    skipBlanks();
    return rest_.empty();
  }

  bool take(char byte) {
    skipBlanks();
    if (!rest_.starts_with(byte)) return false;
    rest_.remove_prefix(1);
    return true;
  }

  /// A text in quotes, or a word without.
  std::optional<std::string> text() {
    if (take('"')) return quoted();
    const auto end = std::find_if_not(rest_.begin(), rest_.end(), isOfAWord);
    std::string word(rest_.begin(), end);
    rest_.remove_prefix(word.size());
    return word.empty() ? std::nullopt : std::optional(std::move(word));
  }

 private:
  void skipBlanks() {
    while (true) {
      rest_.remove_prefix(std::min(rest_.find_first_not_of(blanks), rest_.size()));
      if (rest_.starts_with("//")) {
        rest_.remove_prefix(std::min(rest_.find_first_of("\r\n"), rest_.size()));
      } else if (rest_.starts_with("/*")) {
        const auto end = rest_.find("*/", 2);
        if (end == rest_.npos) return;  // it never ends, and is no text either
        rest_.remove_prefix(end + 2);
      } else {
        return;
      }
    }
  }

  std::optional<std::string> quoted() {
    std::string text;
    while (!rest_.empty()) {
      const char byte = rest_.front();
      rest_.remove_prefix(1);
      if (byte == '"') return text;
      if (byte != '\\') {
        text.push_back(byte);
      } else if (!takeEscaped(text)) {
        return std::nullopt;
      }
    }
    return std::nullopt;
  }

  /// What stands behind a backslash. Characters by their numbers are not taken.
  bool takeEscaped(std::string& text) {
    constexpr std::string_view letters = "abfnrtv\"'\\\n", meanings = "\a\b\f\n\r\t\v\"'\\\n";
    const auto at = rest_.empty() ? letters.npos : letters.find(rest_.front());
    if (at == letters.npos) return false;
    text.push_back(meanings[at]);
    rest_.remove_prefix(1);
    return true;
  }

  std::string_view rest_;
};

}  // namespace

std::optional<std::string> stringInTable(std::string_view table, std::string_view key) {
  Reader reader(table);
  std::optional<std::string> found;
  while (!reader.atEnd()) {
    const auto name = reader.text();
    if (!name) return std::nullopt;
    const auto text = reader.take('=') ? reader.text() : name;  // a key alone stands for itself
    if (!text || !reader.take(';')) return std::nullopt;
    if (*name == key) found = text;
  }
  return found;
}

}  // namespace vantile
