#include "vantile/platform/time_remaining.h"

#include <IOKit/ps/IOPowerSources.h>

namespace vantile {
namespace {

class MacosTimeRemaining final : public TimeRemaining {
 public:
  double estimate() override { return ::IOPSGetTimeRemainingEstimate(); }
};

}  // namespace

std::shared_ptr<TimeRemaining> systemTimeRemaining() {
  static auto& remaining =
      *new std::shared_ptr<TimeRemaining>(std::make_shared<MacosTimeRemaining>());
  return remaining;
}

}  // namespace vantile
