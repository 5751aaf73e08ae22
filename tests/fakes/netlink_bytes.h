#pragma once

#include <cstddef>
#include <cstdint>
#include <cstring>
#include <string>
#include <string_view>

namespace vantile::testing {

/// Numbers, attributes and messages of netlink as bytes, put together without the library's code.
template <class Number>
std::string bytesOf(Number number) {
  std::string bytes(sizeof number, '\0');
  std::memcpy(bytes.data(), &number, sizeof number);
  return bytes;
}

inline std::string padded(std::string bytes) {
  bytes.resize((bytes.size() + 3) / 4 * 4, '\0');
  return bytes;
}

inline std::string attribute(std::uint16_t type, std::string_view value) {
  const auto size = static_cast<std::uint16_t>(4 + value.size());
  return padded(bytesOf(size) + bytesOf(type) + std::string(value));
}

inline std::string message(std::uint16_t type, std::string_view payload, std::uint16_t flags = 0,
                           std::uint32_t sequence = 0) {
  const auto size = static_cast<std::uint32_t>(16 + payload.size());
  return padded(bytesOf(size) + bytesOf(type) + bytesOf(flags) + bytesOf(sequence) +
                bytesOf(std::uint32_t{0}) + std::string(payload));
}

/// ifinfomsg and attributes, as RTM_NEWLINK has them.
inline std::string linkPayload(std::uint32_t index, std::string_view name, std::uint32_t flags,
                               std::uint16_t type = 1, std::string_view more = {}) {
  return bytesOf(std::uint16_t{0}) + bytesOf(type) + bytesOf(index) + bytesOf(flags) +
         bytesOf(std::uint32_t{0}) + attribute(3, std::string(name) + '\0') + std::string(more);
}

/// rtnl_link_stats64 with the two counters of bytes.
inline std::string counterBytes(std::uint64_t received, std::uint64_t sent) {
  return bytesOf(std::uint64_t{7}) + bytesOf(std::uint64_t{8}) + bytesOf(received) + bytesOf(sent) +
         std::string(168, '\0');
}

/// if_stats_msg and the counters of a link, as RTM_NEWSTATS has them.
inline std::string countersPayload(std::uint32_t index, std::uint64_t received,
                                   std::uint64_t sent) {
  return bytesOf(std::uint32_t{0}) + bytesOf(index) + bytesOf(std::uint32_t{1}) +
         attribute(1, counterBytes(received, sent));
}

/// ifaddrmsg and the address.
inline std::string addressPayload(std::uint32_t index, std::uint8_t prefixLength,
                                  std::string_view address) {
  const std::uint8_t family = address.size() == 4 ? 2 : 10;
  return bytesOf(family) + bytesOf(prefixLength) + bytesOf(std::uint16_t{0}) + bytesOf(index) +
         attribute(1, address);
}

/// What differs between routes: the rest of rtmsg is a usable one's in the main table.
struct RouteHeader {
  std::uint8_t family = 2, destinationBits = 0, table = 254, type = 1;
  std::uint32_t flags = 0;
};

inline std::string routePayload(const RouteHeader& header, std::string_view attributes) {
  const std::uint8_t none = 0;
  return bytesOf(header.family) + bytesOf(header.destinationBits) + bytesOf(none) + bytesOf(none) +
         bytesOf(header.table) + bytesOf(none) + bytesOf(none) + bytesOf(header.type) +
         bytesOf(header.flags) + std::string(attributes);
}

/// A default route over a link.
inline std::string defaultRoutePayload(std::uint32_t link, std::uint32_t metric,
                                       std::string_view gateway, std::uint32_t flags = 0) {
  RouteHeader header;
  header.family = gateway.size() == 16 ? 10 : 2;
  header.flags = flags;
  return routePayload(header, (gateway.empty() ? std::string() : attribute(5, gateway)) +
                                  attribute(6, bytesOf(metric)) + attribute(4, bytesOf(link)));
}

inline std::string endOfList(std::uint32_t sequence, std::int32_t error = 0,
                             std::uint16_t flags = 0) {
  return message(3, bytesOf(error), flags, sequence);
}

}  // namespace vantile::testing
