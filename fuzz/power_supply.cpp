#include "vantile/platform/parsers/power_supply.h"

#include <cmath>

#include "vantile/platform/time_remaining.h"

#include "fuzz/fuzzer.h"

namespace vantile::fuzz {
namespace {

/// Supplies of lines such as "charge_now:4000000", with blank lines between them.
std::vector<PowerSupply> suppliesIn(std::string_view input) {
  std::vector<PowerSupply> supplies(1);
  for (const auto line : split(input, '\n')) {
    if (line.empty()) {
      supplies.emplace_back();
      continue;
    }
    const auto colon = line.find(':');
    if (colon == line.npos) continue;
    takeSupplyFile(supplies.back(), line.substr(0, colon), line.substr(colon + 1));
  }
  return supplies;
}

void checkNumbers(const PowerSupply& supply) {
  const auto isWithin = [](PowerSupply::Number number, std::int64_t least, std::int64_t most) {
    return !number || (*number >= least && *number <= most);
  };
  constexpr std::int64_t most = 1'000'000'000;
  require(isWithin(supply.chargeNow, 0, most) && isWithin(supply.energyNow, 0, most) &&
              isWithin(supply.chargeFull, 1, most) && isWithin(supply.energyFull, 1, most) &&
              isWithin(supply.voltageNow, 100'000, most) &&
              isWithin(supply.currentNow, -most, most) && isWithin(supply.powerNow, -most, most) &&
              isWithin(supply.percent, 0, 100) && isWithin(supply.cycles, 1, most),
          "figures are such as batteries have");
}

void checkBattery(const PowerSupply& battery, std::optional<bool> external) {
  const auto keys = descriptionOf(battery, external);
  const auto now = keys.int64("Current Capacity"), full = keys.int64("Max Capacity");
  require(now.has_value() == full.has_value(), "both capacities or none");
  require(!now || (*now >= 0 && *now <= *full), "no more than when it is full");
  const auto* const health = keys.text("BatteryHealth");
  require(!health || *health == "Good" || *health == "Fair" || *health == "Poor",
          "one of three states of health");
  const auto minutes = keys.int64("Time to Full Charge");
  require(!minutes || (*minutes > 0 && *minutes <= 10 * 24 * 60), "at most ten days");
  require(!minutes || keys.boolean("Is Charging") == true, "a time to full is of one that charges");
  const auto amperage = batteryRecordOf(battery).int64("Amperage");
  require(!amperage || battery.status != PowerSupply::Status::discharging || *amperage <= 0,
          "one that runs out gives");
  require(batteryEntryOf(battery).int64("Amperage") == amperage, "both tell the same current");
}

}  // namespace

void consume(std::string_view input) {
  const auto supplies = suppliesIn(input);
  std::vector<PowerSupply> mains, batteries;
  for (const auto& supply : supplies) {
    checkNumbers(supply);
    (supply.kind == PowerSupply::Kind::mains ? mains : batteries).push_back(supply);
  }
  const auto external = onExternalPower(mains, batteries);
  for (const auto& battery : batteries) checkBattery(battery, external);
  const double seconds = timeRemainingOf(batteries, external);
  require(seconds == TimeRemaining::unknown || seconds == TimeRemaining::unlimited ||
              (seconds >= 0 && seconds <= 10 * 24 * 3600),
          "an estimate of at most ten days");
  require(external != true || seconds == TimeRemaining::unlimited, "unlimited on external power");
}

}  // namespace vantile::fuzz
