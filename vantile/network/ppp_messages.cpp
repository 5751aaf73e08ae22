#include "vantile/network/ppp_messages.h"

#include <array>
#include <cstring>
#include <limits>

namespace vantile {
namespace {

struct Header {
  std::uint16_t flags = 0, type = 0;
  std::uint32_t result = 0, cookie = 0, link = 0, length = 0;
};
static_assert(sizeof(Header) == pppHeaderSize);

/// The record that the bytes are; nothing where their size is another.
template <class Record>
std::optional<Record> recordIn(std::string_view bytes) {
  Record record;
  if (bytes.size() != sizeof record) return std::nullopt;
  std::memcpy(&record, bytes.data(), sizeof record);
  return record;
}

}  // namespace

std::optional<std::string> pppRequest(PppCommand command, std::uint32_t link,
                                      std::string_view payload) {
  if (payload.size() > std::numeric_limits<std::uint32_t>::max()) return std::nullopt;
  Header header;
  header.type = static_cast<std::uint16_t>(command);
  header.link = link;
  header.length = static_cast<std::uint32_t>(payload.size());
  std::string bytes(sizeof header, '\0');
  std::memcpy(bytes.data(), &header, sizeof header);
  return bytes.append(payload);
}

std::optional<PppReplyHeader> parsePppHeader(std::string_view bytes) {
  const auto header = recordIn<Header>(bytes);
  if (!header) return std::nullopt;
  return PppReplyHeader{.result = header->result, .length = header->length};
}

std::optional<std::uint32_t> parsePppNumber(std::string_view payload) {
  return recordIn<std::uint32_t>(payload);
}

std::optional<PppStatus> parsePppStatus(std::string_view payload) {
  const auto words = recordIn<std::array<std::uint32_t, 9>>(payload);
  if (!words) return std::nullopt;
  return PppStatus{.status = (*words)[0],
                   .timeElapsed = (*words)[1],
                   .timeRemaining = (*words)[2],
                   .inBytes = (*words)[3],
                   .outBytes = (*words)[6]};
}

}  // namespace vantile
