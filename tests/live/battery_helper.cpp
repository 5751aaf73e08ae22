#include "live/battery_helper.h"

#include <umockdev.h>

#include <atomic>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <functional>
#include <map>
#include <memory>
#include <string>
#include <string_view>
#include <thread>
#include <utility>
#include <vector>

#include "vantile/platform/linux/power_sources.h"
#include "vantile/power/battery_info.h"

#include "fakes/temporary_folder.h"

namespace vantile::testing {
namespace {

using namespace std::chrono_literals;
using Attributes = std::map<std::string, std::string>;

/// Power supplies that a program of ours sees in place of the machine's.
class Supplies {
 public:
  void add(const std::string& name, const Attributes& attributes) {
    std::vector<std::string> texts;
    for (const auto& [file, text] : attributes) {
      texts.push_back(file);
      texts.push_back(text + "\n");
    }
    std::vector<gchar*> pairs;
    for (auto& text : texts) pairs.push_back(text.data());
    pairs.push_back(nullptr);
    gchar* none[] = {nullptr};
    gchar* const path = umockdev_testbed_add_devicev(bed_.get(), "power_supply", name.c_str(),
                                                     nullptr, pairs.data(), none);
    paths_[name] = path;
    g_free(path);
  }
  void set(const std::string& name, const Attributes& attributes) {
    for (const auto& [file, text] : attributes)
      umockdev_testbed_set_attribute(bed_.get(), paths_[name].c_str(), file.c_str(),
                                     (text + "\n").c_str());
  }
  /// As adding one, this comes with its event.
  void remove(const std::string& name) {
    umockdev_testbed_uevent(bed_.get(), paths_[name].c_str(), "remove");
    umockdev_testbed_remove_device(bed_.get(), paths_[name].c_str());
  }
  void event(const std::string& name) {
    umockdev_testbed_uevent(bed_.get(), paths_[name].c_str(), "change");
  }

 private:
  struct Unref {
    void operator()(UMockdevTestbed* bed) const { g_object_unref(bed); }
  };
  const std::unique_ptr<UMockdevTestbed, Unref> bed_{umockdev_testbed_new()};
  std::map<std::string, std::string> paths_;
};

/// A battery monitor whose delegate prints.
class Printer {
 public:
  Printer() {
    const auto delegate = std::make_shared<BatteryDelegate>();
    delegate->batteryCalculating = [](double percent) { std::printf(" calculating %g", percent); };
    delegate->batteryWithRemaining = [](const std::string& time) {
      std::printf(" remaining %s", time.c_str());
    };
    delegate->batteryRemainingWithLeft = [](const std::string& percent) {
      std::printf(" left %s", percent.c_str());
    };
    delegate->batteryChargingCalculating = [] { std::printf(" charging calculating"); };
    delegate->batteryChargingWithRemaining = [](const std::string& time) {
      std::printf(" charging remaining %s", time.c_str());
    };
    delegate->batteryCharged = [] { std::printf(" battery charged"); };
    delegate->charged = [] { std::printf(" charged"); };
    info->setDelegate(delegate);
  }

  void now(const char* what) {
    std::printf("%s:", what);
    info->updateCurrentStatus();
    std::printf("\n");
  }
  /// Makes a change and waits until it was told of.
  void change(const char* what, const std::function<void()>& make) {
    std::printf("%s:", what);
    const auto watch = systemPowerSources()->subscribe(
        [](void*) { RunLoop::current().postAfter(50ms, [] { RunLoop::current().stop(); }); },
        nullptr);
    const auto tooLong = RunLoop::current().after(5s, [] {
      std::printf(" nothing was told");
      RunLoop::current().stop();
    });
    make();
    RunLoop::current().run();
    std::printf("\n");
  }
  void figures() const {
    std::printf("%d mAh, %.2f W, %.1f degrees, %d cycles, %s\n", info->capacity(),
                static_cast<double>(info->watt()), static_cast<double>(info->celsius()),
                info->cycleCount(), info->health().value_or("nil").c_str());
  }

