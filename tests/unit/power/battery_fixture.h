#pragma once

#include <gtest/gtest.h>

#include <cstdint>
#include <memory>
#include <optional>
#include <sstream>
#include <string>
#include <vector>

#include "vantile/power/battery_info.h"

#include "fakes/fake_power_ports.h"
#include "fakes/stepped_loop.h"

namespace vantile::testing {

using Told = std::vector<std::string>;

/// What a test says of one power source; nothing leaves the key out.
struct Source {
  std::optional<std::string> state = "Battery Power";
  std::optional<bool> charging = false;
  std::optional<Value> now = Value(std::int64_t{60});
  std::optional<Value> full = Value(std::int64_t{100});
  std::optional<Value> minutesToFull = {};
  std::optional<Value> present = Value(true);
  std::optional<std::string> health = "Good";

  std::shared_ptr<const Dictionary> description() const {
    auto keys = std::make_shared<Dictionary>();
    keys->set("Power Source State", state);
    keys->set("Is Charging", charging);
    keys->set("Current Capacity", now);
    keys->set("Max Capacity", full);
    keys->set("Time to Full Charge", minutesToFull);
    keys->set("Is Present", present);
    keys->set("BatteryHealth", health);
    return keys;
  }
};

inline Source ofPercent(Source source, std::int64_t percent) {
  source.now = Value(percent);
  return source;
}

/// A `KVDBatteryInfo` on fakes, whose delegate's calls are noted as "operation argument".
class Battery : public ::testing::Test {
 protected:
  static constexpr double unknown = -1, unlimited = -2;

  Battery() {
    delegate->batteryCalculating = [this](double percent) {
      std::ostringstream line;
      line << "calculating " << percent;
      told.push_back(line.str());
    };
    delegate->batteryWithRemaining = [this](const std::string& time) {
      told.push_back("remaining " + time);
    };
    delegate->batteryRemainingWithLeft = [this](const std::string& percent) {
      told.push_back("left " + percent);
    };
    delegate->batteryChargingCalculating = [this] { told.push_back("charging calculating"); };
    delegate->batteryChargingWithRemaining = [this](const std::string& time) {
      told.push_back("charging remaining " + time);
    };
    delegate->batteryCharged = [this] { told.push_back("battery charged"); };
    delegate->charged = [this] { told.push_back("charged"); };
    info->setDelegate(delegate);
  }

  /// One update of these sources with that estimate, and what it told.
  Told update(double estimate, const std::vector<Source>& sources) {
    ports.remaining->seconds = estimate;
    ports.sources->sources.clear();
    for (const auto& source : sources) ports.sources->sources.push_back(source.description());
    told.clear();
    info->updateStatus();
    return told;
  }
  Told update(double estimate, const Source& source) {
    return update(estimate, std::vector{source});
  }

  /// How long it was unplugged, as of an update of this source.
  std::string unplugged(double estimate, const Source& source) {
    update(estimate, source);
    return info->timeSinceUnpluggedTranslated().value_or("none");
  }

  FakePowerPorts ports;
  SteppedLoop loop;
  std::shared_ptr<KVDBatteryInfo> info = KVDBatteryInfo::init();
  std::shared_ptr<BatteryDelegate> delegate = std::make_shared<BatteryDelegate>();
  Told told;
};

}  // namespace vantile::testing
