#include "vantile/platform/linux/time_remaining.h"

namespace vantile {

double LinuxTimeRemaining::estimate() {
  const auto found = supplies_.read(SupplyUse::estimate, true);
  return timeRemainingOf(found.batteries, onExternalPower(found.mains, found.batteries));
}

std::shared_ptr<TimeRemaining> systemTimeRemaining() {
  static auto& remaining =
      *new std::shared_ptr<TimeRemaining>(std::make_shared<LinuxTimeRemaining>());
  return remaining;
}

}  // namespace vantile
