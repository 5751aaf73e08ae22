#pragma once

#include <memory>

#include "vantile/foundation/api.h"
#include "vantile/foundation/value.h"

namespace vantile {

/// The battery's entry in the hardware registry. Any thread.
class BatteryEntry {
 public:
  virtual ~BatteryEntry() = default;

  /// Its properties, or null when there is none. What the battery does not tell is not among them.
  ///
  /// "MaxCapacity" and "CurrentCapacity" in mAh, "CycleCount", "Amperage" in mA, below 0 while it
  /// runs out, "Voltage" in mV, "Temperature" in hundredths of a degree Celsius; on macOS many
  /// more.
  ///
  /// macOS: "AppleSmartBattery", by IOServiceNameMatching, IOServiceGetMatchingService and
  /// IORegistryEntryCreateCFProperties. Linux: the first battery that is present.
  virtual std::shared_ptr<const Dictionary> properties() = 0;
};

/// The machine's battery entry, shared by the process.
VANTILE_API std::shared_ptr<BatteryEntry> systemBatteryEntry();

}  // namespace vantile
