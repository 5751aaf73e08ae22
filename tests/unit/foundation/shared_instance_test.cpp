#include "vantile/foundation/shared_instance.h"

#include <gtest/gtest.h>

#include <stdexcept>
#include <thread>
#include <vector>

namespace vantile {
namespace {

TEST(SharedInstance, IsMadeOnce) {
  SharedInstance<int> shared;
  int made = 0;
  const auto make = [&] { return std::make_shared<int>(++made); };
  EXPECT_EQ(shared.get(make), shared.get(make));
  EXPECT_EQ(made, 1);
}

TEST(SharedInstance, AFailedConstructionIsTriedAgain) {
  SharedInstance<int> shared;
  EXPECT_EQ(shared.get([] { return std::shared_ptr<int>(); }), nullptr);
  EXPECT_NE(shared.get([] { return std::make_shared<int>(1); }), nullptr);
}

TEST(SharedInstance, AConstructionThatThrowsLeavesTheLock) {
  SharedInstance<int> shared;
  EXPECT_THROW(shared.get([]() -> std::shared_ptr<int> { throw std::runtime_error("no"); }),
               std::runtime_error);
  std::thread([&] {
    EXPECT_NE(shared.get([] { return std::make_shared<int>(1); }), nullptr);
  }).join();
}

TEST(SharedInstance, ItsConstructionMayAskForIt) {
  SharedInstance<int> shared;
  const auto inner = [] { return std::make_shared<int>(1); };
  EXPECT_EQ(*shared.get([&] { return std::make_shared<int>(*shared.get(inner) + 1); }), 2);
}

TEST(SharedInstance, ManyThreadsGetTheSame) {
  SharedInstance<int> shared;
  std::vector<std::shared_ptr<int>> got(8);
  std::vector<std::thread> threads;
  for (auto& slot : got)
    threads.emplace_back([&] { slot = shared.get([] { return std::make_shared<int>(1); }); });
  for (auto& thread : threads) thread.join();
  for (const auto& each : got) EXPECT_EQ(each, got.front());
}

}  // namespace
}  // namespace vantile
