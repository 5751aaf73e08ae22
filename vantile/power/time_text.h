#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

namespace vantile {

/// Hours and minutes as "%ld:%02ld" prints them: 1 and 2 are "1:02".
std::string timeText(std::int64_t hours, std::int64_t minutes);

/// The two numbers in a translated format, such as "%2$02ld min, %1$ld h". Nothing unless it holds
/// both fields exactly once and no other: a field is of a long in decimal (%ld, %li, %lld, %lli),
/// by its place or, where neither names one, in order, and may be padded with zeros or blanks to at
/// most 9 columns. "%%" is a percent sign. No text ever reaches printf.
std::optional<std::string> timeText(std::string_view format, std::int64_t hours,
                                    std::int64_t minutes);

}  // namespace vantile
