#include <cmath>
#include <limits>

#include "unit/power/battery_fixture.h"

namespace vantile::testing {
namespace {

constexpr auto least = std::numeric_limits<std::int64_t>::min();
constexpr auto greatest = std::numeric_limits<std::int64_t>::max();

/// What an update reads, apart from what it tells.
class BatteryReadings : public Battery {
 protected:
  std::int64_t percent(std::optional<Value> now, std::optional<Value> full) {
    update(3600, Source{.now = std::move(now), .full = std::move(full)});
    return info->currentPercent();
  }
  void record(std::optional<Value> charge, std::optional<Value> amperage,
              std::optional<Value> voltage, std::optional<Value> cycles) {
    auto keys = std::make_shared<Dictionary>();
    keys->set("Current", charge);
    keys->set("Amperage", amperage);
    keys->set("Voltage", voltage);
    keys->set("Cycle Count", cycles);
    ports.records->list = {{keys}};
  }
  std::shared_ptr<Dictionary> entry() {
    auto keys = std::make_shared<Dictionary>();
    keys->set("MaxCapacity", std::int64_t{5000});
    keys->set("CurrentCapacity", std::int64_t{4500});
    keys->set("CycleCount", std::int64_t{321});
    keys->set("Amperage", std::int64_t{-1234});
    keys->set("Voltage", std::int64_t{12345});
    keys->set("Temperature", std::int64_t{3012});
    ports.entry->entry = keys;
    return keys;
  }
};

TEST_F(BatteryReadings, ThePercentageIsCutNotRounded) {
  EXPECT_EQ(percent(Value(4500), Value(5000)), 90);
  EXPECT_EQ(percent(Value(4999), Value(5000)), 99);
  EXPECT_EQ(percent(Value(5000), Value(5000)), 100);
  EXPECT_EQ(percent(Value(5500), Value(5000)), 110);
  EXPECT_EQ(percent(Value(29), Value(100)), 28);  // 0.29 is a little less, and taken times 100
}

TEST_F(BatteryReadings, TheCurrentCapacityIsCutBeforeItIsDivided) {
  EXPECT_EQ(percent(Value(9.9), Value(10)), 90);
  EXPECT_EQ(percent(Value(1.9), Value(2.5)), 40);
}

TEST_F(BatteryReadings, AMaximumOfZeroOrNoneGivesZeroPercent) {
  EXPECT_EQ(percent(Value(4500), Value(0)), 0);
  EXPECT_EQ(percent(Value(4500), Value(0.0)), 0);
  EXPECT_EQ(percent(Value(4500), std::nullopt), 0);
  EXPECT_EQ(percent(Value(4500), Value("5000")), 0);
  EXPECT_EQ(percent(std::nullopt, Value(5000)), 0);
  EXPECT_EQ(percent(std::nullopt, std::nullopt), 0);
}

TEST_F(BatteryReadings, APercentageThatNothingHoldsIsTheNearest) {
  EXPECT_EQ(percent(Value(greatest), Value(1)), greatest);
  EXPECT_EQ(percent(Value(greatest), Value(-1)), least);
  EXPECT_EQ(percent(Value(1e300), Value(1e-300)), greatest);
  EXPECT_EQ(percent(Value(std::numeric_limits<double>::quiet_NaN()), Value(1)), 0);
  EXPECT_EQ(percent(Value(1), Value(std::numeric_limits<double>::quiet_NaN())), 0);
  EXPECT_EQ(percent(Value(std::numeric_limits<std::uint64_t>::max()), Value(greatest)), 100);
}

TEST_F(BatteryReadings, HealthIsThatOfTheLastSourcePresentOrNot) {
  update(3600, {Source{.health = "Good"}, Source{.present = Value(false), .health = "Poor"}});
  EXPECT_EQ(info->health(), "Poor");
  update(3600, Source{.health = std::nullopt});
  EXPECT_EQ(info->health(), std::nullopt);
}

TEST_F(BatteryReadings, ASourceThatIsNotPresentGivesItsHealthAlone) {
  EXPECT_EQ(update(3600, Source{.now = Value(10), .present = Value(false), .health = "Fair"}),
            Told{});
  EXPECT_EQ(info->health(), "Fair");
  EXPECT_EQ(info->currentPercent(), 0);
  EXPECT_EQ(info->previousPercent(), 0);
  EXPECT_EQ(update(3600, {Source{.present = Value(false)}, Source{}}), Told{"remaining 1:00"});
}

TEST_F(BatteryReadings, ASourceThatDoesNotTellIsPresent) {
  EXPECT_EQ(update(3600, Source{.present = std::nullopt}), Told{"remaining 1:00"});
  EXPECT_EQ(update(3600, Source{.present = Value(0)}), Told{"remaining 1:00"});  // no boolean
}

TEST_F(BatteryReadings, EverySourceIsToldOfInOrder) {
  const Source first = ofPercent({}, 10), second = ofPercent({}, 15);
  EXPECT_EQ(update(3600, {first, second}),
            (Told{"remaining 1:00", "left 10%", "remaining 1:00", "left 15%"}));
  EXPECT_EQ(info->currentPercent(), 15);
  // The percentage that was told of last is the other one's.
  EXPECT_EQ(update(3600, {first, second}),
            (Told{"remaining 1:00", "left 10%", "remaining 1:00", "left 15%"}));
}

TEST_F(BatteryReadings, AnUpdateAsksForTheEstimateOnce) {
  update(3600, {Source{}, Source{}});
  EXPECT_EQ(ports.remaining->reads, 1);
  EXPECT_EQ(ports.sources->reads, 1);
}

TEST_F(BatteryReadings, WithoutSourcesTheRestIsStillRead) {
  record(Value(4500), Value(-2000), Value(12000), Value(7));
  entry();
  EXPECT_EQ(update(3600, std::vector<Source>{}), Told{});
  EXPECT_EQ(info->capacity(), 4500);
  EXPECT_EQ(info->cycleCount(), 7);
  EXPECT_FLOAT_EQ(info->celsius(), 30.12f);
  EXPECT_EQ(info->timeSinceUnpluggedTranslated(), "0:00");
  EXPECT_EQ(info->health(), std::nullopt);
}

TEST_F(BatteryReadings, PowerIsThatOfTheRecordWithItsSign) {
  record(Value(4500), Value(-1234), Value(11987), Value(1));
  update(3600, Source{});
  EXPECT_EQ(info->watt(), (-1234.0f / 1000.0f) * (11987.0f / 1000.0f));
  record(Value(4500), Value(1500), Value(12000), Value(1));
  update(3600, Source{});
  EXPECT_EQ(info->watt(), 18.0f);
  record(Value(4500), Value(-3000), Value(10513), Value(1));
  update(3600, Source{});
  EXPECT_EQ(info->watt(), -31.538997650146484f);  // in single precision, which shows
}

TEST_F(BatteryReadings, WithoutARecordItsReadingsAreZero) {
  record(Value(4500), Value(-2000), Value(12000), Value(7));
  update(3600, Source{});
  ports.records->list = std::nullopt;
  update(3600, Source{});
  EXPECT_EQ(info->capacity(), 0);
  EXPECT_EQ(info->cycleCount(), 0);
  EXPECT_EQ(info->watt(), 0);
}

TEST_F(BatteryReadings, WhatARecordLacksIsZeroAndWhatIsTooGreatTheNearest) {
  record(std::nullopt, std::nullopt, Value(12000), std::nullopt);
  update(3600, Source{});
  EXPECT_EQ(info->capacity(), 0);
  EXPECT_EQ(info->watt(), 0);
  record(Value(greatest), Value(1e300), Value(1e-9), Value(least));
  update(3600, Source{});
  EXPECT_EQ(info->capacity(), std::numeric_limits<std::int32_t>::max());
  EXPECT_EQ(info->cycleCount(), std::numeric_limits<std::int32_t>::min());
  EXPECT_TRUE(std::isfinite(info->watt()));
}

TEST_F(BatteryReadings, TheTemperatureIsHundredthsOfADegree) {
  entry();
  update(3600, Source{});
  EXPECT_EQ(info->celsius(), static_cast<float>(30.12));
  EXPECT_EQ(info->fahrenheit(), static_cast<float>(30.12 * 9.0 / 5.0 + 32.0));
}

TEST_F(BatteryReadings, FahrenheitIsReckonedInDoublePrecision) {
  entry()->set("Temperature", std::int64_t{2022});
  info->updateCurrentStatus();
  EXPECT_EQ(info->celsius(), 20.22f);
  EXPECT_EQ(info->fahrenheit(), 68.39600372314453f);  // 68.395996 from celsius as it is kept
  EXPECT_EQ(info->batteryTemperature(), 20.22);
}

TEST_F(BatteryReadings, TheEntrysPowerIsReckonedInItsOrder) {
  const auto keys = entry();
  keys->set("Amperage", std::int64_t{-2987});
  keys->set("Voltage", std::int64_t{10671});
  info->updateCurrentStatus();
  EXPECT_EQ(info->batteryWatt(), -31.874277000000003);  // -31.874277 in any other
  keys->set("Amperage", std::int64_t{-2993});
  keys->set("Voltage", std::int64_t{10669});
  info->updateCurrentStatus();
  EXPECT_EQ(info->batteryWatt(), -31.932316999999998);
}

TEST_F(BatteryReadings, WithoutAnEntryItIsZeroDegrees) {
  entry();
  update(3600, Source{});
  ports.entry->entry = nullptr;
  update(3600, Source{});
  EXPECT_EQ(info->celsius(), 0);
  EXPECT_EQ(info->fahrenheit(), 32);
}

TEST_F(BatteryReadings, CelsiusBecomesFahrenheit) {
  EXPECT_EQ(info->convertCelsiusToFahrenheit(100), 212);
  EXPECT_EQ(info->convertCelsiusToFahrenheit(-40), -40);
  EXPECT_EQ(info->convertCelsiusToFahrenheit(36.6), 36.6 * 9.0 / 5.0 + 32.0);
  EXPECT_EQ(info->convertCelsiusToFahrenheit(-17.3), 0.8599999999999959);  // the product first
}

TEST_F(BatteryReadings, AFullUpdateTakesTheEntrysValuesAsTheyAre) {
  entry()->set("MaxCapacity", 5000.5);
  ports.sources->sources = {Source{.health = "Fair"}.description()};
  info->updateCurrentStatus();
  EXPECT_EQ(info->batteryMaxCapacity(), Value(5000.5));
  EXPECT_EQ(info->batteryCurrentCapacity(), Value(std::int64_t{4500}));
  EXPECT_EQ(info->batteryCycleCount(), Value(std::int64_t{321}));
  EXPECT_EQ(info->batteryAmperage(), Value(std::int64_t{-1234}));
  EXPECT_EQ(info->batteryVoltage(), Value(std::int64_t{12345}));
  EXPECT_EQ(info->batteryWatt(), 12345.0 * (-1234.0 / 1000.0) / 1000.0);
  EXPECT_EQ(info->batteryTemperature(), 3012 / 100.0);
  EXPECT_EQ(info->batteryHealth(), "Fair");
  EXPECT_EQ(ports.entry->reads, 2);  // it is read again for them
}

TEST_F(BatteryReadings, APartialUpdateLeavesThemAlone) {
  entry();
  update(3600, Source{});
  EXPECT_EQ(info->batteryMaxCapacity(), std::nullopt);
  EXPECT_EQ(info->batteryWatt(), std::nullopt);
  EXPECT_EQ(info->batteryHealth(), std::nullopt);
}

TEST_F(BatteryReadings, WithoutAnEntryTheyAreNilAndPowerAndTemperatureZero) {
  entry();
  info->updateCurrentStatus();
  ports.entry->entry = nullptr;
  info->updateCurrentStatus();
  EXPECT_EQ(info->batteryMaxCapacity(), std::nullopt);
  EXPECT_EQ(info->batteryCurrentCapacity(), std::nullopt);
  EXPECT_EQ(info->batteryCycleCount(), std::nullopt);
  EXPECT_EQ(info->batteryAmperage(), std::nullopt);
  EXPECT_EQ(info->batteryVoltage(), std::nullopt);
  EXPECT_EQ(info->batteryWatt(), 0.0);
  EXPECT_EQ(info->batteryTemperature(), 0.0);
}

TEST_F(BatteryReadings, TheFirstRecordIsTheBatterys) {
  record(Value(1), std::nullopt, std::nullopt, std::nullopt);
  ports.records->list->push_back(std::make_shared<Dictionary>());
  EXPECT_EQ(info->getAdvancedBatteryInfo(), ports.records->list->front());
  EXPECT_TRUE(info->isHasBattery());
}

TEST_F(BatteryReadings, ARefusalOrAnEmptyListIsNoBattery) {
  EXPECT_EQ(info->getAdvancedBatteryInfo(), nullptr);
  EXPECT_FALSE(info->isHasBattery());
  ports.records->list = std::vector<std::shared_ptr<const Dictionary>>();
  EXPECT_EQ(info->getAdvancedBatteryInfo(), nullptr);
  EXPECT_FALSE(info->isHasBattery());
}

TEST_F(BatteryReadings, TheEntryIsThePlatforms) {
  EXPECT_EQ(info->getMoreAdvancedBatteryInfo(), nullptr);
  EXPECT_EQ(info->getMoreAdvancedBatteryInfo(), nullptr);
  const auto properties = entry();
  EXPECT_EQ(info->getMoreAdvancedBatteryInfo(), properties);
}

}  // namespace
}  // namespace vantile::testing
