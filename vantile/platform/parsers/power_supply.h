#pragma once

#include <cstdint>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "vantile/foundation/value.h"

namespace vantile {

/// What the kernel tells of one power supply, in its units: micro-ampere-hours, -watt-hours, -volts
/// and so on. What it does not tell, or what no such device can mean, is absent.
struct PowerSupply {
  enum class Kind { other, battery, mains };
  enum class Status { charging, discharging, notCharging, full };

  std::string name;
  Kind kind = Kind::other;      ///< from `type`; every kind of charger is mains
  bool isDevices = false;       ///< it supplies a mouse, say, not the machine
  std::optional<bool> present;  ///< of a battery
  std::optional<bool> online;   ///< of mains
  std::optional<Status> status;

  using Number = std::optional<std::int64_t>;
  Number chargeNow, chargeFull, chargeFullDesign;
  Number energyNow, energyFull, energyFullDesign;
  Number voltageNow, voltageDesign;
  Number currentNow, powerNow;  ///< of whatever sign: drivers differ
  Number percent;               ///< `capacity`
  Number cycles;
  Number tenthsOfDegree;           ///< Celsius
  Number timeToFull, timeToEmpty;  ///< seconds
};

/// What a supply is asked for.
enum class SupplyUse : unsigned {
  kind = 1,         ///< whether it counts at all, and as what
  description = 2,  ///< a power source
  estimate = 4,     ///< the time left
  record = 8,       ///< the electrical readings
  entry = 16,       ///< the registry's
  mains = 32,       ///< whether the machine is on external power
};

/// The files of a supply to read for that.
std::vector<std::string_view> supplyFiles(SupplyUse use);

/// Takes up what the supply's file `name` holds, without its newline.
void takeSupplyFile(PowerSupply& supply, std::string_view name, std::string_view text);

/// Whether the battery is in its bay; one that does not tell is.
bool isPresent(const PowerSupply& battery);

/// Whether the machine is on external power: any charger is online; where no charger tells, what
/// the batteries do. Nothing where that tells nothing either.
std::optional<bool> onExternalPower(std::span<const PowerSupply> mains,
                                    std::span<const PowerSupply> batteries);

/// The battery under the keys of a power source, a battery record and a registry entry.
Dictionary descriptionOf(const PowerSupply& battery, std::optional<bool> externalPower);
Dictionary batteryRecordOf(const PowerSupply& battery);
Dictionary batteryEntryOf(const PowerSupply& battery);

/// Seconds that the batteries last together, -1 while that is not known, -2 on external power.
double timeRemainingOf(std::span<const PowerSupply> batteries, std::optional<bool> externalPower);

}  // namespace vantile
