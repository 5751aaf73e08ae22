#include "registry.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <string>
#include <vector>

namespace vantile::host {
namespace {

using Names = std::vector<std::string>;

TEST(HostRegistry, WatchersAreApartFromWhatSamples) {
  EXPECT_EQ(sampledNames(), (Names{"memory", "cpu", "process"}));
  EXPECT_EQ(watcherNames(), (Names{"downloads", "applications", "trash"}));
}

TEST(HostRegistry, WatchersAloneTellOfChanges) {
  for (const auto& monitor : monitors()) {
    EXPECT_EQ(monitor.isWatcher(), monitor.sample.empty()) << monitor.name;
  }
}

TEST(HostRegistry, EveryMonitorHasOnePlaceOnTheDashboard) {
  Names known, shown;
  for (const auto& monitor : monitors()) known.emplace_back(monitor.name);
  for (const auto& part : dashboardParts()) {
    shown.insert(shown.end(), part.monitors.begin(), part.monitors.end());
  }
  std::ranges::sort(known);
  std::ranges::sort(shown);
  EXPECT_EQ(shown, known);
}

}  // namespace
}  // namespace vantile::host
