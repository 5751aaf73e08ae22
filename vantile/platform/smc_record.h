#pragma once

#include <cstddef>
#include <cstdint>

extern "C" {

/// What is sent to the System Management Controller's kernel service, and what comes back from it.
/// Numbers in the host's order; reserved bytes are 0 in requests and are not read.
struct SMCRecord {
  std::uint32_t key;  ///< four characters, the first one highest
  std::uint8_t reserved1[24];
  std::uint32_t dataSize;  ///< bytes: of the key's value in a response, wanted in a request to read
  std::uint32_t dataType;  ///< four characters, the first one highest
  std::uint8_t reserved2[6];
  std::uint8_t command;  ///< one of the commands below
  std::uint8_t reserved3[5];
  std::uint8_t bytes[32];  ///< the value, most significant byte first
};

}  // extern "C"

static_assert(sizeof(SMCRecord) == 80);
static_assert(offsetof(SMCRecord, key) == 0 && offsetof(SMCRecord, reserved1) == 4);
static_assert(offsetof(SMCRecord, dataSize) == 28 && offsetof(SMCRecord, dataType) == 32);
static_assert(offsetof(SMCRecord, reserved2) == 36 && offsetof(SMCRecord, command) == 42);
static_assert(offsetof(SMCRecord, reserved3) == 43 && offsetof(SMCRecord, bytes) == 48);

namespace vantile::smc {

inline constexpr std::uint32_t handleKey = 2;   ///< the method that takes and gives records
inline constexpr std::uint8_t readBytes = 5;    ///< command: the value of a key
inline constexpr std::uint8_t readKeyInfo = 9;  ///< command: its size and type

// Results of the service, as IOKit numbers them.
inline constexpr auto badArgument = static_cast<std::int32_t>(0xe00002c2);
inline constexpr auto unsupported = static_cast<std::int32_t>(0xe00002c7);
inline constexpr auto notOpen = static_cast<std::int32_t>(0xe00002cd);
inline constexpr auto notReadable = static_cast<std::int32_t>(0xe00002ce);

}  // namespace vantile::smc
