#pragma once

#include <cstdint>
#include <cstring>
#include <string>
#include <string_view>

namespace vantile::testing {

template <class Number>
void putNumber(std::string& bytes, std::size_t position, Number number) {
  std::memcpy(bytes.data() + position, &number, sizeof number);
}

/// An interface as macOS's kernel tells of it.
struct RoutedInterface {
  std::string name;
  std::uint32_t received = 0, sent = 0;
  std::uint32_t flags = 1;  // up
  std::uint16_t index = 1;
  std::uint8_t type = 14, family = 18;
};

/// Its routing message: the header of 112 bytes and a link-level address, which is 20 bytes long or
/// what a long name makes it, up to a multiple of four.
inline std::string routingMessage(const RoutedInterface& interface) {
  const auto& name = interface.name;
  const auto address = name.size() <= 12 ? 20 : (8 + name.size() + 3) / 4 * 4;
  std::string bytes(112 + address, '\0');
  putNumber(bytes, 0, static_cast<std::uint16_t>(bytes.size()));
  putNumber(bytes, 2, std::uint8_t{5});  // the version
  putNumber(bytes, 3, interface.type);
  putNumber(bytes, 8, interface.flags);
  putNumber(bytes, 12, interface.index);
  putNumber(bytes, 56, interface.received);
  putNumber(bytes, 60, interface.sent);
  putNumber(bytes, 112, static_cast<std::uint8_t>(address));
  putNumber(bytes, 113, interface.family);
  putNumber(bytes, 117, static_cast<std::uint8_t>(name.size()));
  bytes.replace(120, name.size(), name);
  return bytes;
}

}  // namespace vantile::testing
