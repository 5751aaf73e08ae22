#include "vantile/platform/parsers/shell_assignments.h"

#include "vantile/platform/parsers/os_release.h"

#include "fuzz/fuzzer.h"

namespace vantile::fuzz {
namespace {

std::string doubleQuoted(std::string_view text) {
  std::string result = "\"";
  for (const char byte : text) {
    if (byte == '"' || byte == '\\' || byte == '$' || byte == '`') result.push_back('\\');
    result.push_back(byte);
  }
  return result + "\"";
}

std::string singleQuoted(std::string_view text) {
  std::string result = "'";
  for (const char byte : text) result += byte == '\'' ? std::string("'\\''") : std::string(1, byte);
  return result + "'";
}

std::string escaped(std::string_view text) {
  std::string result;
  for (const char byte : text) result.append("\\").push_back(byte);
  return result;
}

}  // namespace

void consume(std::string_view input) {
  const auto found = shellAssignment(input, "NAME");
  require(!found || input.find("NAME") != std::string_view::npos, "a name that is there");
  require(!found || found->size() <= input.size(), "no more than the text has");
  require(!found || found->find('\n') == std::string::npos, "a value of one line");

  // Whatever stands before it, an assignment at the end counts, and comes back byte for byte.
  const auto lines = split(input, '\n');
  const std::string last(lines.back());
  const std::string before(input.substr(0, input.size() - last.size()));
  for (const auto& value : {doubleQuoted(last), singleQuoted(last), escaped(last)}) {
    require(shellAssignment(before + "NAME=" + value + "\n", "NAME") == last,
            "a value comes back as it was");
    require(shellAssignment(before + "NAME=" + value + " # why\r\n", "NAME") == last,
            "also before a comment");
  }
  require(shellAssignment("NAME=a\nNAME=" + doubleQuoted(last) + "'\n", "NAME") == "a",
          "a quote left open is no assignment");
  require(last.empty() || distributionVersion(before + "PRETTY_NAME=" + doubleQuoted(last)) == last,
          "the pretty name is the version");
}

}  // namespace vantile::fuzz
