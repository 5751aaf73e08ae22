#include "vantile/platform/parsers/power_supply.h"

#include <algorithm>
#include <cmath>
#include <cstdlib>
#include <limits>

#include "vantile/platform/parsers/text.h"
#include "vantile/platform/time_remaining.h"

namespace vantile {
namespace {

using Number = PowerSupply::Number;
using Status = PowerSupply::Status;

constexpr std::int64_t micro = 1'000'000;
constexpr std::int64_t perMilli = 1000;
// A kilowatt-hour, a thousand amperes and so on: beyond what a machine's battery has.
constexpr std::int64_t most = 1'000'000'000;
constexpr std::int64_t leastVoltage = micro / 10;
// A battery that lasts longer, or takes longer to charge, is one whose current is not known yet.
constexpr std::int64_t longest = 10 * 24 * 3600;  // seconds

constexpr unsigned kind = static_cast<unsigned>(SupplyUse::kind);
constexpr unsigned description = static_cast<unsigned>(SupplyUse::description);
constexpr unsigned estimate = static_cast<unsigned>(SupplyUse::estimate);
constexpr unsigned record = static_cast<unsigned>(SupplyUse::record);
constexpr unsigned entry = static_cast<unsigned>(SupplyUse::entry);
constexpr unsigned mains = static_cast<unsigned>(SupplyUse::mains);
constexpr unsigned reading = description | estimate | record | entry;

struct NumberFile {
  std::string_view name;
  Number PowerSupply::*number;
  std::int64_t least, greatest;
  unsigned uses;
};
constexpr NumberFile numberFiles[] = {
    {"charge_now", &PowerSupply::chargeNow, 0, most, reading},
    {"charge_full", &PowerSupply::chargeFull, 1, most, description | entry},
    {"charge_full_design", &PowerSupply::chargeFullDesign, 1, most, description},
    {"energy_now", &PowerSupply::energyNow, 0, most, reading},
    {"energy_full", &PowerSupply::energyFull, 1, most, description | entry},
    {"energy_full_design", &PowerSupply::energyFullDesign, 1, most, description},
    {"voltage_now", &PowerSupply::voltageNow, leastVoltage, most, reading},
    {"voltage_min_design", &PowerSupply::voltageDesign, leastVoltage, most, reading},
    {"current_now", &PowerSupply::currentNow, -most, most, reading},
    {"power_now", &PowerSupply::powerNow, -most, most, reading},
    {"capacity", &PowerSupply::percent, 0, 100, description},
    // By the kernel's rules 0 says that the driver does not know.
    {"cycle_count", &PowerSupply::cycles, 1, 1'000'000, record | entry},
    {"temp", &PowerSupply::tenthsOfDegree, -1000, 1500, entry},
    {"time_to_full_now", &PowerSupply::timeToFull, 1, longest, description},
    {"time_to_empty_now", &PowerSupply::timeToEmpty, 1, longest, estimate},
};

struct TextFile {
  std::string_view name;
  void (*take)(PowerSupply& supply, std::string_view text);
  unsigned uses;
};

PowerSupply::Kind kindOf(std::string_view type) {
  if (type == "Battery") return PowerSupply::Kind::battery;
  const bool isCharger = type == "Mains" || type == "Wireless" || type.starts_with("USB") ||
                         type == "BrickID";  // Apple's, of older kernels
  return isCharger ? PowerSupply::Kind::mains : PowerSupply::Kind::other;
}

std::optional<Status> statusOf(std::string_view text) {
  if (text == "Charging") return Status::charging;
  if (text == "Discharging") return Status::discharging;
  if (text == "Not charging") return Status::notCharging;
  if (text == "Full") return Status::full;
  return std::nullopt;  // "Unknown"
}

/// The number that the whole text is, where it is one between the two.
Number numberIn(std::string_view text, std::int64_t least, std::int64_t greatest) {
  const auto number = wholeNumber<std::int64_t>(text);
  return number && *number >= least && *number <= greatest ? number : std::nullopt;
}

std::optional<bool> truthIn(std::string_view text) {
  const auto number = numberIn(text, 0, 2);  // online is 2 where the voltage can be set
  return number ? std::optional(*number != 0) : std::nullopt;
}

constexpr TextFile textFiles[] = {
    {"type", [](PowerSupply& supply, std::string_view text) { supply.kind = kindOf(text); }, kind},
    {"scope",
     [](PowerSupply& supply, std::string_view text) { supply.isDevices = text == "Device"; }, kind},
    {"status", [](PowerSupply& supply, std::string_view text) { supply.status = statusOf(text); },
     reading},
    {"present", [](PowerSupply& supply, std::string_view text) { supply.present = truthIn(text); },
     reading},
    {"online", [](PowerSupply& supply, std::string_view text) { supply.online = truthIn(text); },
     mains},
};

Number firstOf(Number first, Number second) {
  return first ? first : second;
}

Number times(Number number, std::int64_t factor) {
  return number ? Number(*number * factor) : std::nullopt;
}

Number inMilli(Number number) {
  return number ? Number(*number / perMilli) : std::nullopt;
}

/// The voltage by which energy and charge belong together: the one that the driver's own figures
/// rest on, rather than the present one, by which a full battery would be smaller than an empty
/// one.
Number nominalVoltage(const PowerSupply& battery) {
  return firstOf(battery.voltageDesign, battery.voltageNow);
}

/// Micro-ampere-hours, from energy where the driver does not count charge.
Number charge(Number charged, Number energy, const PowerSupply& battery) {
  const auto voltage = nominalVoltage(battery);
  if (charged || !energy || !voltage) return charged;
  return *energy * micro / *voltage;
}

/// Microamperes, below 0 while the battery runs out. Drivers' own signs differ.
Number current(const PowerSupply& battery) {
  auto flow = battery.currentNow;
  if (!flow && battery.powerNow && battery.voltageNow)
    flow = *battery.powerNow * micro / *battery.voltageNow;
  if (!flow || !battery.status) return flow;
  if (*battery.status == Status::discharging) return -std::abs(*flow);
  return *battery.status == Status::charging ? std::abs(*flow) : *flow;
}

/// What a battery holds when full and now, in one unit.
struct Capacity {
  std::int64_t now = 0, full = 0;
};

std::optional<Capacity> capacityOf(Number now, Number full) {
  return now && full ? std::optional(Capacity{*now, *full}) : std::nullopt;
}

/// In thousandths of a unit where it is a charge or an energy, else in percent.
std::optional<Capacity> capacityOf(const PowerSupply& battery) {
  auto capacity = capacityOf(inMilli(charge(battery.chargeNow, battery.energyNow, battery)),
                             inMilli(charge(battery.chargeFull, battery.energyFull, battery)));
  if (!capacity) capacity = capacityOf(inMilli(battery.energyNow), inMilli(battery.energyFull));
  if (!capacity) capacity = capacityOf(battery.percent, 100);
  // A battery may take more than it did when its driver last saw it full.
  if (capacity) capacity->now = std::min(capacity->now, capacity->full);
  return capacity;
}

std::optional<std::string_view> healthOf(const PowerSupply& battery) {
  auto worn = capacityOf(battery.chargeFull, battery.chargeFullDesign);
  if (!worn) worn = capacityOf(battery.energyFull, battery.energyFullDesign);
  if (!worn) return std::nullopt;
  const auto isAtLeast = [&worn](std::int64_t percent) {
    return worn->now * 100 >= worn->full * percent;
  };
  return isAtLeast(80) ? "Good" : isAtLeast(50) ? "Fair" : "Poor";
}

/// What a battery holds, what it lacks and what it gives or takes, in one unit and that an hour.
struct Flow {
  double held = 0;
  std::optional<double> lacking;
  std::optional<double> rate;
};

double real(std::int64_t number) {
  return static_cast<double>(number);
}

std::optional<double> lackingOf(std::int64_t now, Number full) {
  return full ? std::optional(real(*full - now)) : std::nullopt;
}

/// In micro-watts and -watt-hours; of a battery that stands alone also in amperes, where there is
/// no voltage to tell of.
std::optional<Flow> flowOf(const PowerSupply& battery, bool isAlone) {
  const auto nominal = nominalVoltage(battery);
  // Some drivers tell both, but what a full battery holds as a charge alone.
  const bool isByCharge = battery.chargeNow && battery.chargeFull && !battery.energyFull;
  if (battery.energyNow && !isByCharge) {
    Flow flow{real(*battery.energyNow), lackingOf(*battery.energyNow, battery.energyFull), {}};
    if (battery.powerNow) {
      flow.rate = std::abs(real(*battery.powerNow));
    } else if (battery.currentNow && battery.voltageNow) {
      flow.rate = std::abs(real(*battery.currentNow)) * real(*battery.voltageNow) / micro;
    }
    return flow;
  }
  if (!battery.chargeNow || (!nominal && !isAlone)) return std::nullopt;
  const double volts = real(nominal.value_or(micro)) / micro;
  Flow flow{
      real(*battery.chargeNow) * volts, lackingOf(*battery.chargeNow, battery.chargeFull), {}};
  if (flow.lacking) *flow.lacking *= volts;
  if (battery.currentNow) {
    flow.rate = std::abs(real(*battery.currentNow)) * volts;
  } else if (battery.powerNow && nominal) {
    flow.rate = std::abs(real(*battery.powerNow));
  }
  return flow;
}

/// How long `amount` takes at `rate` an hour; nothing where that is no time to speak of.
std::optional<double> secondsOf(double amount, double rate) {
  const double seconds = rate > 0 ? amount / rate * 3600 : real(longest + 1);
  return seconds <= real(longest) ? std::optional(seconds) : std::nullopt;
}

/// Whole minutes, 1 for less than that; nothing unless it charges.
Number minutesToFull(const PowerSupply& battery) {
  if (battery.status != Status::charging) return std::nullopt;
  std::optional<double> seconds;
  if (battery.timeToFull) {
    seconds = real(*battery.timeToFull);
  } else if (const auto flow = flowOf(battery, true); flow && flow->lacking && flow->rate) {
    seconds = secondsOf(*flow->lacking, *flow->rate);
  }
  if (!seconds || *seconds <= 0) return std::nullopt;
  return std::max(static_cast<std::int64_t>(*seconds / 60), std::int64_t{1});
}

std::vector<const PowerSupply*> presentOf(std::span<const PowerSupply> batteries) {
  std::vector<const PowerSupply*> present;
  for (const auto& battery : batteries)
    if (isPresent(battery)) present.push_back(&battery);
  return present;
}

/// Seconds, by what they all hold and those that run out give.
std::optional<double> secondsLeft(const std::vector<const PowerSupply*>& batteries) {
  double held = 0, rate = 0;
  for (const auto* const battery : batteries) {
    const auto flow = flowOf(*battery, batteries.size() == 1);
    if (!flow) return std::nullopt;
    held += flow->held;
    if (battery->status && *battery->status != Status::discharging) continue;
    if (!flow->rate) return std::nullopt;
    rate += *flow->rate;
  }
  return secondsOf(held, rate);
}

}  // namespace

std::vector<std::string_view> supplyFiles(SupplyUse use) {
  std::vector<std::string_view> names;
  const auto add = [&](const auto& file) {
    if (file.uses & static_cast<unsigned>(use)) names.push_back(file.name);
  };
  for (const auto& file : textFiles) add(file);
  for (const auto& file : numberFiles) add(file);
  return names;
}

void takeSupplyFile(PowerSupply& supply, std::string_view name, std::string_view text) {
  for (const auto& file : textFiles)
    if (file.name == name) return file.take(supply, text);
  for (const auto& file : numberFiles)
    if (file.name == name) supply.*file.number = numberIn(text, file.least, file.greatest);
}

bool isPresent(const PowerSupply& battery) {
  return battery.present.value_or(true);
}

std::optional<bool> onExternalPower(std::span<const PowerSupply> chargers,
                                    std::span<const PowerSupply> batteries) {
  std::optional<bool> external;
  for (const auto& charger : chargers)
    if (charger.online) external = external.value_or(false) || *charger.online;
  if (external) return external;
  for (const auto* const battery : presentOf(batteries))
    if (battery->status)
      external = external.value_or(true) && *battery->status != Status::discharging;
  return external;
}

Dictionary descriptionOf(const PowerSupply& battery, std::optional<bool> externalPower) {
  Dictionary keys;
  keys.reserve(8);
  keys.set("Name", battery.name);
  keys.set("BatteryHealth", healthOf(battery));
  keys.set("Is Present", battery.present);
  if (const auto capacity = capacityOf(battery)) {
    keys.set("Current Capacity", capacity->now);
    keys.set("Max Capacity", capacity->full);
  }
  if (externalPower) keys.set("Power Source State", *externalPower ? "AC Power" : "Battery Power");
  if (battery.status) keys.set("Is Charging", *battery.status == Status::charging);
  keys.set("Time to Full Charge", minutesToFull(battery));
  return keys;
}

Dictionary batteryRecordOf(const PowerSupply& battery) {
  Dictionary keys;
  keys.reserve(4);
  keys.set("Current", inMilli(charge(battery.chargeNow, battery.energyNow, battery)));
  keys.set("Amperage", inMilli(current(battery)));
  keys.set("Voltage", inMilli(battery.voltageNow));
  keys.set("Cycle Count", battery.cycles);
  return keys;
}

Dictionary batteryEntryOf(const PowerSupply& battery) {
  Dictionary keys;
  keys.reserve(6);
  keys.set("MaxCapacity", inMilli(charge(battery.chargeFull, battery.energyFull, battery)));
  keys.set("CurrentCapacity", inMilli(charge(battery.chargeNow, battery.energyNow, battery)));
  keys.set("CycleCount", battery.cycles);
  keys.set("Amperage", inMilli(current(battery)));
  keys.set("Voltage", inMilli(battery.voltageNow));
  keys.set("Temperature", times(battery.tenthsOfDegree, 10));
  return keys;
}

double timeRemainingOf(std::span<const PowerSupply> batteries, std::optional<bool> externalPower) {
  const auto present = presentOf(batteries);
  if (present.empty() || externalPower.value_or(false)) return TimeRemaining::unlimited;
  if (const auto seconds = secondsLeft(present)) return *seconds;
  if (present.size() == 1 && present.front()->timeToEmpty)
    return real(*present.front()->timeToEmpty);
  return TimeRemaining::unknown;
}

}  // namespace vantile