  const std::shared_ptr<KVDBatteryInfo> info = KVDBatteryInfo::init();
};

Attributes energyBattery(const std::string& status, int percent, const std::string& power) {
  return {{"type", "Battery"},
          {"present", "1"},
          {"status", status},
          {"energy_now", std::to_string(percent * 500'000)},
          {"energy_full", "50000000"},
          {"energy_full_design", "57000000"},
          {"voltage_now", "12000000"},
          {"voltage_min_design", "10000000"},
          {"power_now", power},
          {"cycle_count", "213"},
          {"temp", "301"}};
}
Attributes chargeBattery(const std::string& status, int percent, const std::string& current) {
  return {{"type", "Battery"},        {"present", "1"},
          {"status", status},         {"charge_now", std::to_string(percent * 40'000)},
          {"charge_full", "4000000"}, {"charge_full_design", "9000000"},
          {"voltage_now", "8000000"}, {"current_now", current}};
}
Attributes charger(const char* type, const char* online) {
  return {{"type", type}, {"online", online}};
}

void day() {
  Supplies supplies;
  supplies.add("AC", charger("Mains", "1"));
  supplies.add("BAT0", energyBattery("Full", 100, "0"));
  Printer monitor;
  monitor.now("full");
  const auto become = [&](const char* what, const char* online, const Attributes& battery) {
    monitor.change(what, [&] {
      supplies.set("AC", {{"online", online}});
      supplies.set("BAT0", battery);
      supplies.event("AC");
      supplies.event("BAT0");
    });
  };
  become("unplugged", "0", energyBattery("Discharging", 100, "0"));
  become("draining", "0", energyBattery("Discharging", 80, "10000000"));
  become("still", "0", energyBattery("Discharging", 80, "10000000"));
  become("low", "0", energyBattery("Discharging", 20, "10000000"));
  become("lower", "0", energyBattery("Discharging", 15, "10000000"));
  monitor.figures();
  become("plugged", "1", energyBattery("Charging", 15, "0"));
  become("charging", "1", energyBattery("Charging", 49, "20000000"));
  become("half", "1", energyBattery("Charging", 51, "20000000"));
  monitor.figures();
  become("full", "1", energyBattery("Full", 100, "0"));
  become("still full", "1", energyBattery("Full", 100, "0"));
}

void twoBatteries() {
  Supplies supplies;
  supplies.add("BAT0", energyBattery("Discharging", 18, "10000000"));
  supplies.add("BAT1", energyBattery("Not charging", 50, "0"));
  Printer monitor;
  monitor.now("two");
  monitor.change("one went", [&] { supplies.remove("BAT1"); });
  monitor.change("it is back",
                 [&] { supplies.add("BAT1", energyBattery("Discharging", 10, "10000000")); });
  monitor.change("both went", [&] {
    for (const auto* name : {"BAT0", "BAT1"}) supplies.remove(name);
  });
  std::printf("%s\n", monitor.info->isHasBattery() ? "a battery" : "no battery");
}

/// Batteries that go while they are read, sooner or later.
void removal() {
  Supplies supplies;
  supplies.add("BAT0", energyBattery("Discharging", 50, "10000000"));
  const auto info = KVDBatteryInfo::init();
  bool kept = true;
  for (int round = 0; round < 50; ++round) {
    supplies.add("BAT1", energyBattery("Discharging", 50, "10000000"));
    std::atomic<bool> gone = false;
    std::thread remover([&] {
      std::this_thread::sleep_for(std::chrono::microseconds(20 * round));
      supplies.remove("BAT1");
      gone = true;
    });
    while (!gone) {
      RunLoop::current().dispatch();  // takes the events, of which there is room for a few
      info->updateCurrentStatus();
      kept = kept && info->capacity() == 2500;      // the first one's
      kept = kept && info->currentPercent() == 50;  // either's, as a whole
    }
    remover.join();
    kept = kept && systemPowerSources()->descriptions().size() == 1;
  }
  std::printf("%s\n", kept ? "one was left" : "the other one's figures changed");
}

void mouse() {
  Supplies supplies;
  auto attributes = energyBattery("Discharging", 5, "10000000");
  attributes["scope"] = "Device";
  supplies.add("hidpp_battery_0", attributes);
  Printer monitor;
  monitor.now("a mouse");
  std::printf("%s\n", monitor.info->isHasBattery() ? "a battery" : "no battery");
  supplies.add("BAT0", energyBattery("Discharging", 50, "10000000"));
  monitor.now("a battery, too");
  monitor.change("the mouse's changes are read and not told of", [&] {
    supplies.set("hidpp_battery_0", {{"status", "Charging"}});
    supplies.event("hidpp_battery_0");
  });
}

void drivers() {
  Supplies supplies;
  auto attributes = energyBattery("Discharging", 50, "");
  attributes.erase("power_now");
  supplies.add("BAT0", attributes);
  Printer monitor;
  monitor.now("energy without power");
  supplies.set("BAT0", {{"current_now", "1000000"}});
  monitor.now("energy and current");
  monitor.figures();
  supplies.remove("BAT0");
  supplies.add("BAT0", chargeBattery("Discharging", 50, "-500000"));
  monitor.now("charge and current");
  monitor.figures();
  supplies.set("BAT0", chargeBattery("Charging", 60, "-800000"));
  monitor.now("charge by USB");
  supplies.add("ucsi-source-psy-1", charger("USB", "0"));
  monitor.now("a USB supply that is offline");
  supplies.set("ucsi-source-psy-1", {{"online", "1"}});
  monitor.now("a USB supply that is online");
  monitor.figures();
}

/// However many events come at once, there is one update.
void burst() {
  Supplies supplies;
  supplies.add("BAT0", energyBattery("Discharging", 50, "10000000"));
  Printer monitor;
  monitor.change("six events", [&] {
    for (int i = 0; i < 6; ++i)
      RunLoop::current().postAfter(5ms * i, [&] { supplies.event("BAT0"); });
  });
  monitor.change("one more", [&] { supplies.event("BAT0"); });
}

/// A subscription that another thread lets go of when its event is about to be told.
void letGo() {
  Supplies supplies;
  supplies.add("BAT0", energyBattery("Discharging", 50, "10000000"));
  const auto delegate = std::make_shared<BatteryDelegate>();
  delegate->batteryWithRemaining = [](const std::string&) { std::printf("told\n"); };
  for (const bool goes : {false, true}) {
    auto info = KVDBatteryInfo::init();
    info->setDelegate(delegate);
    supplies.event("BAT0");
    std::this_thread::sleep_for(20ms);
    RunLoop::current().dispatch();
    std::this_thread::sleep_for(150ms);  // by now the loop would have told
    if (goes) std::thread([&info] { info.reset(); }).join();
    const auto enough = RunLoop::current().after(300ms, [] { RunLoop::current().stop(); });
    RunLoop::current().run();
  }
}

/// Events of udevd's group, which libudev listens to where udevd runs.
void udevd() {
  const TemporaryFolder folder;
  folder.file("run/udev/control");
  Supplies supplies;
  supplies.add("BAT0", energyBattery("Discharging", 50, "10000000"));
  LinuxPowerSources sources({.run = folder.path("run")});
  const auto subscription =
      sources.subscribe([](void*) { std::printf("told\n"), RunLoop::current().stop(); }, nullptr);
  const auto tooLong = RunLoop::current().after(5s, [] { RunLoop::current().stop(); });
  supplies.event("BAT0");
  RunLoop::current().run();
}

}  // namespace

int runBatteryHelper(const char* story) {
  const std::map<std::string_view, void (*)()> stories = {
      {"day", day},         {"two", twoBatteries}, {"removal", removal}, {"mouse", mouse},
      {"drivers", drivers}, {"burst", burst},      {"let go", letGo},    {"udevd", udevd}};
  const auto found = stories.find(story);
  if (found == stories.end()) return 2;
  found->second();
  return 0;
}

}  // namespace vantile::testing
