#pragma once

#include <array>
#include <cstdint>
#include <cstring>
#include <string>
#include <string_view>

namespace vantile::testing {

inline std::string bytesOf(std::uint32_t number) {
  std::string bytes(sizeof number, '\0');
  std::memcpy(bytes.data(), &number, sizeof number);
  return bytes;
}

/// A header of the PPP daemon's, request or reply.
inline std::string pppHeader(std::uint16_t type, std::uint32_t result, std::uint32_t link,
                             std::uint32_t length) {
  std::string bytes(4, '\0');  // flags and type
  std::memcpy(bytes.data() + 2, &type, sizeof type);
  return bytes + bytesOf(result) + bytesOf(0) + bytesOf(link) + bytesOf(length);
}

inline std::string pppReply(std::string_view payload, std::uint32_t result = 0) {
  const auto length = static_cast<std::uint32_t>(payload.size());
  return pppHeader(0, result, 0xFFFFFFFF, length).append(payload);
}

inline std::string numberReply(std::uint32_t number) {
  return pppReply(bytesOf(number));
}

/// A status record: its words, those not used among them.
inline std::string statusRecord(std::uint32_t status, std::uint32_t received = 0,
                                std::uint32_t sent = 0) {
  const std::array<std::uint32_t, 9> words = {status, 70, 80, received, 1, 2, sent, 3, 4};
  std::string bytes;
  for (const auto word : words) bytes += bytesOf(word);
  return bytes;
}

/// The replies to a whole status query: the link's reference, then its status.
inline std::string statusReplies(std::uint32_t status, std::uint32_t received = 0,
                                 std::uint32_t sent = 0) {
  return numberReply(5) + pppReply(statusRecord(status, received, sent));
}

}  // namespace vantile::testing
