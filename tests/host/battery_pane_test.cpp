#include "dashboard/battery_pane.h"

#include <gtest/gtest.h>

#include <memory>
#include <string>
#include <vector>

#include "drawn.h"

namespace vantile::host {
namespace {

class HostBatteryPane : public testing::Test {
 protected:
  void take(std::string_view operation, std::vector<std::optional<Value>> arguments = {}) {
    figures->take({"battery", operation, std::move(arguments)});
  }
  /// A power source that the library tells of so.
  static std::shared_ptr<Dictionary> source(std::int64_t percent, std::string operation,
                                            std::optional<std::string> time = {}) {
    auto source = std::make_shared<Dictionary>();
    source->set("operation", std::move(operation));
    source->set("time", time);
    source->set("powerSourceState", "Battery Power");
    source->set("currentPercent", percent);
    source->set("batteryHealth", "Good");
    return source;
  }
  /// The properties of a machine with these, and with the readings of the first.
  static std::shared_ptr<Dictionary> holding(const std::vector<std::shared_ptr<Dictionary>>& all) {
    auto properties = std::make_shared<Dictionary>();
    properties->set("isHasBattery", true);
    properties->set("powerSourceState", "Battery Power");
    properties->set("currentPercent", std::int64_t{99});  // the last one's
    properties->set("batteryHealth", "Poor");
    properties->set("batteryCycleCount", std::int64_t{213});
    properties->set("batteryWatt", -10.04);
    properties->set("batteryTemperature", 30.12);
    properties->set("timeSinceUnpluggedTranslated", "0:12");
    properties->set("unpluggedTimerCount", std::int64_t{720});
    auto sources = std::make_shared<Array>();
    for (const auto& source : all) sources->emplace_back(source);
    properties->set("sources", std::move(sources));
    return properties;
  }
  static std::shared_ptr<Dictionary> holding(std::int64_t percent, std::string operation,
                                             std::optional<std::string> time = {}) {
    return holding({source(percent, std::move(operation), std::move(time))});
  }
  void tellProperties(const std::shared_ptr<Dictionary>& properties) {
    take("updateCurrentStatus", {Value(properties)});
  }
  /// As at the charger, before it was unplugged.
  void tellOfCharger() {
    auto properties = holding(80, "batteryCharged");
    properties->set("powerSourceState", "AC Power");
    tellProperties(properties);
  }
  /// What it draws, without the blanks behind.
  std::vector<std::string> rows(Size size = {60, 3}) const {
    auto drawnRows = drawn(pane, size);
    for (auto& row : drawnRows) row.resize(row.find_last_not_of(' ') + 1);
    return drawnRows;
  }

