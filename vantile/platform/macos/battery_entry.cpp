#include "vantile/platform/battery_entry.h"

#include <IOKit/IOKitLib.h>

#include "vantile/platform/macos/core_foundation.h"
#include "vantile/platform/macos/values.h"

namespace vantile {
namespace {

class MacosBatteryEntry final : public BatteryEntry {
 public:
  std::shared_ptr<const Dictionary> properties() override {
    // No port stands for the main one, whose newer constant older systems lack. The call releases
    // the dictionary.
    const io_service_t battery =
        ::IOServiceGetMatchingService(MACH_PORT_NULL, ::IOServiceNameMatching("AppleSmartBattery"));
    if (battery == IO_OBJECT_NULL) return nullptr;
    CFMutableDictionaryRef created = nullptr;
    const auto result = ::IORegistryEntryCreateCFProperties(battery, &created, nullptr, 0);
    ::IOObjectRelease(battery);
    const Owned<CFMutableDictionaryRef> properties(created);
    return result == KERN_SUCCESS && properties ? dictionaryFrom(properties.get()) : nullptr;
  }
};

}  // namespace

std::shared_ptr<BatteryEntry> systemBatteryEntry() {
  static auto& entry = *new std::shared_ptr<BatteryEntry>(std::make_shared<MacosBatteryEntry>());
  return entry;
}

}  // namespace vantile
