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
  /// The properties of a battery that holds so much.
  static std::shared_ptr<Dictionary> holding(std::int64_t percent) {
    auto properties = std::make_shared<Dictionary>();
    properties->set("isHasBattery", true);
    properties->set("powerSourceState", "Battery Power");
    properties->set("currentPercent", percent);
    properties->set("batteryHealth", "Good");
    properties->set("batteryCycleCount", std::int64_t{213});
    properties->set("batteryWatt", -10.04);
    properties->set("batteryTemperature", 30.12);
    properties->set("timeSinceUnpluggedTranslated", "0:12");
    return properties;
  }
  void tellProperties(const std::shared_ptr<Dictionary>& properties) {
    take("updateCurrentStatus", {Value(properties)});
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
  take("batteryWithRemaining", {"3:24"});
  tellProperties(holding(50));
  EXPECT_EQ(rows({26, 3})[0], "██████████──────────  50 %");
  EXPECT_EQ(pane.note(), "50 %");
  EXPECT_EQ(pane.rows().wanted, 3);
}

TEST_F(HostBatteryPane, ShowsTheTimeLeft) {
  take("batteryWithRemaining", {"3:24"});
  take("batteryRemainingWithLeft", {"50%"});
  tellProperties(holding(50));
  EXPECT_EQ(rows()[1], "on battery, 3:24 left, unplugged for 0:12");
}

TEST_F(HostBatteryPane, ShowsNoTimeThatIsNotKnown) {
  take("batteryCalculating", {50.0});
  tellProperties(holding(50));
  EXPECT_EQ(rows()[1], "on battery, unplugged for 0:12");
  take("batteryWithRemaining", {"0:00"});
  EXPECT_EQ(rows()[1], "on battery, unplugged for 0:12");
}

TEST_F(HostBatteryPane, ShowsTheTimeUntilItIsFull) {
  take("batteryChargingWithRemaining", {"1:15"});
  tellProperties(holding(50));
  EXPECT_EQ(rows()[1], "charging, 1:15 to full");
  take("batteryChargingCalculating");
  EXPECT_EQ(rows()[1], "charging");
}

TEST_F(HostBatteryPane, ShowsThatItIsFullOrAtRest) {
  take("batteryCharged");
  tellProperties(holding(100));
  EXPECT_EQ(rows()[1], "full");
  tellProperties(holding(80));
  EXPECT_EQ(rows()[1], "on external power, not charging");
}

TEST_F(HostBatteryPane, WithoutAnEstimateOnExternalPowerItIsNotOnBattery) {
  take("batteryWithRemaining", {"0:00"});
  auto properties = holding(80);
  properties->set("powerSourceState", "AC Power");
  tellProperties(properties);
  EXPECT_EQ(rows()[1], "on external power");
}

TEST_F(HostBatteryPane, ShowsHealthCyclesPowerAndTemperature) {
  take("batteryCharged");
  tellProperties(holding(80));
  EXPECT_EQ(rows()[2], "health Good   213 cycles   10.0 W   30.1 °C");
}

TEST_F(HostBatteryPane, LeavesOutWhatIsNotTold) {
  take("batteryCharged");
  auto properties = holding(80);
  for (const auto* key : {"batteryHealth", "batteryCycleCount", "batteryTemperature"})
    properties->remove(key);
  tellProperties(properties);
  EXPECT_EQ(rows()[2], "10.0 W");
  properties->remove("batteryWatt");
  properties->set("batteryCycleCount", std::int64_t{1});
  tellProperties(properties);
  EXPECT_EQ(rows()[2], "1 cycle");
}

TEST_F(HostBatteryPane, ABarEndsAtItsEnd) {
  take("batteryCharged");
  tellProperties(holding(150));
  EXPECT_EQ(rows({26, 3})[0], "████████████████████ 150 %");
  tellProperties(holding(-5));
  EXPECT_EQ(rows({26, 3})[0], "────────────────────  -5 %");
}

TEST_F(HostBatteryPane, ANarrowPaneIsCutOff) {
  take("batteryWithRemaining", {"3:24"});
  tellProperties(holding(50));
  for (int width = 0; width < 30; ++width)
    for (int height = 0; height < 4; ++height) EXPECT_NO_FATAL_FAILURE(rows({width, height}));
  EXPECT_EQ(rows({12, 3})[1], "on battery,…");
}

}  // namespace
}  // namespace vantile::host
