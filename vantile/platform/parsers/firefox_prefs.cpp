#include "vantile/platform/parsers/firefox_prefs.h"

#include <algorithm>
#include <charconv>
#include <utility>
#include <variant>

#include "vantile/platform/parsers/text.h"

namespace vantile {
namespace {

struct OtherValue {};  // true, false
using PrefValue = std::variant<OtherValue, std::int64_t, std::string>;

struct Statement {
  std::string name;
  PrefValue value;
};

void appendUtf8(std::string& text, unsigned character) {
  const auto byte = [&text](unsigned bits) { text.push_back(static_cast<char>(bits)); };
  if (character < 0x80) {
    byte(character);
  } else if (character < 0x800) {
    byte(0xC0 | character >> 6);
    byte(0x80 | (character & 0x3F));
  } else if (character < 0x10000) {
    byte(0xE0 | character >> 12);
    byte(0x80 | (character >> 6 & 0x3F));
    byte(0x80 | (character & 0x3F));
  } else {
    byte(0xF0 | character >> 18);
    byte(0x80 | (character >> 12 & 0x3F));
    byte(0x80 | (character >> 6 & 0x3F));
    byte(0x80 | (character & 0x3F));
  }
}

/// Takes a prefs.js apart: statements such as user_pref("name", value); and comments.
class PrefsReader {
 public:
  explicit PrefsReader(std::string_view text) : rest_(text) {}

  /// Passes by blanks and comments.
  void skipBlanks();
  bool atEnd() const { return rest_.empty(); }
  /// Whether a comment or a text between quotes was not finished.
  bool isCutOff() const { return isCutOff_; }
  /// Takes a statement; where it is malformed what was good of it and the rest of that line.
  std::optional<Statement> takeStatement();

 private:
  bool take(std::string_view literal);
  bool takeAfterBlanks(std::string_view literal) {
    skipBlanks();
    return take(literal);
  }
  void takeThrough(std::string_view end);
  void giveUp();
  std::optional<Statement> statement();
  bool takeFunction();
  bool takeAttributes();
  std::optional<std::string> takeText();
  bool takeEscape(std::string& text);
  std::optional<unsigned> takeHex(std::size_t digits);
  bool takeUtf16(std::string& text);
  std::optional<PrefValue> takeValue();

