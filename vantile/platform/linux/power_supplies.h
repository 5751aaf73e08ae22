#pragma once

#include <string>
#include <vector>

#include "vantile/platform/linux/roots.h"
#include "vantile/platform/parsers/power_supply.h"

namespace vantile {

/// The power supplies of /sys, read anew at each call. A supply that goes while it is read is
/// left out.
class PowerSupplies {
 public:
  explicit PowerSupplies(const LinuxRoots& roots = {})
      : folder_(roots.sys + "/class/power_supply") {}

  /// The machine's own, by name.
  struct Found {
    std::vector<PowerSupply> batteries, mains;
  };
  /// With what `use` wants of the batteries, and whether the mains are online where `withMains`.
  Found read(SupplyUse use, bool withMains) const;

 private:
  std::vector<std::string> names() const;
  void take(PowerSupply& supply, SupplyUse use) const;

  const std::string folder_;
};

}  // namespace vantile
