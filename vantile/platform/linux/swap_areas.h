#pragma once

#include <optional>
#include <vector>

#include "vantile/platform/linux/roots.h"
#include "vantile/platform/parsers/swaps.h"
#include "vantile/platform/swap_areas.h"

namespace vantile {

/// Swap space from /proc/swaps. It is read once in a monitor's life, so nothing is kept open.
class LinuxSwapAreas final : public SwapAreas {
 public:
  explicit LinuxSwapAreas(LinuxRoots roots = {}) : roots_(std::move(roots)) {}

  std::optional<std::vector<SwapArea>> areas() override;
  std::optional<SwapUsage> usage() override;

 private:
  std::optional<std::vector<SwapLine>> lines();  // nothing when the list can't be read
  bool isEncrypted(const SwapArea& area);

  const LinuxRoots roots_;
};

}  // namespace vantile