  std::string_view rest_;
  bool isCutOff_ = false;
};

bool PrefsReader::take(std::string_view literal) {
  if (!rest_.starts_with(literal)) return false;
  rest_.remove_prefix(literal.size());
  return true;
}

void PrefsReader::skipBlanks() {
  while (true) {
    rest_.remove_prefix(std::min(rest_.find_first_not_of(" \t\r\n\v\f"), rest_.size()));
    if (take("//") || take("#"))
      takeThrough("\n");
    else if (take("/*"))
      takeThrough("*/");
    else
      return;
  }
}

/// Takes all up to the end of a comment and that.
void PrefsReader::takeThrough(std::string_view end) {
  const auto at = rest_.find(end);
  if (at == std::string_view::npos) return giveUp();
  rest_.remove_prefix(at + end.size());
}

/// What began here goes on behind the end of the text.
void PrefsReader::giveUp() {
  rest_ = {};
  isCutOff_ = true;
}

std::optional<Statement> PrefsReader::takeStatement() {
  auto taken = statement();
  if (!taken) takeLine(rest_);
  return taken;
}

std::optional<Statement> PrefsReader::statement() {
  if (!takeFunction() || !takeAfterBlanks("(")) return std::nullopt;
  skipBlanks();
  auto name = takeText();
  if (!name || !takeAfterBlanks(",")) return std::nullopt;
  skipBlanks();
  auto value = takeValue();
  if (!value || !takeAttributes() || !takeAfterBlanks(")") || !takeAfterBlanks(";"))
    return std::nullopt;
  return Statement{std::move(*name), std::move(*value)};
}

bool PrefsReader::takeFunction() {
  return take("user_pref") || take("sticky_pref") || take("pref");
}

/// What may follow a value: ", locked" or ", sticky".
bool PrefsReader::takeAttributes() {
  while (takeAfterBlanks(",")) {
    if (!takeAfterBlanks("locked") && !take("sticky")) return false;
  }
  return true;
}

/// A text between quotes of either kind, its escapes resolved.
std::optional<std::string> PrefsReader::takeText() {
  const char quote = rest_.empty() ? '\0' : rest_.front();
  if (quote != '"' && quote != '\'') return std::nullopt;
  rest_.remove_prefix(1);
  const char stops[] = {quote, '\\'};
  std::string text;
  while (true) {
    const auto plain = rest_.find_first_of(std::string_view(stops, 2));
    if (plain == std::string_view::npos) {
      giveUp();
      return std::nullopt;
    }
    text.append(rest_.substr(0, plain));
    const bool isEnd = rest_[plain] == quote;
    rest_.remove_prefix(plain + 1);
    if (isEnd) return text;
    if (!takeEscape(text)) return std::nullopt;
  }
}

/// What stands behind a backslash.
bool PrefsReader::takeEscape(std::string& text) {
  constexpr std::string_view escapes = "\"'\\nr", meanings = "\"'\\\n\r";
  const auto kind = rest_.empty() ? '\0' : rest_.front();
  if (const auto known = escapes.find(kind); known != std::string_view::npos) {
    rest_.remove_prefix(1);
    text.push_back(meanings[known]);
    return true;
  }
  if (take("u")) return takeUtf16(text);
  const auto character = take("x") ? takeHex(2) : std::nullopt;
  if (!character || *character == 0) return false;
  appendUtf8(text, *character);
  return true;
}

std::optional<unsigned> PrefsReader::takeHex(std::size_t digits) {
  unsigned number = 0;
  const char* const end = rest_.data() + std::min(digits, rest_.size());
  const auto parsed = std::from_chars(rest_.data(), end, number, 16);
  if (parsed.ec != std::errc() || parsed.ptr != rest_.data() + digits) return std::nullopt;
  rest_.remove_prefix(digits);
  return number;
}

/// The four digits behind "\u", and where they are half a character the other half's escape.
bool PrefsReader::takeUtf16(std::string& text) {
  const auto isIn = [](unsigned unit, unsigned first) {
    return unit >= first && unit < first + 0x400;
  };
  constexpr unsigned firstHalves = 0xD800, secondHalves = 0xDC00;
  const auto unit = takeHex(4);
  if (!unit || *unit == 0 || isIn(*unit, secondHalves)) return false;
  if (!isIn(*unit, firstHalves)) {
    appendUtf8(text, *unit);
    return true;
  }
  const auto second = take("\\u") ? takeHex(4) : std::nullopt;
  if (!second || !isIn(*second, secondHalves)) return false;
  appendUtf8(text, 0x10000 + ((*unit - firstHalves) << 10) + (*second - secondHalves));
  return true;
}

std::optional<PrefValue> PrefsReader::takeValue() {
  std::optional<PrefValue> value(std::in_place);  // something else than text or a number
  if (take("true") || take("false")) return value;
  if (auto text = takeText()) {
    value->emplace<std::string>(std::move(*text));
    return value;
  }
  if (rest_.starts_with("+-")) return std::nullopt;
  take("+");
  std::int64_t number = 0;
  const auto parsed = std::from_chars(rest_.data(), rest_.data() + rest_.size(), number);
  if (parsed.ec != std::errc()) return std::nullopt;
  rest_.remove_prefix(static_cast<std::size_t>(parsed.ptr - rest_.data()));
  value->emplace<std::int64_t>(number);
  return value;
}

template <class Held>
std::optional<Held> heldIn(PrefValue& value) {
  auto* const held = std::get_if<Held>(&value);
  return held ? std::optional(std::move(*held)) : std::nullopt;
}

}  // namespace

std::optional<FirefoxPrefs> parseFirefoxPrefs(std::string_view text) {
  if (!text.ends_with('\n')) return std::nullopt;
  FirefoxPrefs prefs;
  PrefsReader reader(text);
  bool lastIsWhole = false;
  for (reader.skipBlanks(); !reader.atEnd(); reader.skipBlanks()) {
    auto statement = reader.takeStatement();
    lastIsWhole = statement.has_value();
    if (!statement) continue;
    if (statement->name == "browser.download.folderList")
      prefs.folderList = heldIn<std::int64_t>(statement->value);
    else if (statement->name == "browser.download.dir")
      prefs.dir = heldIn<std::string>(statement->value);
  }
  return lastIsWhole && !reader.isCutOff() ? std::optional(std::move(prefs)) : std::nullopt;
}

}  // namespace vantile
