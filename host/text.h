#pragma once

#include <cstdint>
#include <ctime>
#include <string>
#include <string_view>

namespace vantile::host {

/// "0 B", "512 KiB", "7.25 GiB": at most three digits that matter.
std::string formatBytes(std::uint64_t bytes);
/// The growth from `before` to `after` with its sign: "+1.50 GiB", "-3.00 MiB", "+0 B".
std::string formatChange(std::uint64_t before, std::uint64_t after);
/// A share of one as "12.3 %".
std::string formatPercent(double share);
/// "0", "42", "9999", "12.3k", "4.56M". Negative numbers and NaN read as 0.
std::string formatCount(double count);
/// A number with that many digits after the point, whatever the locale.
std::string formatFixed(double number, int digits);
/// "45 s", "2 min", "1 h 30 min".
std::string formatSpan(std::uint64_t seconds);

/// The local time of day: "14:03:22".
std::string formatClock(std::time_t moment);

/// The characters of UTF-8 text. What is not UTF-8 becomes U+FFFD.
std::u32string decodeUtf8(std::string_view text);
void appendUtf8(std::string& text, char32_t character);

/// Whether a terminal would obey it rather than show it: controls, and what turns the direction or
/// ends the line.
bool isControl(char32_t character);

/// The text as one line of UTF-8 that is safe to print: control characters and bytes that are not
/// UTF-8 become U+FFFD.
std::string printable(std::string_view text);

/// Cells that a character takes on a terminal: 0, 1 or 2.
int cellsOf(char32_t character);
/// Cells that printable UTF-8 text takes.
int cellsOf(std::string_view text);
/// The text made printable, in at most that many cells: one that takes more ends in an ellipsis.
std::string clipped(std::string_view text, int cells);

}  // namespace vantile::host
