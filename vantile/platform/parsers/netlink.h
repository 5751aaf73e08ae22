#pragma once

#include <cstddef>
#include <cstdint>
#include <cstring>
#include <optional>
#include <string>
#include <string_view>
#include <type_traits>

namespace vantile {

/// The number that stands at `offset` of `bytes` in the machine's order, as netlink has all its
/// numbers; nothing where it does not fit.
template <class Number>
std::optional<Number> numberAt(std::string_view bytes, std::size_t offset) {
  static_assert(std::is_unsigned_v<Number>);
  if (offset > bytes.size() || bytes.size() - offset < sizeof(Number)) return std::nullopt;
  Number number;
  std::memcpy(&number, bytes.data() + offset, sizeof number);
  return number;
}

/// A message of netlink. Refers to the bytes that it was found in.
struct NetlinkMessage {
  std::uint16_t type = 0, flags = 0;
  std::uint32_t sequence = 0;
  std::string_view payload;

  static constexpr std::uint16_t failure = 2, done = 3, overrun = 4;  ///< types of all families
  static constexpr std::uint16_t interrupted = 0x10;  ///< flag: what was listed changed meanwhile

  /// The error number that a failure, or the end of a list, carries, as a positive number; 0 for
  /// an acknowledgement, and for a list that is whole.
  std::uint32_t error() const;
};

/// Walks the messages of one datagram. A message whose length is beyond the datagram, or less than
/// a header, ends the walk.
class NetlinkMessages {
 public:
  explicit NetlinkMessages(std::string_view datagram) : rest_(datagram) {}
  std::optional<NetlinkMessage> next();

 private:
  std::string_view rest_;
};

/// An attribute of a message. Refers to the bytes that it was found in.
struct NetlinkAttribute {
  std::uint16_t type = 0;  ///< without the marks for nesting and byte order
  std::string_view value;

  std::optional<std::uint8_t> uint8() const { return numberAt<std::uint8_t>(value, 0); }
  std::optional<std::uint16_t> uint16() const { return numberAt<std::uint16_t>(value, 0); }
  std::optional<std::uint32_t> uint32() const { return numberAt<std::uint32_t>(value, 0); }
  /// Up to the terminating zero, where there is one.
  std::string_view text() const { return value.substr(0, value.find('\0')); }
};

/// Walks attributes, ending like `NetlinkMessages`.
class NetlinkAttributes {
 public:
  /// Those that follow a header of `header` bytes.
  explicit NetlinkAttributes(std::string_view bytes, std::size_t header = 0);
  std::optional<NetlinkAttribute> next();

 private:
  std::string_view rest_;
};

}  // namespace vantile
