#pragma once

#include <cstdint>
#include <string>
#include <string_view>

namespace vantile {

/// An address of 4 or 16 bytes as people write it, "192.168.1.7", "fe80::1", the way that
/// inet_ntop(3) does; empty for any other size.
std::string ipAddressText(std::string_view bytes);

/// The mask of a network whose addresses share `prefixLength` bits, "255.255.255.0". More than 32
/// bits count as 32.
std::string ipv4MaskText(std::uint8_t prefixLength);

/// An address of hardware without separators, "525400a1b2c3".
std::string hexadecimal(std::string_view bytes);

}  // namespace vantile
