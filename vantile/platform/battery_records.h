#pragma once

#include <memory>
#include <optional>
#include <vector>

#include "vantile/foundation/api.h"
#include "vantile/foundation/value.h"

namespace vantile {

/// Electrical readings of the batteries. Any thread.
class BatteryRecords {
 public:
  virtual ~BatteryRecords() = default;

  /// A record a battery that is present; nothing when the system refuses. What a battery does not
  /// tell is not in its record.
  ///
  /// "Current" is the charge in mAh, "Amperage" in mA, below 0 while it runs out, "Voltage" in mV,
  /// "Cycle Count".
  ///
  /// macOS: IOMasterPort, IOPMCopyBatteryInfo. Linux: as `PowerSources::descriptions`.
  virtual std::optional<std::vector<std::shared_ptr<const Dictionary>>> records() = 0;
};

/// The machine's battery records, shared by the process.
VANTILE_API std::shared_ptr<BatteryRecords> systemBatteryRecords();

}  // namespace vantile
