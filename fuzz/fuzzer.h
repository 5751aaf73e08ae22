#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace vantile::fuzz {

/// What a fuzzer does with one input. Each fuzzer defines it; the bytes end where the input ends,
/// so that AddressSanitizer sees a parser read on.
void consume(std::string_view input);

/// Ends the program, as a finding, where something that must hold does not.
void require(bool holds, const char* what);

// A second opinion on the parsers' common ground, written without any of their code.

/// The lines of `text` that end in a newline, without it.
std::vector<std::string_view> completeLines(std::string_view text);
std::vector<std::string_view> split(std::string_view text, char separator);
/// What stands in `text` between runs of spaces and tabs.
std::vector<std::string_view> fieldsOf(std::string_view text);
/// The number that `text` begins with behind blanks, where there is one and 64 bits hold it.
std::optional<std::uint64_t> numberIn(std::string_view text);

/// Whether `found` is what one of the lines that begin with `name` says; where there is no such
/// line, whether nothing was found.
bool isOnALine(std::optional<std::uint64_t> found, std::string_view name, std::string_view text);

/// `name` as the kernel writes it into a table: blanks, newlines and backslashes in octal.
std::string asKernelWrites(std::string_view name);

}  // namespace vantile::fuzz
