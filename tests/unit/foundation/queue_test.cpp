#include "vantile/foundation/queue.h"

#include <gtest/gtest.h>

#include <stdexcept>

#include "fakes/manual_workers.h"
#include "fakes/recorded_log.h"
#include "fakes/stepped_loop.h"

namespace vantile {
namespace {

using std::chrono::seconds;

TEST(MainQueue, RunsItsWorkOnTheMainLoop) {
  testing::SteppedLoop main;
  bool done = false;
  Queue::main().async([&] { done = true; });
  EXPECT_FALSE(done);
  main.settle();
  EXPECT_TRUE(done);
}

TEST(MainQueue, WaitsForADelay) {
  testing::SteppedLoop main;
  bool done = false;
  Queue::main().after(seconds(2), [&] { done = true; });
  main.advance(seconds(1));
  EXPECT_FALSE(done);
  main.advance(seconds(1));
  EXPECT_TRUE(done);
}

TEST(GlobalQueue, HandsItsWorkToTheWorkers) {
  testing::ManualWorkers workers;
  bool done = false;
  Queue::global().async([&] { done = true; });
  EXPECT_FALSE(done);
  workers.runOne();
  EXPECT_TRUE(done);
}

TEST(GlobalQueue, HandsOnTheDelay) {
  testing::ManualWorkers workers;
  Queue::global().after(seconds(3), [] {});
  EXPECT_EQ(workers.lastDelay, seconds(3));
}

TEST(GlobalQueue, WhatWorkThrowsIsLogged) {
  const testing::RecordedLog log;
  testing::ManualWorkers workers;
  Queue::global().async([] { throw std::runtime_error("mine"); });
  EXPECT_NO_THROW(workers.runOne());
  EXPECT_EQ(log.lines.at(0), "background work threw: mine");
}

}  // namespace
}  // namespace vantile
