#pragma once

#include <optional>
#include <string>
#include <string_view>

namespace vantile {

/// The distribution's own name and version of an os-release file: PRETTY_NAME, else NAME and
/// VERSION_ID; nothing where it names neither.
std::optional<std::string> distributionVersion(std::string_view text);

}  // namespace vantile
