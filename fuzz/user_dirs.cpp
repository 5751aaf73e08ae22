#include "vantile/platform/parsers/user_dirs.h"

#include "fuzz/fuzzer.h"

namespace vantile::fuzz {
namespace {

constexpr std::string_view variable = "XDG_DOWNLOAD_DIR";
constexpr std::string_view home = "/home/someone";

bool isFolder(const std::optional<std::string>& path) {
  return !path || (path->starts_with('/') && (path->size() == 1 || !path->ends_with('/')));
}

/// `text` as xdg-user-dirs-update puts it between quotes.
std::string quoted(std::string_view text) {
  std::string result = "\"";
  for (const char byte : text) {
    if (byte == '"' || byte == '\\' || byte == '$' || byte == '`') result.push_back('\\');
    result.push_back(byte);
  }
  return result + "\"";
}

std::string withoutTrailingSlashes(std::string path) {
  while (path.size() > 1 && path.back() == '/') path.pop_back();
  return path;
}

}  // namespace

void consume(std::string_view input) {
  require(isFolder(parseUserDirs(input, variable, home)), "a folder is absolute, without an end");

  // Whatever stands before it, an assignment at the end counts.
  const auto lines = split(input, '\n');
  const std::string last(lines.back());
  const std::string before = std::string(input.substr(0, input.size() - last.size()));
  const auto assigned = [&before](const std::string& value, std::string_view below = home) {
    return parseUserDirs(before + std::string(variable) + "=" + value + "\n", variable, below);
  };
  require(assigned(quoted("/" + last)) == withoutTrailingSlashes("/" + last),
          "a name comes back as it was");
  require(assigned("\"$HOME/" + quoted(last).substr(1)) ==
              withoutTrailingSlashes(std::string(home) + "/" + last),
          "a name below the home comes back as it was");
  require(last.starts_with('/') || assigned("\"$HOME/" + quoted(last).substr(1), "/") ==
                                       withoutTrailingSlashes("/" + last),
          "below the root, too, and by one slash");
}

}  // namespace vantile::fuzz
