#include "vantile/platform/swap_areas.h"

#include <sys/sysctl.h>

namespace vantile {
namespace {

class MacosSwapAreas final : public SwapAreas {
 public:
  std::optional<std::vector<SwapArea>> areas() override { return std::nullopt; }

  std::optional<SwapUsage> usage() override {
    int name[] = {CTL_VM, VM_SWAPUSAGE};
    xsw_usage usage = {};
    std::size_t size = sizeof usage;
    if (::sysctl(name, 2, &usage, &size, nullptr, 0) != 0) return std::nullopt;
    return SwapUsage{usage.xsu_used, usage.xsu_encrypted != 0};
  }
};

}  // namespace

std::shared_ptr<SwapAreas> systemSwapAreas() {
  static auto& areas = *new std::shared_ptr<SwapAreas>(std::make_shared<MacosSwapAreas>());
  return areas;
}

}  // namespace vantile
