#pragma once

#include "vantile/platform/linux/power_supplies.h"
#include "vantile/platform/power_sources.h"

namespace vantile {

class LinuxPowerSources final : public PowerSources {
 public:
  explicit LinuxPowerSources(const LinuxRoots& roots = {}) : roots_(roots), supplies_(roots) {}

  std::vector<std::shared_ptr<const Dictionary>> descriptions() override;
  std::unique_ptr<PowerSourceSubscription> subscribe(void (*changed)(void* context),
                                                     void* context) override;

 private:
  const LinuxRoots roots_;
  const PowerSupplies supplies_;
};

}  // namespace vantile
