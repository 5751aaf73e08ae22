#include <gtest/gtest.h>

#include <functional>
#include <stdexcept>
#include <thread>

#include "vantile/foundation/delegate_slot.h"
#include "vantile/foundation/sample_lock.h"

#include "fakes/recorded_log.h"

namespace vantile {
namespace {

struct Delegate {
  std::function<void(int)> told;
  std::function<void()> other;
};

TEST(DelegateSlot, AnOperationThatIsNotImplementedIsNotCalled) {
  const auto delegate = std::make_shared<Delegate>();
  EXPECT_FALSE(implements(delegate, &Delegate::told));
  tell(delegate, &Delegate::told, 1);
  tell(std::shared_ptr<Delegate>(), &Delegate::told, 1);
}

TEST(DelegateSlot, AnImplementedOperationGetsItsArguments) {
  const auto delegate = std::make_shared<Delegate>();
  int got = 0;
  delegate->told = [&](int value) { got = value; };
  EXPECT_TRUE(implements(delegate, &Delegate::told));
  tell(delegate, &Delegate::told, 7);
  EXPECT_EQ(got, 7);
}

TEST(DelegateSlot, WhatADelegateThrowsStaysInsideAndIsLogged) {
  const testing::RecordedLog log;
  const auto delegate = std::make_shared<Delegate>();
  delegate->told = [](int) { throw std::runtime_error("mine"); };
  EXPECT_NO_THROW(tell(delegate, &Delegate::told, 1));
  EXPECT_EQ(log.lines.at(0), "a delegate threw: mine");
}

TEST(DelegateSlot, HoldsOnToItsDelegateUntilReplaced) {
  DelegateSlot<Delegate> slot;
  auto delegate = std::make_shared<Delegate>();
  const std::weak_ptr<Delegate> seen = delegate;
  slot.set(std::move(delegate));
  EXPECT_FALSE(seen.expired());
  slot.set(nullptr);
  EXPECT_TRUE(seen.expired());
}

TEST(DelegateSlot, AnEarlierOneIsBroughtUpToDate) {
  DelegateSlot<Delegate> slot;
  auto held = slot.get();
  for (const auto& each : {std::make_shared<Delegate>(), std::make_shared<Delegate>()}) {
    slot.set(each);
    slot.refresh(held);
    EXPECT_EQ(held, each);
  }
  slot.set(nullptr);
  slot.refresh(held);
  EXPECT_EQ(held, nullptr);
}

TEST(DelegateSlot, MayBeReplacedFromInsideACall) {
  DelegateSlot<Delegate> slot;
  const auto delegate = std::make_shared<Delegate>();
  delegate->other = [&] { slot.set(nullptr); };
  slot.set(delegate);
  tell(slot.get(), &Delegate::other);
  EXPECT_EQ(slot.get(), nullptr);
}

TEST(DelegateSlot, MayBeReplacedWhileAnotherThreadCalls) {
  DelegateSlot<Delegate> slot;
  std::thread caller([&] {
    for (int i = 0; i < 1000; ++i) tell(slot.get(), &Delegate::told, i);
  });
  for (int i = 0; i < 1000; ++i) {
    const auto delegate = std::make_shared<Delegate>();
    delegate->told = [](int) {};
    slot.set(delegate);
  }
  caller.join();
}

TEST(SampleLock, RefusesANestedSampleOfTheSameThread) {
  SampleLock lock;
  const SampleLock::Scope outer(lock);
  EXPECT_TRUE(outer);
  EXPECT_FALSE(SampleLock::Scope(lock));
}

TEST(SampleLock, IsFreeAgainAfterItsScope) {
  SampleLock lock;
  { const SampleLock::Scope first(lock); }
  EXPECT_TRUE(SampleLock::Scope(lock));
}

TEST(SampleLock, MakesAnotherThreadWait) {
  SampleLock lock;
  int inside = 0;
  const auto sample = [&] {
    for (int i = 0; i < 1000; ++i) {
      const SampleLock::Scope scope(lock);
      EXPECT_TRUE(scope);
      EXPECT_EQ(++inside, 1);
      --inside;
    }
  };
  std::thread other(sample);
  sample();
  other.join();
}

}  // namespace
}  // namespace vantile
