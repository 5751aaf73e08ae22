#include <cmath>

#include "unit/power/battery_fixture.h"

namespace vantile::testing {
namespace {

/// Each branch of an update, with and without somebody to tell.
class BatteryBranches : public Battery {
 protected:
  const Source draining;  // 60 % on battery
  const Source plugged{.state = "AC Power"};
  const Source charging{
      .state = "AC Power", .charging = true, .minutesToFull = Value(std::int64_t{95})};

  void tellNobody() { info->setDelegate(nullptr); }
  void tellNothing() { info->setDelegate(std::make_shared<BatteryDelegate>()); }
};

// On battery, and the estimate is not known.

TEST_F(BatteryBranches, OnBatteryWithoutAnEstimateItIsCalculating) {
  EXPECT_EQ(update(unknown, draining), Told{"calculating 60"});
  EXPECT_EQ(update(unlimited, draining), Told{"calculating 60"});
}

TEST_F(BatteryBranches, CalculatingKeepsThePercentageThatWasToldOf) {
  update(unknown, ofPercent(draining, 10));
  EXPECT_EQ(info->previousPercent(), 0);
  EXPECT_EQ(info->currentPercent(), 10);
  for (const auto none : {true, false}) {
    none ? tellNobody() : tellNothing();
    update(unknown, ofPercent(draining, 10));
    EXPECT_EQ(info->previousPercent(), 0);
  }
}

TEST_F(BatteryBranches, OnlyAnEstimateOfExactlyOneLessThanZeroIsUnknown) {
  EXPECT_EQ(update(-1.5, draining), Told{"remaining 0:00"});
  EXPECT_EQ(update(-0.5, draining), Told{"remaining 0:00"});
}

TEST_F(BatteryBranches, CalculatingNeedsBatteryPower) {
  EXPECT_EQ(update(unknown, plugged), Told{"remaining 0:00"});
}

TEST_F(BatteryBranches, CalculatingNeedsThatItIsKnownNotToCharge) {
  auto source = draining;
  source.charging = std::nullopt;
  EXPECT_EQ(update(unknown, source), Told{"remaining 0:00"});
  source.charging = true;
  EXPECT_EQ(update(unknown, source), Told{"remaining 0:00"});
}

TEST_F(BatteryBranches, OnlyTheEstimateTellsOfExternalPower) {
  auto source = draining;
  source.charging = std::nullopt;
  EXPECT_EQ(update(unlimited, source), Told{"battery charged"});
  source.charging = true;
  source.minutesToFull = Value(5);
  EXPECT_EQ(update(unlimited, source), (Told{"charging remaining 0:05", "left 60%"}));
  source.state = "Off Line";
  source.charging = false;
  EXPECT_EQ(update(unlimited, source), Told{"battery charged"});
  EXPECT_EQ(update(unknown, source), Told{"remaining 0:00"});
}

TEST_F(BatteryBranches, WithoutOneOperationTheOthersAreToldTheSame) {
  const auto day = [this] {
    info->setPreviousPercent(0);
    Told all;
    for (const auto& each :
         {update(unknown, draining), update(600, ofPercent(draining, 15)),
          update(unlimited, charging), update(unlimited, {.state = "AC Power", .charging = true}),
          update(unlimited, ofPercent(plugged, 100))})
      all.insert(all.end(), each.begin(), each.end());
    return all;
  };
  const Told whole = {"calculating 60",          "remaining 0:10", "left 15%",
                      "charging remaining 1:35", "left 60%",       "charging calculating",
                      "battery charged",         "charged"};
  EXPECT_EQ(day(), whole);
  const auto without = [&](auto operation, const std::string& line) {
    const auto kept = std::exchange((*delegate).*operation, nullptr);
    Told rest = whole;
    std::erase_if(rest, [&](const auto& each) { return each.starts_with(line); });
    EXPECT_EQ(day(), rest) << line;
    EXPECT_EQ(info->previousPercent(), line == "charged" ? 60 : 100) << line;
    (*delegate).*operation = kept;
  };
  without(&BatteryDelegate::batteryCalculating, "calculating");
  without(&BatteryDelegate::batteryWithRemaining, "remaining");
  without(&BatteryDelegate::batteryRemainingWithLeft, "left");
  without(&BatteryDelegate::batteryChargingCalculating, "charging calculating");
  without(&BatteryDelegate::batteryChargingWithRemaining, "charging remaining");
  without(&BatteryDelegate::batteryCharged, "battery charged");
  without(&BatteryDelegate::charged, "charged");
}

// On battery.

TEST_F(BatteryBranches, TheTimeLeftIsToldAtEveryUpdate) {
  EXPECT_EQ(update(3900, draining), Told{"remaining 1:05"});
  EXPECT_EQ(update(3900, draining), Told{"remaining 1:05"});
  EXPECT_EQ(update(59, draining), Told{"remaining 0:00"});
  EXPECT_EQ(update(60 * 60 * 100, draining), Told{"remaining 100:00"});
}

TEST_F(BatteryBranches, AnEstimateIsCutToWholeSecondsAndToWhatAnIntegerHolds) {
  EXPECT_EQ(update(3599.999, draining), Told{"remaining 0:59"});
  EXPECT_EQ(update(1e300, draining), Told{"remaining 596523:14"});
  EXPECT_EQ(update(-1e300, draining), Told{"remaining -596523:-14"});
  EXPECT_EQ(update(std::nan(""), draining), Told{"remaining 0:00"});
  EXPECT_EQ(update(HUGE_VAL, draining), Told{"remaining 596523:14"});
}

TEST_F(BatteryBranches, DischargingTheChargeIsToldFromTwentyPercentDown) {
  EXPECT_EQ(update(600, ofPercent(draining, 21)), Told{"remaining 0:10"});
  EXPECT_EQ(info->previousPercent(), 21);
  EXPECT_EQ(update(600, ofPercent(draining, 20)), (Told{"remaining 0:10", "left 20%"}));
  EXPECT_EQ(info->previousPercent(), 20);
  EXPECT_EQ(update(600, ofPercent(draining, 19)), (Told{"remaining 0:10", "left 19%"}));
}

TEST_F(BatteryBranches, DischargingTheSameChargeIsToldOnce) {
  update(600, ofPercent(draining, 15));
  EXPECT_EQ(update(540, ofPercent(draining, 15)), Told{"remaining 0:09"});
}

TEST_F(BatteryBranches, NoChargeAtFirstIsTheOneThatWasToldOf) {
  EXPECT_EQ(update(60, ofPercent(draining, 0)), Told{"remaining 0:01"});
}

TEST_F(BatteryBranches, DischargingTheChargeCountsAsToldAlsoWhereNobodyIs) {
  tellNobody();
  update(600, ofPercent(draining, 15));
  EXPECT_EQ(info->previousPercent(), 15);
  tellNothing();
  update(600, ofPercent(draining, 14));
  EXPECT_EQ(info->previousPercent(), 14);
  info->setDelegate(delegate);
  EXPECT_EQ(update(600, ofPercent(draining, 14)), Told{"remaining 0:10"});
}

TEST_F(BatteryBranches, DischargingIsWhateverIsNotUnlimited) {
  EXPECT_EQ(update(600, ofPercent(charging, 15)), (Told{"remaining 0:10", "left 15%"}));
}

// On external power, not charging.

TEST_F(BatteryBranches, PluggedInAndNotChargingItIsChargedAtEveryUpdate) {
  EXPECT_EQ(update(unlimited, plugged), Told{"battery charged"});
  EXPECT_EQ(update(unlimited, plugged), Told{"battery charged"});
}

TEST_F(BatteryBranches, WithoutWordOfChargingItIsCharged) {
  auto source = plugged;
  source.charging = std::nullopt;
  EXPECT_EQ(update(unlimited, source), Told{"battery charged"});
}

TEST_F(BatteryBranches, FullItIsToldOnceThatItIsCharged) {
  EXPECT_EQ(update(unlimited, ofPercent(plugged, 99)), Told{"battery charged"});
  EXPECT_EQ(info->previousPercent(), 0);
  EXPECT_EQ(update(unlimited, ofPercent(plugged, 100)), (Told{"battery charged", "charged"}));
  EXPECT_EQ(info->previousPercent(), 100);
  EXPECT_EQ(update(unlimited, ofPercent(plugged, 100)), Told{"battery charged"});
}

TEST_F(BatteryBranches, FullKeepsThePercentageWhereNobodyCanBeTold) {
  tellNobody();
  update(unlimited, ofPercent(plugged, 100));
  EXPECT_EQ(info->previousPercent(), 0);
  delegate->charged = nullptr;
  info->setDelegate(delegate);
  EXPECT_EQ(update(unlimited, ofPercent(plugged, 100)), Told{"battery charged"});
  EXPECT_EQ(info->previousPercent(), 0);
}

TEST_F(BatteryBranches, FullIsToldOfWithoutTheOtherOperations) {
  auto only = std::make_shared<BatteryDelegate>();
  only->charged = delegate->charged;
  info->setDelegate(only);
  EXPECT_EQ(update(unlimited, ofPercent(plugged, 100)), Told{"charged"});
}

TEST_F(BatteryBranches, FullComparesCapacitiesAsIntegers) {
  auto source = plugged;
  source.now = Value(4999.9);
  source.full = Value(4999.2);
  EXPECT_EQ(update(unlimited, source), (Told{"battery charged", "charged"}));
  source.now = Value(1e12);  // both are the greatest integer
  source.full = Value(2e12);
  EXPECT_EQ(update(unlimited, source), (Told{"battery charged", "charged"}));
}

// On external power, charging.

TEST_F(BatteryBranches, ChargingWithoutATimeItIsCalculating) {
  auto source = charging;
  for (const auto& minutes : {std::optional<Value>(), std::optional(Value(0)),
                              std::optional(Value(-1)), std::optional(Value(0.9))}) {
    source.minutesToFull = minutes;
    EXPECT_EQ(update(unlimited, source), Told{"charging calculating"});
    EXPECT_EQ(info->previousPercent(), 0);
  }
}

TEST_F(BatteryBranches, ChargingTellsTheTimeUntilItIsFullAtEveryUpdate) {
  EXPECT_EQ(update(unlimited, ofPercent(charging, 30)), Told{"charging remaining 1:35"});
  EXPECT_EQ(update(unlimited, ofPercent(charging, 30)), Told{"charging remaining 1:35"});
  auto source = ofPercent(charging, 30);
  source.minutesToFull = Value(1);
  EXPECT_EQ(update(unlimited, source), Told{"charging remaining 0:01"});
  source.minutesToFull = Value(1e18);
  EXPECT_EQ(update(unlimited, source), Told{"charging remaining 35791394:07"});
}

TEST_F(BatteryBranches, ChargingTheChargeIsToldFromFiftyPercentUp) {
  EXPECT_EQ(update(unlimited, ofPercent(charging, 49)), Told{"charging remaining 1:35"});
  EXPECT_EQ(info->previousPercent(), 49);
  EXPECT_EQ(update(unlimited, ofPercent(charging, 50)),
            (Told{"charging remaining 1:35", "left 50%"}));
  EXPECT_EQ(info->previousPercent(), 50);
  EXPECT_EQ(update(unlimited, ofPercent(charging, 51)),
            (Told{"charging remaining 1:35", "left 51%"}));
}

TEST_F(BatteryBranches, ChargingTheSameChargeIsToldOnce) {
  update(unlimited, ofPercent(charging, 70));
  EXPECT_EQ(update(unlimited, ofPercent(charging, 70)), Told{"charging remaining 1:35"});
}

TEST_F(BatteryBranches, OnlyWordOfABooleanIsWordOfCharging) {
  for (const auto& word : {Value(std::int64_t{1}), Value(1.0), Value(std::string("true"))}) {
    auto source = std::make_shared<Dictionary>(*charging.description());
    source->set("Is Charging", word);
    ports.sources->sources = {source};
    ports.remaining->seconds = unlimited;
    told.clear();
    info->updateStatus();
    EXPECT_EQ(told, Told{"battery charged"});
  }
}

TEST_F(BatteryBranches, WhoIsToldFindsTheStateAndItsTimerAndTheChargeThatWasToldBefore) {
  std::vector<std::int64_t> before;
  const auto look = [&] {
    before.push_back(info->previousPercent());
    EXPECT_EQ(info->prevPowerSource() == "Battery Power", info->unpluggedTimer() != nullptr);
    told.push_back(info->prevPowerSource().value_or("none"));
  };
  delegate->batteryCalculating = [&](double) { look(); };
  for (auto* const operation :
       {&delegate->batteryWithRemaining, &delegate->batteryRemainingWithLeft,
        &delegate->batteryChargingWithRemaining})
    *operation = [&](const std::string&) { look(); };
  for (auto* const operation :
       {&delegate->batteryChargingCalculating, &delegate->batteryCharged, &delegate->charged})
    *operation = [&] { look(); };
  EXPECT_EQ(update(unknown, draining), Told{"Battery Power"});
  EXPECT_EQ(update(unlimited, ofPercent(plugged, 100)), Told(2, "AC Power"));
  EXPECT_EQ(update(600, ofPercent(draining, 15)), Told(2, "Battery Power"));
  EXPECT_EQ(update(unlimited, ofPercent(charging, 70)), Told(2, "AC Power"));
  EXPECT_EQ(before, (std::vector<std::int64_t>{0, 0, 0, 100, 100, 15, 15}));
  auto calculating = charging;
  calculating.minutesToFull = std::nullopt;
  calculating.state = "Off Line";
  EXPECT_EQ(update(unlimited, calculating), Told{"Off Line"});
}

TEST_F(BatteryBranches, ChargingTheChargeCountsAsToldAlsoWhereNobodyIs) {
  tellNobody();
  update(unlimited, ofPercent(charging, 70));
  EXPECT_EQ(info->previousPercent(), 70);
  tellNothing();
  update(unlimited, ofPercent(charging, 71));
  EXPECT_EQ(info->previousPercent(), 71);
}

}  // namespace
}  // namespace vantile::testing
