#pragma once

#include <memory>
#include <vector>

#include "vantile/foundation/api.h"
#include "vantile/foundation/value.h"

namespace vantile {

/// A subscription to changes of the power sources; when it goes, nothing is told any more.
class PowerSourceSubscription {
 public:
  virtual ~PowerSourceSubscription() = default;
};

/// The machine's power sources: its batteries.
class PowerSources {
 public:
  virtual ~PowerSources() = default;

  /// What is known of each source, in the system's order; none where there are none or the system
  /// fails. What it does not tell is not in a description. Any thread.
  ///
  /// "BatteryHealth" ("Good", "Fair", "Poor"), "Is Present", "Current Capacity" and "Max Capacity"
  /// in a unit of their own, "Power Source State" ("Battery Power", "AC Power"), "Is Charging",
  /// "Time to Full Charge" in minutes.
  ///
  /// macOS: IOPSCopyPowerSourcesInfo, IOPSCopyPowerSourcesList, IOPSGetPowerSourceDescription.
  /// Linux: the batteries of the system's own scope below /sys/class/power_supply, by name.
  virtual std::vector<std::shared_ptr<const Dictionary>> descriptions() = 0;

  /// Calls `changed` with `context` on the calling thread's run loop when something changed, until
  /// the subscription goes; null where the system refuses. It ends on that thread, also inside such
  /// a call, or once the thread is gone.
  /// macOS: IOPSNotificationCreateRunLoopSource, in the loop's default mode. Linux: change events
  /// of power supplies from udev, or from the kernel where udevd does not run; a burst is told
  /// once.
  virtual std::unique_ptr<PowerSourceSubscription> subscribe(void (*changed)(void* context),
                                                             void* context) = 0;
};

/// The machine's power sources, shared by the process.
VANTILE_API std::shared_ptr<PowerSources> systemPowerSources();

}  // namespace vantile
