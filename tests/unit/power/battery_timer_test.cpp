#include <chrono>
#include <limits>
#include <thread>

#include "unit/power/battery_fixture.h"

namespace vantile::testing {
namespace {

using std::chrono::minutes;
using std::chrono::seconds;

/// The time since the charger was unplugged, on a loop that is stepped.
class BatteryTimer : public Battery {
 protected:
  std::string onBattery() { return unplugged(3600, Source{}); }
  std::string onExternalPower() { return unplugged(unlimited, {.state = "AC Power"}); }
  std::string inAThirdState() { return unplugged(3600, {.state = "Off Line"}); }
};

TEST_F(BatteryTimer, CountsWholeMinutesFromTheUpdateThatSawBatteryPower) {
  EXPECT_EQ(onBattery(), "0:00");
  loop.advance(seconds(59));
  EXPECT_EQ(onBattery(), "0:00");
  loop.advance(seconds(1));
  EXPECT_EQ(onBattery(), "0:01");
  loop.advance(minutes(61));
  EXPECT_EQ(onBattery(), "1:02");
  EXPECT_EQ(info->unpluggedTimerCount(), 3720);
}

TEST_F(BatteryTimer, TheTextIsOfTheLatestUpdate) {
  onBattery();
  loop.advance(minutes(5));
  EXPECT_EQ(info->timeSinceUnpluggedTranslated(), "0:00");
  EXPECT_EQ(info->unpluggedTimerCount(), 300);
}

TEST_F(BatteryTimer, StopsOnExternalPowerAndKeepsItsCount) {
  onBattery();
  loop.advance(minutes(3));
  EXPECT_TRUE(info->unpluggedTimer()->isValid());
  EXPECT_EQ(onExternalPower(), "0:03");
  EXPECT_EQ(info->unpluggedTimer(), nullptr);
  loop.advance(minutes(10));
  EXPECT_EQ(onExternalPower(), "0:03");
}

TEST_F(BatteryTimer, BeginsAnewWithEachTimeOnBattery) {
  onBattery();
  loop.advance(minutes(3));
  onExternalPower();
  loop.advance(seconds(30));
  EXPECT_EQ(onBattery(), "0:00");
  loop.advance(minutes(1));
  EXPECT_EQ(onBattery(), "0:01");
}

TEST_F(BatteryTimer, DoesNotRunFromAFirstUpdateOnExternalPower) {
  onExternalPower();
  EXPECT_EQ(info->unpluggedTimer(), nullptr);
  loop.advance(minutes(10));
  EXPECT_EQ(onExternalPower(), "0:00");
}

TEST_F(BatteryTimer, RunsOnInAThirdState) {
  onBattery();
  const auto timer = info->unpluggedTimer();
  loop.advance(minutes(2));
  EXPECT_EQ(inAThirdState(), "0:02");
  EXPECT_EQ(info->prevPowerSource(), "Off Line");
  EXPECT_EQ(info->unpluggedTimer(), timer);
  loop.advance(minutes(2));
  EXPECT_EQ(inAThirdState(), "0:04");
}

TEST_F(BatteryTimer, BackFromAThirdStateASecondOneCountsToo) {
  onBattery();
  inAThirdState();
  EXPECT_EQ(onBattery(), "0:00");
  loop.advance(minutes(1));
  EXPECT_EQ(info->unpluggedTimerCount(), 120);
  loop.advance(minutes(2));
  EXPECT_EQ(onBattery(), "0:06");
}

TEST_F(BatteryTimer, OnlyTheLatestOneIsStoppedByExternalPower) {
  onBattery();
  inAThirdState();
  onBattery();
  loop.advance(minutes(1));
  EXPECT_EQ(onExternalPower(), "0:02");
  loop.advance(minutes(1));
  EXPECT_EQ(onExternalPower(), "0:03");
}

TEST_F(BatteryTimer, AStateThatIsMissingIsAThirdOne) {
  onBattery();
  EXPECT_EQ(unplugged(3600, {.state = std::nullopt}), "0:00");
  EXPECT_EQ(info->prevPowerSource(), std::nullopt);
  onBattery();
  loop.advance(minutes(1));
  EXPECT_EQ(info->unpluggedTimerCount(), 120);
}

TEST_F(BatteryTimer, ASourceThatIsNotPresentHasNoState) {
  unplugged(3600, {.present = Value(false)});
  EXPECT_EQ(info->prevPowerSource(), std::nullopt);
  EXPECT_EQ(info->unpluggedTimer(), nullptr);
}

TEST_F(BatteryTimer, EndsWithTheObject) {
  onBattery();
  loop.settle();
  const std::weak_ptr<KVDBatteryInfo> gone = info;
  const std::weak_ptr<Timer> timer = info->unpluggedTimer();
  info.reset();
  EXPECT_TRUE(gone.expired());
  EXPECT_TRUE(timer.expired());
}

TEST_F(BatteryTimer, EndsWithAnObjectThatGoesOnAnotherThread) {
  onBattery();
  inAThirdState();
  onBattery();
  loop.settle();
  const std::weak_ptr<KVDBatteryInfo> gone = info;
  const std::weak_ptr<Timer> timer = info->unpluggedTimer();
  std::thread([this] { info.reset(); }).join();
  EXPECT_TRUE(gone.expired());
  EXPECT_TRUE(timer.expired());
  const auto before = loop.driver().wakeups;
  loop.advance(minutes(2));
  EXPECT_LE(loop.driver().wakeups, before + 1);  // the one that learns that they are gone
}

TEST_F(BatteryTimer, ATimerThatAHostKeepsFindsItsObjectGone) {
  onBattery();
  const auto timer = info->unpluggedTimer();
  info.reset();
  EXPECT_TRUE(timer->isValid());
  loop.advance(minutes(2));
  EXPECT_TRUE(timer->isValid());
}

TEST_F(BatteryTimer, ACountThatCantGrowStays) {
  info->setUnpluggedTimerCount(std::numeric_limits<std::int64_t>::max() - 30);
  info->unpluggedTimerTick();
  EXPECT_EQ(info->unpluggedTimerCount(), std::numeric_limits<std::int64_t>::max());
  EXPECT_EQ(onExternalPower(), "2562047788015215:30");
}

TEST_F(BatteryTimer, ATickCountsAMinute) {
  info->unpluggedTimerTick();
  EXPECT_EQ(info->unpluggedTimerCount(), 60);
}

TEST_F(BatteryTimer, TheTimeIsInTheHostsFormatWhereThatHasItsTwoFieldsAlone) {
  info->setUnpluggedTimerCount(3720);
  ports.translations->texts["%1$ld:%2$02ld"] = "%2$ld min and %1$ld h";
  EXPECT_EQ(onExternalPower(), "2 min and 1 h");
  ports.translations->texts["%1$ld:%2$02ld"] = "%1$ld:%2$02ld%n";
  EXPECT_EQ(onExternalPower(), "1:02");
  for (const auto* format : {"%s", "%1$d:%2$02d", "%ld", "100%%", "", "%1$ld:%2$02ld %1$ld"}) {
    ports.translations->texts["%1$ld:%2$02ld"] = format;
    EXPECT_EQ(onExternalPower(), "1:02") << format;
  }
  ports.translations->texts["%1$ld:%2$02ld"] = "%ld h %02ld at 100%%";
  EXPECT_EQ(onExternalPower(), "1 h 02 at 100%");
}

}  // namespace
}  // namespace vantile::testing
