#pragma once

#include "vantile/platform/battery_entry.h"
#include "vantile/platform/linux/power_supplies.h"

namespace vantile {

class LinuxBatteryEntry final : public BatteryEntry {
 public:
  explicit LinuxBatteryEntry(const LinuxRoots& roots = {}) : supplies_(roots) {}
  std::shared_ptr<const Dictionary> properties() override;

 private:
  const PowerSupplies supplies_;
};

}  // namespace vantile
