#include "unit/power/battery_fixture.h"

namespace vantile::testing {
namespace {

/// Every property can be read and written, and is nil or 0 at first.
class BatteryProperties : public Battery {
 protected:
  template <class Held, class Get, class Set>
  void expectProperty(Get get, Set set, const Held& first, const Held& second) {
    EXPECT_EQ((info.get()->*get)(), first);
    (info.get()->*set)(second);
    EXPECT_EQ((info.get()->*get)(), second);
  }
};

using Info = KVDBatteryInfo;

TEST_F(BatteryProperties, OfText) {
  const Info::Text nil, text = "text";
  expectProperty(&Info::batteryName, &Info::setBatteryName, nil, text);
  expectProperty(&Info::batteryHealth, &Info::setBatteryHealth, nil, text);
  expectProperty(&Info::batteryCurrentCapacityChange, &Info::setBatteryCurrentCapacityChange, nil,
                 text);
  expectProperty(&Info::powerSource, &Info::setPowerSource, nil, text);
  expectProperty(&Info::hardwareSN, &Info::setHardwareSN, nil, text);
  expectProperty(&Info::health, &Info::setHealth, nil, text);
  expectProperty(&Info::timeSinceUnpluggedTranslated, &Info::setTimeSinceUnpluggedTranslated, nil,
                 text);
  expectProperty(&Info::prevPowerSource, &Info::setPrevPowerSource, nil, text);
}

TEST_F(BatteryProperties, OfNumberObjects) {
  const Info::Number nil, number = Value(std::int64_t{7});
  expectProperty(&Info::batteryMaxCapacity, &Info::setBatteryMaxCapacity, nil, number);
  expectProperty(&Info::batteryCurrentCapacity, &Info::setBatteryCurrentCapacity, nil, number);
  expectProperty(&Info::batteryAmperage, &Info::setBatteryAmperage, nil, number);
  expectProperty(&Info::batteryVoltage, &Info::setBatteryVoltage, nil, number);
  expectProperty(&Info::batteryCycleCount, &Info::setBatteryCycleCount, nil, number);
  const Info::Real none, real = 7.5;
  expectProperty(&Info::batteryWatt, &Info::setBatteryWatt, none, real);
  expectProperty(&Info::batteryTemperature, &Info::setBatteryTemperature, none, real);
}

TEST_F(BatteryProperties, OfPlainNumbers) {
  const std::int64_t wide = std::int64_t{1} << 40;
  expectProperty(&Info::currentPercent, &Info::setCurrentPercent, std::int64_t{0}, wide);
  expectProperty(&Info::previousPercent, &Info::setPreviousPercent, std::int64_t{0}, wide);
  expectProperty(&Info::unpluggedTimerCount, &Info::setUnpluggedTimerCount, std::int64_t{0}, wide);
  expectProperty(&Info::capacity, &Info::setCapacity, 0, -7);
  expectProperty(&Info::current, &Info::setCurrent, 0, -7);
  expectProperty(&Info::cycleCount, &Info::setCycleCount, 0, -7);
  expectProperty(&Info::fahrenheit, &Info::setFahrenheit, 0.0f, 7.5f);
  expectProperty(&Info::celsius, &Info::setCelsius, 0.0f, 7.5f);
  expectProperty(&Info::watt, &Info::setWatt, 0.0f, 7.5f);
  expectProperty(&Info::isCharged, &Info::setIsCharged, false, true);
  expectProperty(&Info::isCharging, &Info::setIsCharging, false, true);
}

TEST_F(BatteryProperties, OfObjects) {
  const std::shared_ptr<const Image> noImage;
  expectProperty(&Info::batteryImage, &Info::setBatteryImage, noImage,
                 std::shared_ptr<const Image>(std::make_shared<Image>()));
  expectProperty(&Info::unpluggedTimer, &Info::setUnpluggedTimer, std::shared_ptr<Timer>(),
                 std::make_shared<Timer>());
  EXPECT_EQ(info->delegate(), delegate);
  info->setDelegate(nullptr);
  EXPECT_EQ(info->delegate(), nullptr);
}

TEST_F(BatteryProperties, OfTheHostsOwnUseAreNeverWritten) {
  const auto image = std::make_shared<const Image>(Image{"battery", "", nullptr});
  info->setBatteryImage(image);
  info->setBatteryName("mine");
  info->setBatteryCurrentCapacityChange("mine");
  info->setPowerSource("mine");
  info->setHardwareSN("mine");
  info->setIsCharged(true);
  info->setIsCharging(true);
  info->setCurrent(7);
  ports.sources->sources = {Source{}.description()};
  info->updateCurrentStatus();
  EXPECT_EQ(info->batteryImage(), image);
  for (const auto& text : {info->batteryName(), info->batteryCurrentCapacityChange(),
                           info->powerSource(), info->hardwareSN()})
    EXPECT_EQ(text, "mine");
  EXPECT_TRUE(info->isCharged() && info->isCharging());
  EXPECT_EQ(info->current(), 7);
}

TEST_F(BatteryProperties, ThePercentageToldOfMayBeSetBack) {
  update(600, ofPercent({}, 15));
  info->setPreviousPercent(0);
  EXPECT_EQ(update(600, ofPercent({}, 15)), (Told{"remaining 0:10", "left 15%"}));
}

}  // namespace
}  // namespace vantile::testing
