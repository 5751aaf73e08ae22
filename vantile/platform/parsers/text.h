#pragma once

#include <charconv>
#include <concepts>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <system_error>
#include <vector>

namespace vantile {

/// The unsigned decimal number that `text` begins with after spaces and tabs; nothing where there
/// is none or it does not fit.
std::optional<std::uint64_t> leadingNumber(std::string_view text);

/// The number that all of `text` is in decimal; nothing where that is more or other, or does not
/// fit.
template <std::integral Number>
std::optional<Number> wholeNumber(std::string_view text) {
  Number number = 0;
  const char* const end = text.data() + text.size();
  const auto parsed = std::from_chars(text.data(), end, number);
  return parsed.ec == std::errc() && parsed.ptr == end ? std::optional(number) : std::nullopt;
}

/// The byte in lower case where it is a capital letter of ASCII.
constexpr char asciiLowered(char byte) {
  return byte >= 'A' && byte <= 'Z' ? static_cast<char>(byte - 'A' + 'a') : byte;
}

/// What stands behind the path's last slash.
constexpr std::string_view lastComponent(std::string_view path) {
  return path.substr(path.rfind('/') + 1);  // npos + 1 is 0
}

/// The words of `line` between runs of spaces and tabs.
std::vector<std::string_view> words(std::string_view line);

/// Takes the first line off `text`, without its newline. A last line need not end in one.
std::string_view takeLine(std::string_view& text);

/// `text` with the kernel's octal escapes (`\040` and the like) resolved. Any other backslash
/// stays.
std::string withoutOctalEscapes(std::string_view text);

/// `text` with udev's escapes of two hexadecimal digits (`\x20` and the like) resolved. Any other
/// backslash stays.
std::string withoutHexEscapes(std::string_view text);

/// Reads numbers out of a text of lines that each begin with a name. Ask in the order of the text:
/// each look-up goes on from where the last one ended, and only then from the top.
/// A line without its newline was cut off, and so may be its number: it is not there.
class NamedNumbers {
 public:
  explicit NamedNumbers(std::string_view text) : text_(text) {}

  /// The number on the line that begins with `name`, which includes what separates the two, such
  /// as "MemTotal:" or "pgpgin ".
  std::optional<std::uint64_t> find(std::string_view name);

  /// Where the line that was found last ends, with its newline; 0 before one was.
  std::size_t position() const { return next_; }

 private:
  std::optional<std::size_t> lineOf(std::string_view name, std::size_t from, std::size_t to) const;

  std::string_view text_;
  std::size_t next_ = 0;
};

}  // namespace vantile
