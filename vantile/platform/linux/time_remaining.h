#pragma once

#include "vantile/platform/linux/power_supplies.h"
#include "vantile/platform/time_remaining.h"

namespace vantile {

class LinuxTimeRemaining final : public TimeRemaining {
 public:
  explicit LinuxTimeRemaining(const LinuxRoots& roots = {}) : supplies_(roots) {}
  double estimate() override;

 private:
  const PowerSupplies supplies_;
};

}  // namespace vantile
