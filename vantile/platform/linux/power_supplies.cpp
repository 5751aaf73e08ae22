#include "vantile/platform/linux/power_supplies.h"

#include <unistd.h>

#include <algorithm>
#include <string_view>
#include <utility>

#include "vantile/platform/linux/first_line.h"
#include "vantile/platform/linux/folder_entries.h"

namespace vantile {

std::vector<std::string> PowerSupplies::names() const {
  std::vector<std::string> names;
  forEachEntry(folder_, [&names](const dirent& entry) {
    if (entry.d_name[0] != '.') names.emplace_back(entry.d_name);
  });
  std::sort(names.begin(), names.end());
  return names;
}

void PowerSupplies::take(PowerSupply& supply, SupplyUse use) const {
  for (const auto file : supplyFiles(use)) {
    const auto text = firstLineOf(folder_ + "/" + supply.name + "/" + std::string(file));
    if (text) takeSupplyFile(supply, file, *text);
  }
}

PowerSupplies::Found PowerSupplies::read(SupplyUse use, bool withMains) const {
  Found found;
  for (auto& name : names()) {
    PowerSupply supply;
    supply.name = std::move(name);
    take(supply, SupplyUse::kind);
    if (supply.isDevices) continue;
    if (supply.kind == PowerSupply::Kind::battery) {
      take(supply, use);
      // One that went meanwhile told only a part.
      if (::access((folder_ + "/" + supply.name + "/type").c_str(), F_OK) != 0) continue;
      found.batteries.push_back(std::move(supply));
    } else if (supply.kind == PowerSupply::Kind::mains && withMains) {
      take(supply, SupplyUse::mains);
      found.mains.push_back(std::move(supply));
    }
  }
  return found;
}

}  // namespace vantile
