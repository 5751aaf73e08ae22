#pragma once

#include <optional>
#include <string>
#include <string_view>

namespace vantile {

/// What the Preferences of Chromium or one of its kin say of downloads.
struct ChromiumPreferences {
  std::optional<std::string> downloadFolder;  ///< download.default_directory, unless it is empty
};

/// The preferences in a JSON text; nothing when it is none: malformed, or cut off.
std::optional<ChromiumPreferences> parseChromiumPreferences(std::string_view json);

}  // namespace vantile
