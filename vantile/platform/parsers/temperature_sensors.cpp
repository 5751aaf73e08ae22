#include "vantile/platform/parsers/temperature_sensors.h"

#include <algorithm>
#include <cstddef>

namespace vantile {
namespace {

/// A sensor of the processor as a whole: its chip, and its label there.
struct PackageSensor {
  std::string_view chip, label;
};

// The best one first. Tctl is what cooling goes by, on some models higher than the truth, which is
// Tdie; old kernels give k10temp's only temperature no label.
constexpr PackageSensor packageSensors[] = {
    {"coretemp", "Package id 0"}, {"k10temp", "Tdie"},  {"k10temp", "Tctl"}, {"k10temp", ""},
    {"zenpower", "Tdie"},         {"zenpower", "Tctl"}, {"zenpower", ""},    {"cpu_thermal", ""},
};

bool isProcessorZone(std::string_view type) {
  return type == "x86_pkg_temp" || (type.starts_with("cpu") && type.ends_with("thermal"));
}

const TemperatureSensor* packageSensor(const std::vector<TemperatureSensor>& sensors) {
  const auto find = [&sensors](auto matches) {
    const auto found = std::find_if(sensors.begin(), sensors.end(), matches);
    return found == sensors.end() ? nullptr : &*found;
  };
  for (const auto& package : packageSensors) {
    const auto* const sensor = find([&package](const TemperatureSensor& each) {
      return !each.isZone && each.chip == package.chip && each.label == package.label;
    });
    if (sensor) return sensor;
  }
  return find([](const auto& each) { return each.isZone && isProcessorZone(each.chip); });
}

}  // namespace

std::optional<std::uint32_t> keyOfLabel(std::string_view label) {
  if (label.size() != 4) return std::nullopt;
  std::uint32_t key = 0;
  for (const char each : label) key = key << 8 | static_cast<unsigned char>(each);
  return key;
}

const TemperatureSensor* sensorOfKey(std::uint32_t key,
                                     const std::vector<TemperatureSensor>& sensors) {
  for (const auto& sensor : sensors)
    if (!sensor.isZone && sensor.chip == "applesmc" && keyOfLabel(sensor.label) == key)
      return &sensor;
  return key == packed("TC0P") ? packageSensor(sensors) : nullptr;
}

std::optional<std::array<std::uint8_t, 2>> sp78OfMillidegrees(std::int64_t millidegrees) {
  if (millidegrees < 0 || millidegrees > 127'000) return std::nullopt;
  const auto sixtyFourths = (millidegrees * 64 + 500) / 1000;
  const auto raw = sixtyFourths * 4;  // the decoding drops the lowest two bits
  const auto low = raw & 0xff;
  const auto high = raw / 256 + (low >= 0x80 ? 1 : 0);
  return std::array{static_cast<std::uint8_t>(high), static_cast<std::uint8_t>(low)};
}

std::int32_t answerSmcCall(std::uint32_t index, const SMCRecord& in, SMCRecord& out,
                           const SmcKeys& keys) {
  if (index != smc::handleKey) return smc::unsupported;
  if (in.command != smc::readKeyInfo && in.command != smc::readBytes) return smc::badArgument;
  out = {};
  out.key = in.key;
  if (!keys.has(in.key)) return 0;  // a key that is not there is of size 0
  constexpr std::uint32_t size = 2;
  if (in.command == smc::readKeyInfo) {
    out.dataSize = size;
    out.dataType = packed("sp78");
    return 0;
  }
  const auto millidegrees = keys.millidegrees(in.key);
  const auto bytes = millidegrees ? sp78OfMillidegrees(*millidegrees) : std::nullopt;
  if (!bytes) return smc::notReadable;
  out.dataSize = size;
  std::copy(bytes->begin(), bytes->end(), out.bytes);
  return 0;
}

}  // namespace vantile
