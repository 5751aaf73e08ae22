#include "registry.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <string>
#include <vector>

namespace vantile::host {
namespace {

using Names = std::vector<std::string>;

TEST(HostRegistry, WatchersAreApartFromWhatSamples) {
  EXPECT_EQ(sampledNames(), (Names{"memory", "cpu", "process", "network", "disk", "battery"}));
  EXPECT_EQ(watcherNames(), (Names{"downloads", "applications", "trash"}));
}

TEST(HostRegistry, WatchersAndTheBatteryTellOfChanges) {
  for (const auto& monitor : monitors()) {
    const bool tellsOfChanges = monitor.isWatcher() || monitor.name == "battery";
    EXPECT_EQ(tellsOfChanges, monitor.sample.empty()) << monitor.name;
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
