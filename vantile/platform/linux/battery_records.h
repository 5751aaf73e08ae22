#pragma once

#include "vantile/platform/battery_records.h"
#include "vantile/platform/linux/power_supplies.h"

namespace vantile {

class LinuxBatteryRecords final : public BatteryRecords {
 public:
  explicit LinuxBatteryRecords(const LinuxRoots& roots = {}) : supplies_(roots) {}
  std::optional<std::vector<std::shared_ptr<const Dictionary>>> records() override;

 private:
  const PowerSupplies supplies_;
};

}  // namespace vantile
