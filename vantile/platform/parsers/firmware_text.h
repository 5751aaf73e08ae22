#pragma once

#include <optional>
#include <string>
#include <string_view>

namespace vantile {

/// What a maker put into a text of the firmware, without blanks around it and up to a zero byte;
/// nothing where it was left empty, or as the firmware's author put it there: "To Be Filled By
/// O.E.M.", "Default string", nothing but zeros, and the like.
std::optional<std::string> firmwareText(std::string_view text);

}  // namespace vantile
