#include "vantile/platform/parsers/netlink.h"

#include <algorithm>

namespace vantile {
namespace {

constexpr std::size_t messageHeader = 16, attributeHeader = 4;
constexpr std::uint16_t attributeType = 0x3fff;

std::size_t aligned(std::size_t size) {
  return (size + 3) & ~std::size_t{3};
}

/// Takes the first `size` bytes off, and what fills them up to a multiple of four.
std::string_view take(std::string_view& rest, std::size_t size) {
  const auto taken = rest.substr(0, size);
  rest.remove_prefix(std::min(aligned(size), rest.size()));
  return taken;
}

}  // namespace

std::uint32_t NetlinkMessage::error() const {
  // A negative number in two's complement; anything else is none that the kernel gives.
  const auto number = numberAt<std::uint32_t>(payload, 0).value_or(0);
  return number > 0x80000000u ? 0u - number : 0u;
}

std::optional<NetlinkMessage> NetlinkMessages::next() {
  const auto size = numberAt<std::uint32_t>(rest_, 0);
  if (!size || *size < messageHeader || *size > rest_.size()) return std::nullopt;
  const auto bytes = take(rest_, *size);
  NetlinkMessage message;
  message.type = numberAt<std::uint16_t>(bytes, 4).value_or(0);
  message.flags = numberAt<std::uint16_t>(bytes, 6).value_or(0);
  message.sequence = numberAt<std::uint32_t>(bytes, 8).value_or(0);
  message.payload = bytes.substr(messageHeader);
  return message;
}

NetlinkAttributes::NetlinkAttributes(std::string_view bytes, std::size_t header)
    : rest_(bytes.substr(std::min(aligned(header), bytes.size()))) {}

std::optional<NetlinkAttribute> NetlinkAttributes::next() {
  const auto size = numberAt<std::uint16_t>(rest_, 0);
  if (!size || *size < attributeHeader || *size > rest_.size()) return std::nullopt;
  const auto bytes = take(rest_, *size);
  const auto type = numberAt<std::uint16_t>(bytes, 2).value_or(0);
  return NetlinkAttribute{static_cast<std::uint16_t>(type & attributeType),
                          bytes.substr(attributeHeader)};
}

}  // namespace vantile
