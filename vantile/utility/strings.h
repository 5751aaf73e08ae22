#pragma once

#include <cstdint>
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

/// The decimal number that `text` begins with after white space, with its sign; 0 where there is
/// none. What 32 bits can't hold gives the nearest number that they can.
VANTILE_API std::int32_t intValue(std::string_view text);

/// The same with a fraction behind a "." and an exponent, whatever the locale; what a double can't
/// hold gives infinity.
VANTILE_API double doubleValue(std::string_view text);

/// The number with two decimals and a point, whatever the locale: "1234.50".
VANTILE_API std::string twoDecimals(double number);

}  // namespace vantile
