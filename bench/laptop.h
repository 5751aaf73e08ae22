#pragma once

#include <stdlib.h>

#include <filesystem>
#include <fstream>
#include <memory>
#include <string>
#include <utility>
#include <vector>

#include "vantile/platform/linux/battery_entry.h"
#include "vantile/platform/linux/battery_records.h"
#include "vantile/platform/linux/power_sources.h"
#include "vantile/platform/linux/time_remaining.h"
#include "vantile/power/power_ports.h"

namespace vantile {

/// A laptop's battery and charger, on battery: files of ours in a temporary folder behind the
/// ports, since machines that benchmarks run on have no battery.
class Laptop {
 public:
  Laptop() {
    supply("AC", {{"type", "Mains"}, {"online", "0"}});
    supply("BAT0", {{"type", "Battery"},
                    {"present", "1"},
                    {"status", "Discharging"},
                    {"energy_now", "28120000"},
                    {"energy_full", "47330000"},
                    {"energy_full_design", "57020000"},
                    {"voltage_now", "11871000"},
                    {"voltage_min_design", "11580000"},
                    {"power_now", "7410000"},
                    {"capacity", "59"},
                    {"cycle_count", "213"},
                    {"temp", "301"}});
    PowerPorts::installed() = {
        std::make_shared<LinuxPowerSources>(roots()), std::make_shared<LinuxTimeRemaining>(roots()),
        std::make_shared<LinuxBatteryRecords>(roots()),
        std::make_shared<LinuxBatteryEntry>(roots()), PowerPorts::installed().resources};
  }
  ~Laptop() { std::filesystem::remove_all(folder_); }
  Laptop(const Laptop&) = delete;
  Laptop& operator=(const Laptop&) = delete;

  /// The files that an update reads, each as often as it does.
  std::vector<std::string> files() const {
    std::vector<std::string> paths;
    const auto add = [&](const char* supply, SupplyUse use) {
      for (const auto file : supplyFiles(use))
        paths.push_back(place(supply) + "/" + std::string(file));
    };
    const std::pair<SupplyUse, bool> readings[] = {{SupplyUse::estimate, true},
                                                   {SupplyUse::description, true},
                                                   {SupplyUse::record, false},
                                                   {SupplyUse::entry, false},
                                                   {SupplyUse::entry, false}};
    for (const auto& [use, withMains] : readings) {
      add("AC", SupplyUse::kind);
      if (withMains) add("AC", SupplyUse::mains);
      add("BAT0", SupplyUse::kind);
      add("BAT0", use);
    }
    return paths;
  }

 private:
  LinuxRoots roots() const { return {.sys = folder_}; }
  std::string place(const std::string& supply) const {
    return folder_ + "/class/power_supply/" + supply;
  }
  void supply(const std::string& name,
              const std::vector<std::pair<std::string, std::string>>& files) const {
    std::filesystem::create_directories(place(name));
    for (const auto& [file, text] : files) std::ofstream(place(name) + "/" + file) << text << "\n";
  }
  static std::string temporaryFolder() {
    auto path = (std::filesystem::temp_directory_path() / "vantile-bench-XXXXXX").string();
    return ::mkdtemp(path.data()) ? path : std::string();
  }

  const std::string folder_ = temporaryFolder();
};

}  // namespace vantile
