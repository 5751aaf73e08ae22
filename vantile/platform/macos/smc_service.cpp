#include "vantile/platform/smc_service.h"

#include <IOKit/IOKitLib.h>

namespace vantile {
namespace {

class MacosSmcService final : public SmcService {
 public:
  SmcOpening open() override {
    SmcOpening opening;
    io_iterator_t services = IO_OBJECT_NULL;
    // No port stands for the main one, whose newer constant older systems lack. The call releases
    // the dictionary.
    opening.matching =
        ::IOServiceGetMatchingServices(MACH_PORT_NULL, ::IOServiceMatching("AppleSMC"), &services);
    if (opening.matching != KERN_SUCCESS) return opening;
    const io_service_t service = ::IOIteratorNext(services);
    ::IOObjectRelease(services);
    opening.found = service != IO_OBJECT_NULL;
    if (!opening.found) return opening;
    opening.opened = ::IOServiceOpen(service, mach_task_self(), 0, &opening.connection);
    ::IOObjectRelease(service);
    return opening;
  }

  std::int32_t close(std::uint32_t connection) override { return ::IOServiceClose(connection); }

  std::int32_t call(std::uint32_t connection, std::uint32_t index, const SMCRecord& in,
                    SMCRecord& out, std::size_t& size) override {
    return ::IOConnectCallStructMethod(connection, index, &in, sizeof in, &out, &size);
  }
};

}  // namespace

std::shared_ptr<SmcService> systemSmcService() {
  static auto& service = *new std::shared_ptr<SmcService>(std::make_shared<MacosSmcService>());
  return service;
}

}  // namespace vantile