  std::shared_ptr<BatteryFigures> figures = std::make_shared<BatteryFigures>();
  BatteryPane pane{figures};
};

TEST_F(HostBatteryPane, WaitsBeforeTheFirstReading) {
  EXPECT_TRUE(contains(rows(), "waiting"));
  EXPECT_EQ(pane.note(), "");
}

TEST_F(HostBatteryPane, SaysPlainlyThatThereIsNone) {
  auto none = std::make_shared<Dictionary>();
  none->set("isHasBattery", false);
  tellProperties(none);
  EXPECT_EQ(rows()[0], "no battery");
  EXPECT_EQ(pane.rows().wanted, 1);
  EXPECT_EQ(pane.note(), "");
}

TEST_F(HostBatteryPane, ShowsTheChargeAsABar) {
  tellProperties(holding(50, "batteryWithRemaining", "3:24"));
  EXPECT_EQ(rows({26, 3})[0], "██████████──────────  50 %");
  EXPECT_EQ(pane.note(), "50 %");
  EXPECT_EQ(pane.rows().wanted, 3);
  EXPECT_EQ(pane.rows().minimum, 3);
}

TEST_F(HostBatteryPane, ShowsTheTimeLeft) {
  tellOfCharger();
  tellProperties(holding(50, "batteryWithRemaining", "3:24"));
  EXPECT_EQ(rows()[1], "on battery, 3:24 left, unplugged for 0:12");
}

TEST_F(HostBatteryPane, OfAnUnpluggingThatWasNotSeenItKnowsTheLeastTime) {
  tellProperties(holding(50, "batteryWithRemaining", "3:24"));
  EXPECT_EQ(rows()[1], "on battery, 3:24 left, unplugged for at least 0:12");
}

TEST_F(HostBatteryPane, BeforeTheFirstMinuteItDoesNotTellSinceWhenItIsUnplugged) {
  auto properties = holding(50, "batteryWithRemaining", "3:24");
  properties->set("unpluggedTimerCount", std::int64_t{0});
  properties->set("timeSinceUnpluggedTranslated", "0:00");
  tellProperties(properties);
  EXPECT_EQ(rows()[1], "on battery, 3:24 left");
}

TEST_F(HostBatteryPane, ShowsNoTimeThatIsNotKnown) {
  tellOfCharger();
  tellProperties(holding(50, "batteryCalculating"));
  EXPECT_EQ(rows()[1], "on battery, unplugged for 0:12");
  tellProperties(holding(50, "batteryWithRemaining", "0:00"));
  EXPECT_EQ(rows()[1], "on battery, unplugged for 0:12");
}

TEST_F(HostBatteryPane, ShowsTheTimeUntilItIsFull) {
  tellProperties(holding(50, "batteryChargingWithRemaining", "1:15"));
  EXPECT_EQ(rows()[1], "charging, 1:15 to full");
  tellProperties(holding(50, "batteryChargingCalculating"));
  EXPECT_EQ(rows()[1], "charging");
}

TEST_F(HostBatteryPane, ShowsThatItIsFullOrAtRest) {
  tellProperties(holding(100, "batteryCharged"));
  EXPECT_EQ(rows()[1], "full");
  tellProperties(holding(80, "batteryCharged"));
  EXPECT_EQ(rows()[1], "on external power, not charging");
}

TEST_F(HostBatteryPane, WithoutAnEstimateOnExternalPowerItIsNotOnBattery) {
  auto properties = source(80, "batteryWithRemaining", "0:00");
  properties->set("powerSourceState", "AC Power");
  tellProperties(holding({properties}));
  EXPECT_EQ(rows()[1], "on external power");
}

TEST_F(HostBatteryPane, ShowsHealthCyclesPowerAndTemperature) {
  tellProperties(holding(80, "batteryCharged"));
  EXPECT_EQ(rows()[2], "health Good   213 cycles   10.0 W   30.1 °C");
}

TEST_F(HostBatteryPane, LeavesOutWhatIsNotTold) {
  auto battery = source(80, "batteryCharged");
  battery->remove("batteryHealth");
  auto properties = holding({battery});
  for (const auto* key : {"batteryCycleCount", "batteryTemperature"}) properties->remove(key);
  tellProperties(properties);
  EXPECT_EQ(rows()[2], "10.0 W");
  properties->remove("batteryWatt");
  properties->set("batteryCycleCount", std::int64_t{1});
  tellProperties(properties);
  EXPECT_EQ(rows()[2], "1 cycle");
}

TEST_F(HostBatteryPane, ABatteryThatWentIsShownNoMore) {
  tellProperties(holding(50, "batteryWithRemaining", "3:24"));
  auto none = std::make_shared<Dictionary>();
  none->set("isHasBattery", false);
  tellProperties(none);
  EXPECT_EQ(rows()[0], "no battery");
  EXPECT_EQ(rows()[1], "");
}

TEST_F(HostBatteryPane, OfSeveralEachHasItsOwnChargeStateAndHealth) {
  auto full = source(100, "batteryCharged");
  full->set("batteryHealth", "Fair");
  tellProperties(holding({source(40, "batteryChargingWithRemaining", "0:45"), full}));
  EXPECT_EQ(pane.rows().wanted, 5);
  EXPECT_EQ(pane.rows().minimum, 3);
  EXPECT_EQ(pane.note(), "40 %, 100 %");
  EXPECT_EQ(rows({28, 5})[0], "1 ████████────────────  40 %");
  EXPECT_EQ(rows({60, 5})[1], "  charging, 0:45 to full   health Good");
  EXPECT_EQ(rows({28, 5})[2], "2 ████████████████████ 100 %");
  EXPECT_EQ(rows({60, 5})[3], "  full   health Fair");
  EXPECT_EQ(rows({60, 5})[4], "battery 1   213 cycles   10.0 W   30.1 °C");
}

TEST_F(HostBatteryPane, TheTimeLeftIsThatOfAllTogether) {
  tellOfCharger();
  tellProperties(holding(
      {source(40, "batteryWithRemaining", "3:24"), source(90, "batteryWithRemaining", "3:24")}));
  EXPECT_EQ(pane.rows().wanted, 6);
  EXPECT_EQ(rows({60, 6})[1], "  on battery   health Good");
  EXPECT_EQ(rows({60, 6})[4], "together 3:24 left, unplugged for 0:12");
}

TEST_F(HostBatteryPane, WithFewRowsSeveralGoWithoutTheirStates) {
  tellProperties(holding(
      {source(40, "batteryCharged"), source(50, "batteryCharged"), source(60, "batteryCharged")}));
  EXPECT_TRUE(rows({60, 4})[2].ends_with(" 60 %"));
  EXPECT_EQ(rows({60, 4})[3], "battery 1   213 cycles   10.0 W   30.1 °C");
  EXPECT_TRUE(rows({60, 2})[0].ends_with(" 40 %"));
  EXPECT_EQ(rows({60, 2})[1], "and 2 more");
  EXPECT_TRUE(rows({60, 1})[0].ends_with(" 40 %"));
}

TEST_F(HostBatteryPane, ABarEndsAtItsEnd) {
  tellProperties(holding(150, "batteryCharged"));
  EXPECT_EQ(rows({26, 3})[0], "████████████████████ 150 %");
  tellProperties(holding(-5, "batteryCharged"));
  EXPECT_EQ(rows({26, 3})[0], "────────────────────  -5 %");
}

TEST_F(HostBatteryPane, ANarrowPaneIsCutOff) {
  const auto battery = source(50, "batteryWithRemaining", "3:24");
  for (const auto& all : {std::vector{battery, battery, battery}, std::vector{battery}}) {
    tellProperties(holding(all));
    for (int width = 0; width < 30; ++width)
      for (int height = 0; height < 8; ++height) EXPECT_NO_FATAL_FAILURE(rows({width, height}));
  }
  EXPECT_EQ(rows({12, 3})[1], "on battery,…");
}

TEST_F(HostBatteryPane, OtherReportsAndWhatIsNoSourceAreIgnored) {
  take("batteryWithRemaining", {"3:24"});
  take("updateCurrentStatus", {std::nullopt});
  EXPECT_FALSE(figures->known());
  auto properties = holding({});
  properties->set("sources", std::make_shared<Array>(Array{"text"}));
  tellProperties(properties);
  EXPECT_EQ(rows()[0], "no battery");
}

}  // namespace
}  // namespace vantile::host
