#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

namespace vantile {

/// What Firefox's prefs.js says of downloads, as far as it does.
struct FirefoxPrefs {
  std::optional<std::int64_t> folderList;  ///< browser.download.folderList
  std::optional<std::string> dir;          ///< browser.download.dir, bytes as they stand there
};

/// The preferences of a prefs.js; the last statement that sets one counts, with a value of its
/// kind or none. Malformed lines are left out. Nothing when the text ends before it is whole: it
/// has no statement, or the last one or its line is not finished.
std::optional<FirefoxPrefs> parseFirefoxPrefs(std::string_view text);

}  // namespace vantile
