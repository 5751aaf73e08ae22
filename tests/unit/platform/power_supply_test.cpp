#include "vantile/platform/parsers/power_supply.h"

#include <gtest/gtest.h>

#include <algorithm>

#include "vantile/platform/parsers/text.h"
#include "vantile/platform/time_remaining.h"

#include "unit/platform/fixture.h"

namespace vantile {
namespace {

using Status = PowerSupply::Status;
using Supplies = std::vector<PowerSupply>;

/// A supply of files as "name:text" lines.
PowerSupply supplyOf(std::string_view files) {
  PowerSupply supply;
  supply.name = "BAT0";
  while (!files.empty()) {
    const auto line = takeLine(files);
    const auto colon = line.find(':');
    takeSupplyFile(supply, line.substr(0, colon), line.substr(colon + 1));
  }
  return supply;
}

PowerSupply fixtureOf(const std::string& name) {
  return supplyOf(testing::fixture("power-supply-" + name + ".txt"));
}

std::optional<std::int64_t> numberUnder(const Dictionary& keys, std::string_view key) {
  return keys.int64(key);
}

PowerSupply charger(std::optional<bool> online) {
  PowerSupply supply;
  supply.kind = PowerSupply::Kind::mains;
  supply.online = online;
  return supply;
}

PowerSupply with(PowerSupply supply, std::string_view name, std::string_view text) {
  takeSupplyFile(supply, name, text);
  return supply;
}

TEST(PowerSupplyFiles, OfABatteryThatCountsEnergy) {
  const auto battery = fixtureOf("energy");
  EXPECT_EQ(battery.kind, PowerSupply::Kind::battery);
  EXPECT_FALSE(battery.isDevices);
  EXPECT_EQ(battery.present, true);
  EXPECT_EQ(battery.status, Status::discharging);
  EXPECT_EQ(battery.energyNow, 28'120'000);
  EXPECT_EQ(battery.energyFull, 47'330'000);
  EXPECT_EQ(battery.energyFullDesign, 57'020'000);
  EXPECT_EQ(battery.voltageNow, 11'871'000);
  EXPECT_EQ(battery.voltageDesign, 11'580'000);
  EXPECT_EQ(battery.powerNow, 7'410'000);
  EXPECT_EQ(battery.percent, 59);
  EXPECT_EQ(battery.cycles, 213);
  EXPECT_EQ(battery.chargeNow, std::nullopt);
  EXPECT_EQ(battery.currentNow, std::nullopt);
}

TEST(PowerSupplyFiles, OfABatteryThatCountsCharge) {
  const auto battery = fixtureOf("charge");
  EXPECT_FALSE(battery.isDevices);
  EXPECT_EQ(battery.status, Status::charging);
  EXPECT_EQ(battery.chargeNow, 2'105'400);
  EXPECT_EQ(battery.chargeFull, 2'420'000);
  EXPECT_EQ(battery.chargeFullDesign, 5'200'000);
  EXPECT_EQ(battery.currentNow, -812'000);
  EXPECT_EQ(battery.tenthsOfDegree, 312);
  EXPECT_EQ(battery.cycles, std::nullopt);  // 0: not known
}

TEST(PowerSupplyFiles, OfAMouseAreADevices) {
  EXPECT_TRUE(fixtureOf("mouse").isDevices);
}

TEST(PowerSupplyFiles, EveryKindOfChargerIsMains) {
  for (const auto* type : {"Mains", "USB", "USB_C", "USB_PD", "USB_DCP", "Wireless", "BrickID"})
    EXPECT_EQ(supplyOf(std::string("type:") + type).kind, PowerSupply::Kind::mains) << type;
  for (const auto* type : {"UPS", "Unknown", "", "battery"})
    EXPECT_EQ(supplyOf(std::string("type:") + type).kind, PowerSupply::Kind::other) << type;
}

TEST(PowerSupplyFiles, StatusIsOneOfFour) {
  EXPECT_EQ(supplyOf("status:Not charging").status, Status::notCharging);
  EXPECT_EQ(supplyOf("status:Full").status, Status::full);
  for (const auto* text : {"Unknown", "", "charging", "Charging "})
    EXPECT_EQ(supplyOf(std::string("status:") + text).status, std::nullopt) << text;
}

TEST(PowerSupplyFiles, OnlineMayBeProgrammable) {
  EXPECT_EQ(supplyOf("online:0").online, false);
  EXPECT_EQ(supplyOf("online:1").online, true);
  EXPECT_EQ(supplyOf("online:2").online, true);
  EXPECT_EQ(supplyOf("online:3").online, std::nullopt);
  EXPECT_EQ(supplyOf("online:").online, std::nullopt);
}

TEST(PowerSupplyFiles, WhatIsNoNumberIsMissing) {
  for (const auto* text : {"", "-", "--1", "+1", "1 ", " 1", "0x10", "1e3", "12\xFF", "1.5",
                           "18446744073709551616", "99999999999999999999999"})
    EXPECT_EQ(supplyOf(std::string("energy_now:") + text).energyNow, std::nullopt) << text;
}

TEST(PowerSupplyFiles, WhatNoBatteryHasIsMissing) {
  EXPECT_EQ(supplyOf("charge_now:-1").chargeNow, std::nullopt);
  EXPECT_EQ(supplyOf("charge_now:0").chargeNow, 0);
  EXPECT_EQ(supplyOf("charge_full:0").chargeFull, std::nullopt);
  EXPECT_EQ(supplyOf("charge_full_design:0").chargeFullDesign, std::nullopt);
  EXPECT_EQ(supplyOf("energy_now:1000000000").energyNow, 1'000'000'000);
  EXPECT_EQ(supplyOf("energy_now:1000000001").energyNow, std::nullopt);
  EXPECT_EQ(supplyOf("voltage_now:0").voltageNow, std::nullopt);
  EXPECT_EQ(supplyOf("voltage_now:99999").voltageNow, std::nullopt);
  EXPECT_EQ(supplyOf("current_now:-2147483648").currentNow, std::nullopt);
  EXPECT_EQ(supplyOf("current_now:-1000").currentNow, -1000);
  EXPECT_EQ(supplyOf("capacity:101").percent, std::nullopt);
  EXPECT_EQ(supplyOf("cycle_count:-1").cycles, std::nullopt);
  EXPECT_EQ(supplyOf("temp:-1001").tenthsOfDegree, std::nullopt);
  EXPECT_EQ(supplyOf("temp:-50").tenthsOfDegree, -50);
  EXPECT_EQ(supplyOf("temp:1501").tenthsOfDegree, std::nullopt);
  EXPECT_EQ(supplyOf("time_to_full_now:0").timeToFull, std::nullopt);
}

TEST(PowerSupplyFiles, EachUseReadsWhatItNeeds) {
  const auto reads = [](SupplyUse use, std::string_view file) {
    const auto files = supplyFiles(use);
    return std::ranges::find(files, file) != files.end();
  };
  EXPECT_EQ(supplyFiles(SupplyUse::kind), (std::vector<std::string_view>{"type", "scope"}));
  EXPECT_EQ(supplyFiles(SupplyUse::mains), std::vector<std::string_view>{"online"});
  EXPECT_TRUE(reads(SupplyUse::description, "charge_full_design"));
  EXPECT_FALSE(reads(SupplyUse::estimate, "charge_full_design"));
  EXPECT_TRUE(reads(SupplyUse::entry, "temp"));
  EXPECT_FALSE(reads(SupplyUse::record, "temp"));
  EXPECT_TRUE(reads(SupplyUse::record, "cycle_count"));
}

TEST(PowerSourceDescription, OfEnergyIsInChargeByTheNominalVoltage) {
  const auto keys = descriptionOf(fixtureOf("energy"), false);
  EXPECT_EQ(numberUnder(keys, "Current Capacity"), 2428);  // 28.12 Wh / 11.58 V
  EXPECT_EQ(numberUnder(keys, "Max Capacity"), 4087);
  EXPECT_EQ(*keys.text("BatteryHealth"), "Good");
  EXPECT_EQ(*keys.text("Power Source State"), "Battery Power");
  EXPECT_EQ(keys.boolean("Is Charging"), false);
  EXPECT_EQ(keys.boolean("Is Present"), true);
  EXPECT_FALSE(keys.contains("Time to Full Charge"));
}

TEST(PowerSourceDescription, OfChargeIsInMilliampereHours) {
  const auto keys = descriptionOf(with(fixtureOf("charge"), "energy_now", "9000000"), true);
  EXPECT_EQ(numberUnder(keys, "Current Capacity"), 2105);
  EXPECT_EQ(numberUnder(keys, "Max Capacity"), 2420);
  EXPECT_EQ(*keys.text("BatteryHealth"), "Poor");
  EXPECT_EQ(*keys.text("Power Source State"), "AC Power");
  EXPECT_EQ(keys.boolean("Is Charging"), true);
  EXPECT_EQ(numberUnder(keys, "Time to Full Charge"), 23);  // 314.6 mAh at 812 mA, cut
}

TEST(PowerSourceDescription, WithoutANominalVoltageThePresentOneCounts) {
  const auto keys = descriptionOf(
      supplyOf("energy_now:20000000\nenergy_full:40000000\nvoltage_now:10000000"), false);
  EXPECT_EQ(numberUnder(keys, "Current Capacity"), 2000);
  EXPECT_EQ(numberUnder(keys, "Max Capacity"), 4000);
}

TEST(PowerSourceDescription, WithoutAnyVoltageCapacitiesAreEnergies) {
  const auto keys = descriptionOf(supplyOf("energy_now:20000000\nenergy_full:40000000"), false);
  EXPECT_EQ(numberUnder(keys, "Current Capacity"), 20000);
  EXPECT_EQ(numberUnder(keys, "Max Capacity"), 40000);
}

TEST(PowerSourceDescription, WithoutAmountsCapacitiesArePercent) {
  const auto keys = descriptionOf(supplyOf("capacity:42\ncharge_now:1000000"), false);
  EXPECT_EQ(numberUnder(keys, "Current Capacity"), 42);
  EXPECT_EQ(numberUnder(keys, "Max Capacity"), 100);
}

TEST(PowerSourceDescription, HoldsNoMoreThanWhenItIsFull) {
  const auto keys = descriptionOf(supplyOf("charge_now:4100000\ncharge_full:4000000"), true);
  EXPECT_EQ(numberUnder(keys, "Current Capacity"), 4000);
}

TEST(PowerSourceDescription, HealthIsByWhatItWasMadeFor) {
  const auto healthOf = [](const std::string& kind, const char* full) {
    const auto keys =
        descriptionOf(supplyOf(kind + "_full_design:5000000\n" + kind + "_full:" + full), true);
    return std::string(*keys.text("BatteryHealth"));
  };
  for (const auto* kind : {"charge", "energy"}) {
    EXPECT_EQ(healthOf(kind, "5500000"), "Good");
    EXPECT_EQ(healthOf(kind, "4000000"), "Good");
    EXPECT_EQ(healthOf(kind, "3999999"), "Fair");
    EXPECT_EQ(healthOf(kind, "2500000"), "Fair");
    EXPECT_EQ(healthOf(kind, "2499999"), "Poor");
    EXPECT_EQ(healthOf(kind, "1"), "Poor");
  }
}

TEST(PowerSourceDescription, WhatABatteryDoesNotTellIsNotThere) {
  const auto keys = descriptionOf(supplyOf("status:Unknown"), std::nullopt);
  EXPECT_EQ(keys.size(), 1u);
  EXPECT_EQ(*keys.text("Name"), "BAT0");
  EXPECT_FALSE(
      descriptionOf(supplyOf("charge_full:1\ncharge_now:1"), true).contains("BatteryHealth"));
}

TEST(PowerSourceDescription, AnEmptyBayIsNotPresent) {
  EXPECT_EQ(descriptionOf(supplyOf("present:0"), false).boolean("Is Present"), false);
}

TEST(TimeToFull, IsTheDriversOwnWhereItTells) {
  const auto minutes = [](const char* files) {
    return numberUnder(descriptionOf(supplyOf(files), true), "Time to Full Charge");
  };
  EXPECT_EQ(minutes("status:Charging\ntime_to_full_now:3600"), 60);
  EXPECT_EQ(minutes("status:Charging\ntime_to_full_now:3659"), 60);
  EXPECT_EQ(minutes("status:Charging\ntime_to_full_now:1"), 1);
  EXPECT_EQ(minutes("status:Full\ntime_to_full_now:3600"), std::nullopt);
}

TEST(TimeToFull, IsWhatLacksByWhatComesIn) {
  const auto minutes = [](const char* files) {
    return numberUnder(descriptionOf(supplyOf(std::string("status:Charging\n") + files), true),
                       "Time to Full Charge");
  };
  EXPECT_EQ(minutes("energy_now:10000000\nenergy_full:40000000\npower_now:20000000"), 90);
  EXPECT_EQ(minutes("energy_now:10000000\nenergy_full:40000000\ncurrent_now:2000000\n"
                    "voltage_now:10000000"),
            90);
  EXPECT_EQ(minutes("charge_now:1000000\ncharge_full:4000000\ncurrent_now:-2000000"), 90);
  EXPECT_EQ(minutes("charge_now:1000000\ncharge_full:4000000\npower_now:20000000\n"
                    "voltage_min_design:10000000"),
            90);
}

TEST(TimeToFull, IsMissingWhileItIsNotKnown) {
  const auto minutes = [](const char* files) {
    return numberUnder(descriptionOf(supplyOf(std::string("status:Charging\n") + files), true),
                       "Time to Full Charge");
  };
  EXPECT_EQ(minutes("charge_now:1000000\ncharge_full:4000000"), std::nullopt);
  EXPECT_EQ(minutes("charge_now:1000000\ncharge_full:4000000\ncurrent_now:0"), std::nullopt);
  EXPECT_EQ(minutes("charge_now:1000000\ncharge_full:4000000\ncurrent_now:1"), std::nullopt);
  EXPECT_EQ(minutes("charge_now:4000000\ncharge_full:4000000\ncurrent_now:1000000"), std::nullopt);
  EXPECT_EQ(minutes("charge_now:1000000\ncurrent_now:1000000"), std::nullopt);
  EXPECT_EQ(minutes("capacity:10"), std::nullopt);
}

TEST(ExternalPower, IsAnyChargerOnline) {
  const Supplies draining{supplyOf("status:Discharging")}, charging{supplyOf("status:Charging")};
  EXPECT_EQ(onExternalPower(Supplies{charger(true)}, draining), true);
  EXPECT_EQ(onExternalPower(Supplies{charger(false)}, charging), false);
  EXPECT_EQ(onExternalPower(Supplies{charger(false), charger(true)}, draining), true);
  EXPECT_EQ(onExternalPower(Supplies{charger(true), charger(false)}, draining), true);
  EXPECT_EQ(onExternalPower(Supplies{charger({}), charger(false)}, charging), false);
}

TEST(ExternalPower, IsByTheBatteriesWhereNoChargerTells) {
  const auto draining = supplyOf("status:Discharging"), idle = supplyOf("status:Not charging");
  EXPECT_EQ(onExternalPower({}, Supplies{draining}), false);
  EXPECT_EQ(onExternalPower(Supplies{charger({})}, Supplies{idle}), true);
  EXPECT_EQ(onExternalPower({}, Supplies{supplyOf("status:Full")}), true);
  EXPECT_EQ(onExternalPower({}, Supplies{idle, draining}), false);
  EXPECT_EQ(onExternalPower({}, Supplies{draining, idle}), false);
  EXPECT_EQ(onExternalPower({}, Supplies{supplyOf("status:Unknown")}), std::nullopt);
  EXPECT_EQ(onExternalPower({}, Supplies{with(draining, "present", "0"), idle}), true);
  EXPECT_EQ(onExternalPower({}, {}), std::nullopt);
}

double secondsLeft(const Supplies& batteries) {
  return timeRemainingOf(batteries, false);
}

TEST(TimeRemaining, IsEnergyByPower) {
  EXPECT_EQ(secondsLeft({supplyOf("status:Discharging\nenergy_now:30000000\npower_now:10000000")}),
            3 * 3600);
  EXPECT_EQ(secondsLeft({supplyOf("status:Discharging\nenergy_now:30000000\npower_now:-10000000")}),
            3 * 3600);
}

TEST(TimeRemaining, IsByTheCurrentWhereNoPowerIsTold) {
  EXPECT_EQ(secondsLeft({supplyOf("status:Discharging\nenergy_now:30000000\n"
                                  "current_now:1000000\nvoltage_now:10000000")}),
            3 * 3600);
  EXPECT_EQ(secondsLeft({supplyOf("status:Discharging\ncharge_now:3000000\n"
                                  "current_now:-1000000\nvoltage_now:10000000")}),
            3 * 3600);
}

TEST(TimeRemaining, OfOneBatteryNeedsNoVoltage) {
  const auto battery = supplyOf("status:Discharging\ncharge_now:3000000\ncurrent_now:1000000");
  EXPECT_EQ(secondsLeft({battery}), 3 * 3600);
  EXPECT_EQ(secondsLeft({battery, battery}), -1);
}

TEST(TimeRemaining, IsThatOfAllBatteriesTogether) {
  const auto energy = supplyOf("status:Discharging\nenergy_now:30000000\npower_now:10000000");
  const auto charge = supplyOf(
      "status:Discharging\ncharge_now:1000000\ncurrent_now:500000\n"
      "voltage_min_design:10000000\nvoltage_now:11000000");
  EXPECT_EQ(secondsLeft({energy, charge}), 40.0 / 15 * 3600);
}

TEST(TimeRemaining, CountsWhatABatteryHoldsThatWaitsItsTurn) {
  const auto active = supplyOf("status:Discharging\nenergy_now:10000000\npower_now:10000000");
  const auto waiting = supplyOf("status:Not charging\nenergy_now:20000000\npower_now:5000000");
  EXPECT_EQ(secondsLeft({active, waiting}), 3 * 3600);
}

TEST(TimeRemaining, IsUnlimitedOnExternalPowerOrWithoutABattery) {
  const auto battery = supplyOf("status:Discharging\nenergy_now:30000000\npower_now:10000000");
  EXPECT_EQ(timeRemainingOf(Supplies{battery}, true), -2);
  EXPECT_EQ(timeRemainingOf({}, false), -2);
  EXPECT_EQ(timeRemainingOf({}, std::nullopt), -2);
  EXPECT_EQ(timeRemainingOf(Supplies{with(battery, "present", "0")}, false), -2);
  EXPECT_EQ(timeRemainingOf(Supplies{battery}, std::nullopt), 3 * 3600);
}

TEST(TimeRemaining, IsUnknownWithoutEnergyOrPower) {
  EXPECT_EQ(secondsLeft({supplyOf("status:Discharging\nenergy_now:30000000")}), -1);
  EXPECT_EQ(secondsLeft({supplyOf("status:Discharging\npower_now:30000000")}), -1);
  EXPECT_EQ(secondsLeft({supplyOf("status:Discharging\nenergy_now:30000000\npower_now:0")}), -1);
  EXPECT_EQ(secondsLeft({supplyOf("status:Discharging\ncapacity:50")}), -1);
}

TEST(TimeRemaining, IsUnknownRightAfterTheChargerWent) {
  EXPECT_EQ(secondsLeft({supplyOf("status:Charging\nenergy_now:30000000\npower_now:20000000")}),
            -1);
}

TEST(TimeRemaining, OfMoreThanTenDaysIsUnknown) {
  EXPECT_EQ(secondsLeft({supplyOf("status:Discharging\nenergy_now:24000000\npower_now:100000")}),
            864000);
  EXPECT_EQ(secondsLeft({supplyOf("status:Discharging\nenergy_now:24000000\npower_now:99999")}),
            -1);
}

TEST(TimeRemaining, IsTheDriversOwnWhereItCantBeReckoned) {
  const auto battery = supplyOf("status:Discharging\ncapacity:50\ntime_to_empty_now:5400");
  EXPECT_EQ(secondsLeft({battery}), 5400);
  EXPECT_EQ(secondsLeft({battery, battery}), -1);
}

TEST(BatteryRecord, IsInMilliUnits) {
  const auto keys = batteryRecordOf(fixtureOf("energy"));
  EXPECT_EQ(numberUnder(keys, "Current"), 2428);
  EXPECT_EQ(numberUnder(keys, "Voltage"), 11871);
  EXPECT_EQ(numberUnder(keys, "Amperage"), -624);  // 7.41 W / 11.871 V
  EXPECT_EQ(numberUnder(keys, "Cycle Count"), 213);
  EXPECT_EQ(keys.size(), 4u);
}

TEST(BatteryRecord, TheCurrentsSignIsByTheStatus) {
  const auto amperage = [](const char* status, const char* current) {
    return numberUnder(
        batteryRecordOf(supplyOf(std::string("status:") + status + "\ncurrent_now:" + current)),
        "Amperage");
  };
  EXPECT_EQ(amperage("Discharging", "1234000"), -1234);
  EXPECT_EQ(amperage("Discharging", "-1234000"), -1234);
  EXPECT_EQ(amperage("Charging", "1234000"), 1234);
  EXPECT_EQ(amperage("Charging", "-1234000"), 1234);
  EXPECT_EQ(amperage("Unknown", "-1234000"), -1234);
  EXPECT_EQ(amperage("Not charging", "1234000"), 1234);
  EXPECT_EQ(amperage("Full", "0"), 0);
}

TEST(BatteryRecord, WithoutAVoltagePowerIsNoCurrent) {
  const auto keys = batteryRecordOf(supplyOf("status:Discharging\npower_now:7410000"));
  EXPECT_TRUE(keys.empty());
}

TEST(BatteryRegistryEntry, IsInMilliUnitsAndHundredths) {
  const auto keys = batteryEntryOf(fixtureOf("charge"));
  EXPECT_EQ(numberUnder(keys, "MaxCapacity"), 2420);
  EXPECT_EQ(numberUnder(keys, "CurrentCapacity"), 2105);
  EXPECT_EQ(numberUnder(keys, "Amperage"), 812);
  EXPECT_EQ(numberUnder(keys, "Voltage"), 8211);
  EXPECT_EQ(numberUnder(keys, "Temperature"), 3120);
  EXPECT_FALSE(keys.contains("CycleCount"));
}

TEST(BatteryRegistryEntry, OfEnergyIsInCharge) {
  const auto keys = batteryEntryOf(fixtureOf("energy"));
  EXPECT_EQ(numberUnder(keys, "MaxCapacity"), 4087);
  EXPECT_EQ(numberUnder(keys, "CurrentCapacity"), 2428);
  EXPECT_EQ(numberUnder(keys, "CycleCount"), 213);
  EXPECT_FALSE(keys.contains("Temperature"));
}

}  // namespace
}  // namespace vantile
