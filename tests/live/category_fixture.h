#pragma once

#include <gtest/gtest.h>

#include <chrono>
#include <functional>
#include <string>
#include <thread>
#include <utility>
#include <vector>

#include "vantile/platform/linux/usage_accounting.h"

#include "live/real_disk.h"

namespace vantile::testing {

/// A tree on the disk, and accountings that take no rest.
struct CountedTree : ::testing::Test {
  UsageAccounting::Means means(std::vector<std::string> installed = {}) const {
    UsageAccounting::Means made;
    made.cacheFolder = caches.path("vantile");
    made.installed = std::move(installed);
    made.pace.leastRest = std::chrono::milliseconds(1);
    made.pace.period = std::chrono::milliseconds(1);
    made.pace.restFactor = 0;
    made.pace.release = std::chrono::nanoseconds(0);
    made.pace.batch = 100000000;
    made.pace.hold = std::chrono::hours(1);
    return made;
  }
  /// Counts the volume once.
  UsageSums counted(const std::string& mountPoint, std::vector<std::string> installed = {}) {
    UsageAccounting accounting(means(std::move(installed)));
    accounting.want({mountPoint}, never);
    while (accounting.figures().empty()) accounting.turn(never);
    return accounting.figures().at(mountPoint);
  }
  /// One further pass over the one volume; folders that it listed.
  std::size_t refreshed(UsageAccounting& accounting) {
    std::this_thread::sleep_for(std::chrono::milliseconds(2));
    const auto before = accounting.listed();
    for (auto rest = accounting.turn(never); rest == std::chrono::nanoseconds(0);
         rest = accounting.turn(never)) {
    }
    return accounting.listed() - before;
  }
  void write(const std::string& name, std::size_t bytes) const {
    tree.file(name, std::string(bytes, 'x'));
  }

  const TemporaryFolder tree{buildFolder()}, caches{buildFolder()};
  const std::function<bool()> never = [] { return false; };
};

}  // namespace vantile::testing
