#pragma once

#include <functional>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "vantile/platform/linux/roots.h"
#include "vantile/platform/parsers/power_supply.h"

namespace vantile {

/// The first line of the file in the folder that is open at the descriptor; nothing where it can't
/// be read or is empty. Opened anew at each call: the kernel asks the driver when it is read.
std::optional<std::string> supplyAttribute(int folder, const std::string& file);

/// The power supplies of /sys, read anew at each call. A supply that goes while it is read is
/// left out.
class PowerSupplies {
 public:
  using Attribute = std::function<std::optional<std::string>(int folder, const std::string& file)>;

  explicit PowerSupplies(const LinuxRoots& roots = {}, Attribute attribute = supplyAttribute)
      : folder_(roots.sys + "/class/power_supply"), attribute_(std::move(attribute)) {}

  /// The machine's own, by name.
  struct Found {
    std::vector<PowerSupply> batteries, mains;
  };
  /// With what `use` wants of the batteries, and whether the mains are online where `withMains`.
  Found read(SupplyUse use, bool withMains) const;

 private:
  void take(PowerSupply& supply, int folder, SupplyUse use) const;

  const std::string folder_;
  const Attribute attribute_;
};

}  // namespace vantile
