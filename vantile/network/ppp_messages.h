#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

namespace vantile {

/// What is asked of the PPP daemon, by its codes.
enum class PppCommand : std::uint16_t {
  status = 2,
  connect = 3,
  disconnect = 5,
  linkCount = 11,
  linkByServiceID = 13,
  linkByInterfaceName = 14,
};

constexpr std::uint32_t noPppLink = 0xFFFFFFFF;
constexpr std::uint32_t pppRunning = 8;  ///< the status of a link that is connected
constexpr std::size_t pppHeaderSize = 20;

/// A whole request: header and payload, numbers in the machine's byte order. Nothing where the
/// payload is longer than its length field can say.
std::optional<std::string> pppRequest(PppCommand command, std::uint32_t link,
                                      std::string_view payload = {});

/// What a reply's header says of the payload behind it.
struct PppReplyHeader {
  std::uint32_t result = 0;  ///< 0 for success
  std::uint32_t length = 0;  ///< bytes of the payload
};

/// Nothing where `bytes` are not exactly a header.
std::optional<PppReplyHeader> parsePppHeader(std::string_view bytes);

/// The one number that a payload of 4 bytes is; nothing for any other size.
std::optional<std::uint32_t> parsePppNumber(std::string_view payload);

struct PppStatus {
  std::uint32_t status = 0;
  std::uint32_t timeElapsed = 0, timeRemaining = 0;  ///< as the daemon counts
  std::uint32_t inBytes = 0, outBytes = 0;
};

/// The status record of 36 bytes; nothing for any other size.
std::optional<PppStatus> parsePppStatus(std::string_view payload);

}  // namespace vantile
