#include "vantile/platform/linux/recent_stats.h"

#include <time.h>

namespace vantile {

RecentStats& RecentStats::shared() {
  static auto& readings = *new RecentStats;
  return readings;
}

std::uint64_t sinceBoot() {
  timespec now = {};
  ::clock_gettime(CLOCK_BOOTTIME, &now);
  return static_cast<std::uint64_t>(now.tv_sec) * 1'000'000'000 +
         static_cast<std::uint64_t>(now.tv_nsec);
}

}  // namespace vantile
