#pragma once

#include <memory>

#include "vantile/platform/battery_entry.h"
#include "vantile/platform/battery_records.h"
#include "vantile/platform/host_resources.h"
#include "vantile/platform/power_sources.h"
#include "vantile/platform/time_remaining.h"

namespace vantile {

/// What the power subsystem asks of the operating system.
struct PowerPorts {
  std::shared_ptr<PowerSources> sources = systemPowerSources();
  std::shared_ptr<TimeRemaining> remaining = systemTimeRemaining();
  std::shared_ptr<BatteryRecords> records = systemBatteryRecords();
  std::shared_ptr<BatteryEntry> entry = systemBatteryEntry();
  std::shared_ptr<HostResources> resources = systemHostResources();

  /// The ports in use. They are replaced by tests alone, before anything else runs.
  static PowerPorts& installed();
};

}  // namespace vantile
