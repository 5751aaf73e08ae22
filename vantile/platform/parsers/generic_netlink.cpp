#include "vantile/platform/parsers/generic_netlink.h"

#include "vantile/platform/parsers/netlink.h"
#include "vantile/platform/parsers/text.h"

namespace vantile {
namespace {

constexpr std::size_t header = 4;
constexpr std::uint16_t familyNumber = 1;
constexpr std::uint16_t linkModesSpeed = 5;
constexpr std::uint16_t wirelessInterface = 3, stationInformation = 21, sendingRate = 8,
                        rateIn16Bits = 1, rateIn32Bits = 5;
constexpr std::uint64_t megabit = 1000000, rateUnit = 100000;

std::optional<NetlinkAttribute> attributeOf(NetlinkAttributes attributes, std::uint16_t type) {
  while (const auto attribute = attributes.next())
    if (attribute->type == type) return attribute;
  return std::nullopt;
}

/// Drivers say 0 or all ones for what they do not know.
std::optional<std::uint64_t> bitsPerSecond(std::uint64_t megabits) {
  const bool known = megabits != 0 && megabits < 0xffffffff;
  return known ? std::optional(megabits * megabit) : std::nullopt;
}

}  // namespace

std::optional<std::uint16_t> parseFamilyNumber(std::string_view payload) {
  const auto number = attributeOf(NetlinkAttributes(payload, header), familyNumber);
  return number ? number->uint16() : std::nullopt;
}

std::optional<std::uint64_t> parseLinkSpeed(std::string_view payload) {
  const auto attribute = attributeOf(NetlinkAttributes(payload, header), linkModesSpeed);
  const auto speed = attribute ? attribute->uint32() : std::nullopt;
  return speed ? bitsPerSecond(*speed) : std::nullopt;
}

std::optional<std::uint32_t> parseWirelessInterface(std::string_view payload) {
  const auto index = attributeOf(NetlinkAttributes(payload, header), wirelessInterface);
  return index ? index->uint32() : std::nullopt;
}

std::optional<std::uint64_t> parseStationRate(std::string_view payload) {
  const auto station = attributeOf(NetlinkAttributes(payload, header), stationInformation);
  if (!station) return std::nullopt;
  const auto sending = attributeOf(NetlinkAttributes(station->value), sendingRate);
  if (!sending) return std::nullopt;
  // The older, narrow one is left out where it would not hold the rate.
  const auto wide = attributeOf(NetlinkAttributes(sending->value), rateIn32Bits);
  const auto narrow = attributeOf(NetlinkAttributes(sending->value), rateIn16Bits);
  std::uint64_t rate = 0;
  if (wide)
    rate = wide->uint32().value_or(0);
  else if (narrow)
    rate = narrow->uint16().value_or(0);
  return rate > 0 ? std::optional(rate * rateUnit) : std::nullopt;
}

std::optional<std::uint64_t> parseSpeedText(std::string_view text) {
  const auto megabits = leadingNumber(text);
  return megabits ? bitsPerSecond(*megabits) : std::nullopt;
}

}  // namespace vantile
