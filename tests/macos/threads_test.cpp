#include "vantile/platform/threads.h"

#include <pthread.h>

#include <future>
#include <string>
#include <thread>

#include "seam.h"

namespace vantile {
namespace {

using ThreadsSeam = Seam;

/// Tells when it goes.
struct Farewell {
  ~Farewell() { gone.set_value(); }
  std::promise<void> gone;
};

TEST_F(ThreadsSeam, ABodyRunsOnAThreadOfItsOwnByThatName) {
  // The thread may still be in the promise when the test has its word.
  const auto told = std::make_shared<std::promise<std::pair<std::thread::id, std::string>>>();
  std::string name = "vantile-watcher";
  const bool runs = systemThreads()->detach(name.c_str(), [told] {
    char own[64] = {};
    ::pthread_getname_np(::pthread_self(), own, sizeof own);
    told->set_value({std::this_thread::get_id(), own});
  });
  name = "overwritten";
  ASSERT_TRUE(runs);
  const auto [thread, called] = told->get_future().get();
  EXPECT_NE(thread, std::this_thread::get_id());
  EXPECT_EQ(called, "vantile-watcher");
}

TEST_F(ThreadsSeam, WhatABodyHoldsGoesWithIt) {
  auto held = std::make_shared<Farewell>();
  auto gone = held->gone.get_future();
  ASSERT_TRUE(systemThreads()->detach("brief", [held = std::move(held)] {}));
  gone.get();
}

TEST_F(ThreadsSeam, WithoutAThreadTheBodyIsNotRun) {
  fakes::machine.refusesThreads = true;
  bool ran = false;
  auto held = std::make_shared<Farewell>();
  auto gone = held->gone.get_future();
  EXPECT_FALSE(systemThreads()->detach("none", [&ran, held = std::move(held)] { ran = true; }));
  gone.get();
  EXPECT_FALSE(ran);
}

}  // namespace
}  // namespace vantile
