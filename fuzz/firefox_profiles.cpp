#include "vantile/platform/parsers/firefox_profiles.h"

#include <algorithm>
#include <set>

#include "fuzz/fuzzer.h"

namespace vantile::fuzz {
namespace {

using Profiles = std::optional<std::vector<std::string>>;

/// Each of them stands behind "`key`=" somewhere, and is a path.
void checkPaths(const Profiles& profiles, std::string_view key, std::string_view text) {
  require(profiles.has_value() == text.ends_with('\n'), "a text is whole by its last newline");
  for (const auto& profile : profiles.value_or(std::vector<std::string>())) {
    require(!profile.empty() && profile.find('\0') == std::string::npos, "a profile is a path");
    require(text.find(std::string(key) + "=" + profile) != std::string_view::npos,
            "a profile is named in the text");
  }
}

/// Files such as Firefox writes, with profiles called after the lines of `names`.
void checkFiles(std::string_view names) {
  std::string installs, profiles = "[General]\nVersion=2\n";
  std::set<std::string> written;
  for (const auto name : split(names, '\n')) {
    const auto path = "p/" + std::string(name);
    if (path.ends_with('\r') || path.find('\0') != std::string::npos || path.size() > 4000)
      continue;
    written.insert(path);
    installs += "[" + std::to_string(installs.size()) + "]\nDefault=" + path + "\nLocked=1\n\n";
    profiles += "[Profile1]\nIsRelative=1\nPath=" + path + "\n\n";
  }
  installs += "\n";
  const auto installed = parseFirefoxInstalls(installs);
  require(installed && std::set(installed->begin(), installed->end()) == written &&
              installed->size() == written.size(),
          "every installation's profile is named, once");
  profiles += "[Profile0]\nPath=last\nDefault=1\n";
  require(parseFirefoxProfiles(profiles) == std::vector<std::string>{"last"},
          "the default profile is named among all others");
}

}  // namespace

void consume(std::string_view input) {
  const auto profiles = parseFirefoxProfiles(input);
  checkPaths(parseFirefoxInstalls(input), "Default", input);
  checkPaths(profiles, "Path", input);
  require(!profiles || profiles->size() <= 1, "one profile is the default");
  checkFiles(input);
}

}  // namespace vantile::fuzz
