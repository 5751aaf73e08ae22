#include "vantile/platform/linux/power_supplies.h"

#include <gtest/gtest.h>

#include <functional>
#include <utility>

#include "vantile/platform/linux/battery_entry.h"
#include "vantile/platform/linux/battery_records.h"
#include "vantile/platform/linux/power_sources.h"
#include "vantile/platform/linux/time_remaining.h"

#include "fakes/temporary_folder.h"

namespace vantile {
namespace {

using testing::TemporaryFolder;

/// A machine whose supplies stand in a temporary folder, linked to as the kernel's are.
struct LinuxPower : ::testing::Test {
  void file(const std::string& supply, const std::string& name, const std::string& text) {
    folder.file("sys/devices/power/" + supply + "/" + name, text + "\n");
  }
  void supply(const std::string& name, const std::string& type) {
    file(name, "type", type);
    folder.folder("sys/class/power_supply");
    folder.symbolicLink("sys/class/power_supply/" + name, folder.path("sys/devices/power/" + name));
  }
  /// One that holds `percent` of 4 Ah at 10 V and gives an ampere.
  void battery(const std::string& name, int percent) {
    supply(name, "Battery");
    file(name, "present", "1");
    file(name, "status", "Discharging");
    file(name, "charge_now", std::to_string(percent * 40'000));
    file(name, "charge_full", "4000000");
    file(name, "charge_full_design", "5000000");
    file(name, "current_now", "1000000");
    file(name, "voltage_now", "10000000");
    file(name, "temp", "301");
  }
  void charger(const std::string& name, const std::string& type, const std::string& online) {
    supply(name, type);
    file(name, "online", online);
  }

  std::vector<std::string> states() {
    std::vector<std::string> found;
    for (const auto& source : sources.descriptions()) {
      const auto* const state = source->text("Power Source State");
      found.push_back(*source->text("Name") + ": " + (state ? *state : "none"));
    }
    return found;
  }
  using States = std::vector<std::string>;

  TemporaryFolder folder;
  const LinuxRoots roots{folder.path("proc"), folder.path("sys"), folder.path("sysctl"),
                         folder.path("run")};
  LinuxPowerSources sources{roots};
  LinuxTimeRemaining remaining{roots};
  LinuxBatteryRecords records{roots};
  LinuxBatteryEntry entry{roots};
};

TEST_F(LinuxPower, AMachineWithoutSuppliesHasNoSources) {
  EXPECT_TRUE(sources.descriptions().empty());
  EXPECT_EQ(remaining.estimate(), -2);
  EXPECT_TRUE(records.records()->empty());
  EXPECT_EQ(entry.properties(), nullptr);
}

TEST_F(LinuxPower, ABatteryIsASource) {
  battery("BAT0", 60);
  charger("AC", "Mains", "0");
  const auto found = sources.descriptions();
  ASSERT_EQ(found.size(), 1u);
  EXPECT_EQ(found[0]->int64("Current Capacity"), 2400);
  EXPECT_EQ(found[0]->int64("Max Capacity"), 4000);
  EXPECT_EQ(*found[0]->text("BatteryHealth"), "Good");
  EXPECT_EQ(found[0]->boolean("Is Present"), true);
  EXPECT_EQ(found[0]->boolean("Is Charging"), false);
  EXPECT_EQ(*found[0]->text("Power Source State"), "Battery Power");
  EXPECT_EQ(remaining.estimate(), 2.4 * 3600);
}

TEST_F(LinuxPower, EveryReadingOpensAnew) {
  battery("BAT0", 60);
  EXPECT_EQ(entry.properties()->int64("CurrentCapacity"), 2400);
  // The kernel's files are others once a supply has gone and come again.
  folder.remove("sys/devices/power/BAT0/charge_now");
  file("BAT0", "charge_now", "2000000");
  EXPECT_EQ(entry.properties()->int64("CurrentCapacity"), 2000);
  folder.remove("sys/devices/power/BAT0");
  EXPECT_EQ(entry.properties(), nullptr);
  folder.remove("sys/class/power_supply/BAT0");
  battery("BAT0", 40);
  EXPECT_EQ(entry.properties()->int64("CurrentCapacity"), 1600);
}

/// The machine's supplies, while something happens just before an attribute is read.
struct ChangingPower : LinuxPower {
  ChangingPower() {
    battery("BAT0", 60);
    battery("BAT1", 20);
  }
  std::vector<PowerSupply> batteriesWhere(const std::string& attribute,
                                          const std::function<void()>& happens) {
    bool happened = false;
    const PowerSupplies supplies(roots, [&](int opened, const std::string& name) {
      if (name == attribute && !std::exchange(happened, true)) happens();
      return supplyAttribute(opened, name);
    });
    return supplies.read(SupplyUse::entry, false).batteries;
  }
};

TEST_F(ChangingPower, ABatteryOfWhichAnAttributeGoesLacksThatAlone) {
  const auto found = batteriesWhere(
      "voltage_now", [this] { folder.remove("sys/devices/power/BAT0/voltage_now"); });
  ASSERT_EQ(found.size(), 2u);
  EXPECT_EQ(found[0].chargeNow, 2'400'000);
  EXPECT_EQ(found[0].voltageNow, std::nullopt);
  EXPECT_EQ(found[0].currentNow, 1'000'000);
  EXPECT_EQ(found[1].voltageNow, 10'000'000);
}

TEST_F(ChangingPower, ABatteryThatGoesIsLeftOutAndTheOtherRead) {
  const auto found = batteriesWhere("voltage_now", [this] {
    folder.remove("sys/class/power_supply/BAT0");
    folder.remove("sys/devices/power/BAT0");
  });
  ASSERT_EQ(found.size(), 1u);
  EXPECT_EQ(found[0].name, "BAT1");
  EXPECT_EQ(found[0].chargeNow, 800'000);
}

TEST_F(ChangingPower, ABatteryWhoseAttributesGoOneByOneIsLeftOut) {
  const auto found = batteriesWhere("voltage_now", [this] {
    folder.remove("sys/class/power_supply/BAT0");
    folder.remove("sys/devices/power/BAT0/voltage_now");
  });
  ASSERT_EQ(found.size(), 1u);
  EXPECT_EQ(found[0].name, "BAT1");
}

TEST_F(ChangingPower, ABatteryThatIsReplacedIsNotReadAsOneWithTheOther) {
  const auto found = batteriesWhere("voltage_now", [this] {
    folder.remove("sys/class/power_supply/BAT0");
    folder.remove("sys/devices/power/BAT0");
    battery("BAT0", 90);
  });
  ASSERT_EQ(found.size(), 1u);
  EXPECT_EQ(found[0].name, "BAT1");
  EXPECT_EQ(entry.properties()->int64("CurrentCapacity"), 3600);  // the next reading has it
}

TEST_F(ChangingPower, AChargerThatGoesTellsNothing) {
  charger("AC", "Mains", "1");
  const PowerSupplies supplies(roots, [this](int opened, const std::string& name) {
    if (name == "online") folder.remove("sys/devices/power/AC");
    return supplyAttribute(opened, name);
  });
  const auto found = supplies.read(SupplyUse::estimate, true);
  ASSERT_EQ(found.mains.size(), 1u);
  EXPECT_EQ(onExternalPower(found.mains, found.batteries), false);
}

TEST_F(LinuxPower, SeveralBatteriesAreSourcesInTheOrderOfTheirNames) {
  battery("BAT1", 20);
  battery("BAT0", 60);
  EXPECT_EQ(states(), (States{"BAT0: Battery Power", "BAT1: Battery Power"}));
  EXPECT_EQ(remaining.estimate(), 3.2 / 2 * 3600);
  ASSERT_EQ(records.records()->size(), 2u);
  EXPECT_EQ(records.records()->front()->int64("Current"), 2400);
  EXPECT_EQ(entry.properties()->int64("CurrentCapacity"), 2400);
}

TEST_F(LinuxPower, ASupplyOfADeviceIsNotTheMachines) {
  battery("hidpp_battery_0", 60);
  file("hidpp_battery_0", "scope", "Device");
  charger("wacom_ac_0", "Mains", "1");
  file("wacom_ac_0", "scope", "Device");
  EXPECT_TRUE(sources.descriptions().empty());
  EXPECT_TRUE(records.records()->empty());
  EXPECT_EQ(entry.properties(), nullptr);
  battery("BAT0", 50);
  file("BAT0", "scope", "System");
  EXPECT_EQ(states(), States{"BAT0: Battery Power"});
}

TEST_F(LinuxPower, AUsbSupplyThatIsOnlineIsMains) {
  battery("BAT0", 60);
  charger("AC", "Mains", "0");
  charger("ucsi-source-psy-USBC000:001", "USB", "0");
  EXPECT_EQ(states(), States{"BAT0: Battery Power"});
  file("ucsi-source-psy-USBC000:001", "online", "1");
  EXPECT_EQ(states(), States{"BAT0: AC Power"});
  EXPECT_EQ(remaining.estimate(), -2);
}

TEST_F(LinuxPower, WithoutMainsTheBatteryTells) {
  battery("BAT0", 60);
  EXPECT_EQ(states(), States{"BAT0: Battery Power"});
  file("BAT0", "status", "Charging");
  EXPECT_EQ(states(), States{"BAT0: AC Power"});
  file("BAT0", "status", "Unknown");
  EXPECT_EQ(states(), States{"BAT0: none"});
}

TEST_F(LinuxPower, AnEmptyBayIsASourceAndNoBattery) {
  supply("BAT0", "Battery");
  file("BAT0", "present", "0");
  ASSERT_EQ(sources.descriptions().size(), 1u);
  EXPECT_EQ(sources.descriptions()[0]->boolean("Is Present"), false);
  EXPECT_TRUE(records.records()->empty());
  EXPECT_EQ(entry.properties(), nullptr);
  EXPECT_EQ(remaining.estimate(), -2);
  battery("BAT1", 30);
  EXPECT_EQ(records.records()->size(), 1u);
  EXPECT_EQ(entry.properties()->int64("CurrentCapacity"), 1200);
}

TEST_F(LinuxPower, WhatCantBeReadOrMakesNoSenseIsMissing) {
  battery("BAT0", 60);
  file("BAT0", "temp", "\xFF\xFF");
  file("BAT0", "voltage_now", "");
  file("BAT0", "current_now", "99999999999999999999");
  folder.remove("sys/devices/power/BAT0/charge_full");
  folder.folder("sys/devices/power/BAT0/charge_full");  // as little a file as one that fails
  const auto properties = entry.properties();
  EXPECT_EQ(properties->size(), 1u);
  EXPECT_EQ(properties->int64("CurrentCapacity"), 2400);
}

TEST_F(LinuxPower, ASupplyThatTellsNoTypeIsNone) {
  battery("BAT0", 60);
  folder.remove("sys/devices/power/BAT0/type");
  EXPECT_TRUE(sources.descriptions().empty());
  folder.symbolicLink("sys/class/power_supply/BAT1", folder.path("sys/devices/nothing"));
  EXPECT_TRUE(sources.descriptions().empty());
}

TEST_F(LinuxPower, TheMachinesOwnAreShared) {
  EXPECT_EQ(systemPowerSources(), systemPowerSources());
  EXPECT_EQ(systemTimeRemaining(), systemTimeRemaining());
  EXPECT_EQ(systemBatteryRecords(), systemBatteryRecords());
  EXPECT_EQ(systemBatteryEntry(), systemBatteryEntry());
}

}  // namespace
}  // namespace vantile
