#include "vantile/platform/parsers/temperature_sensors.h"

#include <algorithm>
#include <cmath>
#include <cstring>

#include "fuzz/fuzzer.h"

namespace vantile::fuzz {
namespace {

void checkReading(std::int64_t millidegrees) {
  const auto bytes = sp78OfMillidegrees(millidegrees);
  require(bytes.has_value() == (millidegrees >= 0 && millidegrees <= 127'000), "0 to 127 degrees");
  if (!bytes) return;
  const int raw =
      static_cast<signed char>((*bytes)[0]) * 256 + static_cast<signed char>((*bytes)[1]);
  const double degrees = (raw >> 2) * 0.015625;
  require(std::abs(degrees - static_cast<double>(millidegrees) / 1000) <= 1.0 / 64,
          "within a 64th of a degree");
}

void checkCall(std::string_view input) {
  SMCRecord in = {}, out = {};
  std::memcpy(&in, input.data(), std::min(input.size(), sizeof in));
  const auto result =
      answerSmcCall(static_cast<std::uint32_t>(input.size() % 4), in, out,
                    {.has = [](std::uint32_t key) { return key % 2 == 0; },
                     .millidegrees = [](std::uint32_t key) -> std::optional<std::int64_t> {
                       return std::int64_t{key} - 1000;
                     }});
  require(result != 0 || out.key == in.key, "an answer is of its key");
}

void checkChoice(std::string_view input) {
  std::vector<TemperatureSensor> sensors;
  for (const auto line : split(input, '\n')) {
    const auto parts = split(line, '\t');
    sensors.push_back({.chip = std::string(parts[0]),
                       .label = std::string(parts.size() > 1 ? parts[1] : ""),
                       .file = {},
                       .isZone = parts.size() > 2});
  }
  const auto* const sensor = sensorOfKey(packed("TC0P"), sensors);
  require(!sensor || (sensor >= sensors.data() && sensor < sensors.data() + sensors.size()),
          "one of the sensors");
  require(!sensorOfKey(packed("none"), sensors) ||
              sensorOfKey(packed("none"), sensors)->label == "none",
          "another key is applesmc's own");
}

}  // namespace

void consume(std::string_view input) {
  checkReading(static_cast<std::int64_t>(numberIn(input).value_or(0)));
  checkReading(-static_cast<std::int64_t>(numberIn(input).value_or(0) >> 1));
  checkCall(input);
  checkChoice(input);
}

}  // namespace vantile::fuzz
