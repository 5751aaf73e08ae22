#include "vantile/foundation/ending_on_loop.h"

#include <gtest/gtest.h>

#include <thread>

#include "fakes/stepped_loop.h"

namespace vantile {
namespace {

/// Tells where it ended.
struct Bound {
  explicit Bound(std::thread::id& where) : endedOn(where) {}
  ~Bound() { endedOn = std::this_thread::get_id(); }
  std::thread::id& endedOn;
};

class EndingOnLoop : public ::testing::Test {
 protected:
  std::shared_ptr<Bound> made() { return endingOnLoop(std::make_unique<Bound>(endedOn)); }
  /// On another thread; gives that.
  static std::thread::id letGo(std::shared_ptr<Bound>& held) {
    std::thread thread([&held] { held.reset(); });
    const auto id = thread.get_id();
    thread.join();
    return id;
  }

  const std::thread::id here = std::this_thread::get_id(), nowhere{};
  std::thread::id endedOn;
};

TEST_F(EndingOnLoop, OfNothingIsNothing) {
  const testing::SteppedLoop loop;
  EXPECT_FALSE(endingOnLoop(std::unique_ptr<Bound>()));
}

TEST_F(EndingOnLoop, OnTheLoopsThreadIsAtOnce) {
  const testing::SteppedLoop loop;
  auto held = made();
  EXPECT_EQ(endedOn, nowhere);
  held.reset();
  EXPECT_EQ(endedOn, here);
}

TEST_F(EndingOnLoop, OnAnotherThreadWaitsUntilTheLoopIsServed) {
  testing::SteppedLoop loop;
  auto held = made();
  letGo(held);
  EXPECT_EQ(endedOn, nowhere);
  loop.settle();
  EXPECT_EQ(endedOn, here);
}

TEST_F(EndingOnLoop, WaitsForTheCallThatTheLoopIsIn) {
  testing::SteppedLoop loop;
  auto held = made();
  loop.loop().post([&] {
    letGo(held);
    EXPECT_EQ(endedOn, nowhere);
  });
  loop.settle();
  EXPECT_EQ(endedOn, here);
}

TEST_F(EndingOnLoop, ComesWithALoopThatIsNotServedAnyMore) {
  {
    const testing::SteppedLoop loop;
    auto held = made();
    letGo(held);
    EXPECT_EQ(endedOn, nowhere);
  }
  EXPECT_EQ(endedOn, here);
}

TEST_F(EndingOnLoop, WithoutTheLoopIsAtOnce) {
  std::shared_ptr<Bound> held;
  {
    const testing::SteppedLoop loop;
    held = made();
  }
  const auto there = letGo(held);
  EXPECT_EQ(endedOn, there);
}

}  // namespace
}  // namespace vantile
