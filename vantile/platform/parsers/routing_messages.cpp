#include "vantile/platform/parsers/routing_messages.h"

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <optional>

namespace vantile {
namespace {

// Of every message, `struct if_msghdr`, and `struct sockaddr_dl` behind it.
constexpr std::size_t lengthAt = 0, typeAt = 3, flagsAt = 8, indexAt = 12;
constexpr std::size_t receivedAt = 56, sentAt = 60;  // ifi_ibytes, ifi_obytes
constexpr std::size_t addressAt = 112;
constexpr std::size_t familyAt = addressAt + 1, nameLengthAt = addressAt + 5;
constexpr std::size_t nameAt = addressAt + 8;
constexpr std::size_t shortestMessage = 4;  // length, version and type

constexpr std::uint8_t interfaceInformation = 14;  // RTM_IFINFO
constexpr std::uint8_t linkFamily = 18;            // AF_LINK
constexpr std::uint32_t upFlag = 0x1, loopbackFlag = 0x8;

template <class Number>
Number numberAt(std::string_view message, std::size_t position) {
  Number number;
  std::memcpy(&number, message.data() + position, sizeof number);
  return number;
}

/// The name, or nothing where it is none in ASCII or reaches beyond the message.
std::optional<std::string_view> nameIn(std::string_view message) {
  const auto length = numberAt<std::uint8_t>(message, nameLengthAt);
  if (length == 0 || message.size() - nameAt < length) return std::nullopt;
  const auto name = message.substr(nameAt, length);
  const auto isAscii = [](char byte) {
    return byte != 0 && static_cast<unsigned char>(byte) < 0x80;
  };
  if (!std::all_of(name.begin(), name.end(), isAscii)) return std::nullopt;
  return name;
}

void takeInterface(std::string_view message, InterfaceReadings& into) {
  if (message.size() < nameAt) return;
  if (numberAt<std::uint8_t>(message, typeAt) != interfaceInformation) return;
  if (numberAt<std::uint8_t>(message, familyAt) != linkFamily) return;
  const auto name = nameIn(message);
  if (!name) return;
  if (into.count == into.readings.size()) into.readings.emplace_back();
  InterfaceReading& reading = into.readings[into.count++];
  const auto flags = numberAt<std::uint32_t>(message, flagsAt);
  reading.name.assign(*name);
  reading.index = numberAt<std::uint16_t>(message, indexAt);
  reading.loopback = (flags & loopbackFlag) != 0;
  reading.up = (flags & upFlag) != 0;
  reading.received = numberAt<std::uint32_t>(message, receivedAt);
  reading.sent = numberAt<std::uint32_t>(message, sentAt);
}

}  // namespace

void parseRoutingMessages(std::string_view messages, InterfaceReadings& into) {
  into.count = 0;
  into.width = CounterWidth::bits32;
  while (messages.size() >= shortestMessage) {
    const std::size_t length = numberAt<std::uint16_t>(messages, lengthAt);
    if (length < shortestMessage || length > messages.size()) return;
    takeInterface(messages.substr(0, length), into);
    messages.remove_prefix(length);
  }
}

}  // namespace vantile
