#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace vantile {

// Firefox's profiles, each as the path of its folder, absolute or in the folder that the files
// stand in. Both give nothing when the text ends before it is whole: it is empty, or its last line
// is not finished.

/// The profiles that an installs.ini gives its installations, none twice.
std::optional<std::vector<std::string>> parseFirefoxInstalls(std::string_view text);

/// The profile that a profiles.ini marks as the default, or the only one that it names; none else.
std::optional<std::vector<std::string>> parseFirefoxProfiles(std::string_view text);

}  // namespace vantile
