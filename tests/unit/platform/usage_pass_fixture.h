#pragma once

#include <chrono>
#include <cstddef>
#include <cstdint>
#include <filesystem>
#include <functional>
#include <limits>

#include "vantile/platform/linux/usage_pass.h"

#include "fakes/open_descriptors.h"
#include "unit/platform/usage_fixture.h"

namespace vantile::testing {

/// Passes over a tree, one after the other.
struct UsagePassTest : UsageTest {
  static constexpr auto all = std::numeric_limits<std::size_t>::max() / 2;

  UsagePass pass(bool asksAgain = true) {
    return UsagePass(index, tree.path(),
                     {.installed = &installed,
                      .kinds = &kinds,
                      .presentSecond = [this] { return second(); },
                      .asksAgain = asksAgain,
                      .hold = hold,
                      .now = [this] { return now += tick; }});
  }
  /// One whole pass; what it listed.
  std::size_t run(bool asksAgain = true) {
    auto whole = pass(asksAgain);
    EXPECT_EQ(whole.run(all, never), UsagePass::Came::toTheEnd);
    return whole.listed();
  }
  UsageSums counted() const {
    auto sums = index.blocks();
    for (auto& each : sums) each *= 512;
    return sums;
  }

  using Clock = std::chrono::steady_clock;
  std::chrono::nanoseconds hold = std::chrono::hours(1), tick{0};
  Clock::time_point now{};
  const std::function<bool()> never = [] { return false; };
  std::function<std::int64_t()> second = muchLater;
  InstalledFolders installed{{tree.path("usr")}};
  ContentKinds kinds;
  UsageIndex index;
};

}  // namespace vantile::testing
