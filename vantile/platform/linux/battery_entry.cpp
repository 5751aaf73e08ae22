#include "vantile/platform/linux/battery_entry.h"

namespace vantile {

std::shared_ptr<const Dictionary> LinuxBatteryEntry::properties() {
  for (const auto& battery : supplies_.read(SupplyUse::entry, false).batteries)
    if (isPresent(battery)) return std::make_shared<const Dictionary>(batteryEntryOf(battery));
  return nullptr;
}

std::shared_ptr<BatteryEntry> systemBatteryEntry() {
  static auto& entry = *new std::shared_ptr<BatteryEntry>(std::make_shared<LinuxBatteryEntry>());
  return entry;
}

}  // namespace vantile
