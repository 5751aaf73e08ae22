#pragma once

#include <array>
#include <cstdint>
#include <functional>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "vantile/platform/smc_record.h"

namespace vantile {

/// A file that tells a temperature in thousandths of a degree Celsius, and what it is of.
struct TemperatureSensor {
  std::string chip;   ///< the hwmon device's name, or the type of a thermal zone
  std::string label;  ///< of this one of the chip's temperatures; empty where it has none
  std::string file;
  bool isZone = false;  ///< a thermal zone rather than a hwmon device
};

/// The sensor that answers for the controller's `key`: applesmc's own of that name; for "TC0P" else
/// the processor's package, by hwmon before a thermal zone. Null where there is none.
const TemperatureSensor* sensorOfKey(std::uint32_t key,
                                     const std::vector<TemperatureSensor>& sensors);

/// Four characters as a key or a type is packed, the first one highest.
constexpr std::uint32_t packed(const char (&text)[5]) {
  std::uint32_t code = 0;
  for (int i = 0; i < 4; ++i) code = code << 8 | static_cast<unsigned char>(text[i]);
  return code;
}

/// The key of a label that is four characters long; nothing for another one.
std::optional<std::uint32_t> keyOfLabel(std::string_view label);

/// Two bytes of type "sp78" that come out within 1/64 degree of `millidegrees` when both are read
/// as signed bytes, as `SMCGetTemperature` does: a low byte of 0x80 or more takes 256 away, which
/// the high byte makes up for. Nothing outside of 0 to 127 degrees.
std::optional<std::array<std::uint8_t, 2>> sp78OfMillidegrees(std::int64_t millidegrees);

/// What the machine has in place of the controller's keys.
struct SmcKeys {
  std::function<bool(std::uint32_t key)> has;
  std::function<std::optional<std::int64_t>(std::uint32_t key)> millidegrees;
};

/// Answers a call of method `index` as the controller's service would, which is its result. Every
/// key is a temperature.
std::int32_t answerSmcCall(std::uint32_t index, const SMCRecord& in, SMCRecord& out,
                           const SmcKeys& keys);

}  // namespace vantile
