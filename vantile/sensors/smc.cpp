#include "vantile/sensors/smc.h"

#include <algorithm>
#include <atomic>
#include <cstdio>
#include <string_view>

#include "vantile/foundation/guard.h"
#include "vantile/sensors/sensors_ports.h"

namespace vantile {
namespace {

// The process's connection.
std::atomic<std::uint32_t> conn = 0;

SmcService& service() {
  return *SensorsPorts::installed().smc;
}

/// Prints an error line with the C library, whose output the host's own takes its turns with.
int failed(const char* line) {
  std::fputs(line, stdout);
  std::fflush(stdout);
  return 1;
}
int failed(const char* call, std::int32_t result) {
  std::printf("Error: %s() = %08x\n", call, static_cast<std::uint32_t>(result));
  std::fflush(stdout);
  return 1;
}

std::int32_t call(std::uint32_t index, const SMCRecord& in, SMCRecord& out) {
  std::int32_t result = smc::badArgument;
  guarded("a call of the SMC", [&] {
    std::size_t size = sizeof out;
    result = service().call(conn, index, in, out, size);
  });
  return result;
}

/// 16-bit fixed point with 8 fractional bits, of which the upper six count. Both bytes are signed.
double degrees(const std::uint8_t* bytes) {
  const std::int32_t raw =
      static_cast<std::int8_t>(bytes[0]) * 256 + static_cast<std::int8_t>(bytes[1]);
  return static_cast<double>(raw >> 2) * 0.015625;
}

}  // namespace
}  // namespace vantile

using namespace vantile;

int SMCOpen() noexcept {
  int result = 1;
  SmcOpening opening;  // none, should it fail in another way
  guarded("opening the SMC", [&opening] { opening = service().open(); });
  guarded("opening the SMC", [&] {
    if (opening.matching != 0) {
      failed("IOServiceGetMatchingServices", opening.matching);
    } else if (!opening.found) {
      failed("Error: no SMC found\n");
    } else if (opening.opened != 0) {
      failed("IOServiceOpen", opening.opened);
    } else {
      conn = opening.connection;
      result = 0;
    }
  });
  return result;
}

std::int32_t SMCClose() noexcept {
  std::int32_t result = smc::badArgument;
  guarded("closing the SMC", [&result] { result = service().close(conn); });
  return result;
}

std::int32_t SMCCall(std::uint32_t index, const SMCRecord* in, SMCRecord* out) noexcept {
  return in && out ? call(index, *in, *out) : smc::badArgument;
}

std::int32_t SMCReadKey(const char* key, SMCValue* value) noexcept {
  if (!value) return smc::badArgument;
  SMCRecord in = {}, out = {};
  *value = {};
  in.key = _strtoul(key, 4, 16);
  in.command = smc::readKeyInfo;
  if (const auto result = SMCCall(smc::handleKey, &in, &out); result != 0) return result;

  value->dataSize = out.dataSize;
  _ultostr(value->dataType, out.dataType);
  in.dataSize = value->dataSize;
  in.command = smc::readBytes;
  if (const auto result = SMCCall(smc::handleKey, &in, &out); result != 0) return result;

  std::copy(std::begin(out.bytes), std::end(out.bytes), value->bytes);
  return 0;
}

double SMCGetTemperature(const char* key) noexcept {
  SMCValue value;
  if (SMCReadKey(key, &value) != 0 || value.dataSize == 0) return 0;
  return std::string_view(value.dataType) == "sp78" ? degrees(value.bytes) : 0;
}

std::uint32_t _strtoul(const char* text, std::int32_t size, std::int32_t base) noexcept {
  std::uint32_t total = 0;
  for (std::int64_t i = 0; text && i < size && text[i] != '\0'; ++i) {
    const std::int64_t shift = 8 * (std::int64_t{size} - 1 - i);
    if (shift >= 32) continue;  // beyond what the number holds
    const auto byte = static_cast<std::uint32_t>(static_cast<std::int8_t>(text[i]));
    const auto shifted = byte << shift;
    total += base == 16 ? shifted : shifted & 0xff;
  }
  return total;
}

void _ultostr(char* text, std::uint32_t value) noexcept {
  if (!text) return;
  for (int byte = 0; byte < 4; ++byte) text[byte] = static_cast<char>(value >> (24 - 8 * byte));
  text[4] = '\0';
}
