#include "vantile/platform/linux/battery_records.h"

namespace vantile {

std::optional<std::vector<std::shared_ptr<const Dictionary>>> LinuxBatteryRecords::records() {
  std::vector<std::shared_ptr<const Dictionary>> records;
  for (const auto& battery : supplies_.read(SupplyUse::record, false).batteries)
    if (isPresent(battery))
      records.push_back(std::make_shared<const Dictionary>(batteryRecordOf(battery)));
  return records;
}

std::shared_ptr<BatteryRecords> systemBatteryRecords() {
  static auto& records =
      *new std::shared_ptr<BatteryRecords>(std::make_shared<LinuxBatteryRecords>());
  return records;
}

}  // namespace vantile
