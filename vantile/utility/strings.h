#pragma once

#include <optional>
#include <string>
#include <string_view>

#include "vantile/foundation/api.h"

namespace vantile {

/// Whether `text` is nil or has no characters.
VANTILE_API bool isNilOrEmpty(const std::optional<std::string>& text);

/// Whether `text` begins with `prefix`, byte for byte. Everything begins with an empty prefix.
VANTILE_API bool startWithString(std::string_view text, std::string_view prefix);

/// Whether the dotted version `version` is the same as or earlier than `other`. Components compare
/// as numbers, whatever their length; missing ones count as 0, and so does what does not begin
/// with a digit.
VANTILE_API bool isLessThanOrEqual(std::string_view version, std::string_view other);

}  // namespace vantile
