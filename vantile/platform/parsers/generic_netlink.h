#pragma once

#include <cstdint>
#include <optional>
#include <string_view>

namespace vantile {

// The payloads of generic netlink's messages: its own controller's, ethtool's and nl80211's.

/// The number by which messages of a family are sent, from the controller's answer about it.
std::optional<std::uint16_t> parseFamilyNumber(std::string_view payload);

/// The speed of a link in bits per second, from ethtool's answer about link modes; nothing where it
/// says that it is unknown.
std::optional<std::uint64_t> parseLinkSpeed(std::string_view payload);

/// The interface that a message of nl80211 is about.
std::optional<std::uint32_t> parseWirelessInterface(std::string_view payload);

/// At how many bits per second is sent to a station, from nl80211's answer about it.
std::optional<std::uint64_t> parseStationRate(std::string_view payload);

/// What the kernel's file "speed" of an interface says, in bits per second: a number of megabits,
/// where it is known.
std::optional<std::uint64_t> parseSpeedText(std::string_view text);

}  // namespace vantile
