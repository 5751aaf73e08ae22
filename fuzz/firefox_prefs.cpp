#include "vantile/platform/parsers/firefox_prefs.h"

#include "fuzz/fuzzer.h"

namespace vantile::fuzz {
namespace {

/// `text` as Firefox puts it between quotes.
std::string quoted(std::string_view text) {
  std::string result = "\"";
  for (const char byte : text) {
    if (byte == '\n') {
      result += "\\n";
    } else if (byte == '\r') {
      result += "\\r";
    } else {
      if (byte == '"' || byte == '\\') result.push_back('\\');
      result.push_back(byte);
    }
  }
  return result + "\"";
}

/// Behind whatever whole text, a statement counts, and cut off it is half-written.
void checkStatement(const std::string& before, std::string_view folder) {
  const auto statement = "user_pref(\"browser.download.dir\", " + quoted(folder) + ");\n";
  const auto prefs = parseFirefoxPrefs(before + statement);
  require(prefs && prefs->dir == folder, "a folder comes back as it was");
  const auto cut = folder.size() % statement.size();
  require(cut == 0 || !parseFirefoxPrefs(before + statement.substr(0, cut)),
          "a statement cut off makes the text half-written");
}

}  // namespace

void consume(std::string_view input) {
  const auto prefs = parseFirefoxPrefs(input);
  require(!prefs || input.ends_with('\n'), "a whole text ends in a newline");
  checkStatement("// Mozilla User Preferences\n\nuser_pref(\"a\", 1);\n", input);
  if (prefs) checkStatement(std::string(input), input.substr(0, input.size() / 2));
}

}  // namespace vantile::fuzz
