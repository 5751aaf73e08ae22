#include "vantile/platform/parsers/strings_table.h"

#include "fuzz/fuzzer.h"

namespace vantile::fuzz {
namespace {

std::string quoted(std::string_view text) {
  std::string quotedText = "\"";
  for (const char byte : text) {
    if (byte == '"' || byte == '\\') quotedText.push_back('\\');
    quotedText.push_back(byte);
  }
  return quotedText + '"';
}

}  // namespace

void consume(std::string_view input) {
  const auto half = input.size() / 2;
  const auto key = input.substr(0, half), text = input.substr(half);
  const auto line = quoted(key) + " = " + quoted(text) + ";\n";
  require(stringInTable(line, key) == text, "a text comes back byte for byte");
  require(stringInTable("/* a */ x = y; // b\n" + line, key) == text, "behind other lines, too");

  // Behind a whole table a line counts, in front of it unless the table has the key.
  const std::string table(input);
  const bool isWhole = stringInTable(table + "\n;", "") == std::nullopt &&
                       stringInTable(table + "\nzz = 1;", "zz") == "1";
  if (isWhole) require(stringInTable(table + "\n" + line, key) == text, "the last text counts");
}

}  // namespace vantile::fuzz
