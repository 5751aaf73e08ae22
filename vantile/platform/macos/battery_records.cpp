#include "vantile/platform/battery_records.h"

#include <IOKit/pwr_mgt/IOPMLib.h>

#include "vantile/platform/macos/core_foundation.h"
#include "vantile/platform/macos/values.h"

namespace vantile {
namespace {

class MacosBatteryRecords final : public BatteryRecords {
 public:
  std::optional<std::vector<std::shared_ptr<const Dictionary>>> records() override {
    mach_port_t port = MACH_PORT_NULL;
    if (::IOMasterPort(MACH_PORT_NULL, &port) != KERN_SUCCESS) return std::nullopt;
    CFArrayRef copied = nullptr;
    const auto result = ::IOPMCopyBatteryInfo(port, &copied);
    ::mach_port_deallocate(mach_task_self(), port);
    const Owned<CFArrayRef> list(copied);
    if (result != KERN_SUCCESS || !list) return std::nullopt;
    std::vector<std::shared_ptr<const Dictionary>> records;
    const CFIndex count = CFArrayGetCount(list.get());
    for (CFIndex i = 0; i < count; ++i)
      if (const auto record =
              as<CFDictionaryRef>(CFDictionaryGetTypeID(), CFArrayGetValueAtIndex(list.get(), i)))
        records.push_back(dictionaryFrom(record));
    return records;
  }
};

}  // namespace

std::shared_ptr<BatteryRecords> systemBatteryRecords() {
  static auto& records =
      *new std::shared_ptr<BatteryRecords>(std::make_shared<MacosBatteryRecords>());
  return records;
}

}  // namespace vantile
