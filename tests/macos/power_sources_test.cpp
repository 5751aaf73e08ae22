#include "vantile/platform/power_sources.h"

#include <CoreFoundation/CoreFoundation.h>

#include <cstdint>

#include "seam.h"

namespace vantile {
namespace {

using fakes::PropertyList;
using Entries = PropertyList::Dictionary;

/// Counts its calls in what it is given.
void count(void* calls) {
  ++*static_cast<int*>(calls);
}

class PowerSourcesSeam : public Seam {
 protected:
  static void runOnce() { CFRunLoopRunInMode(kCFRunLoopDefaultMode, 0, false); }

  const std::shared_ptr<PowerSources> sources = systemPowerSources();
  int calls = 0;
};

TEST_F(PowerSourcesSeam, ADescriptionIsTakenWithItsKindsOfValues) {
  fakes::machine.powerSources = {{PropertyList{Entries{
      {u"BatteryHealth", {u"Good"}},
      {u"Is Present", {true}},
      {u"Is Charging", {false}},
      {u"Current Capacity", {std::int64_t{4500}}},
      {u"Max Capacity", {5000.5}},
      {u"Power Source State", {u"AC Power"}},
      {u"Time to Full Charge", {std::int64_t{-1}}},
      {u"Ignored", {PropertyList::Data()}},
  }}}};
  const auto found = sources->descriptions();
  ASSERT_EQ(found.size(), 1u);
  EXPECT_EQ(*found[0]->text("BatteryHealth"), "Good");
  EXPECT_EQ(found[0]->boolean("Is Present"), true);
  EXPECT_EQ(found[0]->boolean("Is Charging"), false);
  EXPECT_EQ(found[0]->int64("Current Capacity"), 4500);
  EXPECT_EQ(found[0]->number("Max Capacity"), 5000.5);
  EXPECT_EQ(*found[0]->text("Power Source State"), "AC Power");
  EXPECT_EQ(found[0]->int64("Time to Full Charge"), -1);
  EXPECT_EQ(found[0]->size(), 7u);
}

TEST_F(PowerSourcesSeam, SourcesAreInTheSystemsOrderWithoutThoseThatWent) {
  const auto named = [](const char16_t* name) { return PropertyList{Entries{{u"Name", {name}}}}; };
  fakes::machine.powerSources = {named(u"one"), std::nullopt, named(u"two")};
  const auto found = sources->descriptions();
  ASSERT_EQ(found.size(), 2u);
  EXPECT_EQ(*found[0]->text("Name"), "one");
  EXPECT_EQ(*found[1]->text("Name"), "two");
}

TEST_F(PowerSourcesSeam, WithoutInformationOrAListThereAreNone) {
  EXPECT_TRUE(sources->descriptions().empty());
  fakes::machine.powerSources.emplace();
  EXPECT_TRUE(sources->descriptions().empty());
  fakes::machine.powerSources = {PropertyList{Entries{}}};
  fakes::machine.hasPowerSourcesList = false;
  EXPECT_TRUE(sources->descriptions().empty());
}

TEST_F(PowerSourcesSeam, AChangeIsToldOnTheRunLoopInItsDefaultMode) {
  const auto subscription = sources->subscribe(count, &calls);
  ASSERT_TRUE(subscription);
  EXPECT_EQ(fakes::machine.sourcesInDefaultMode, 1);
  fakes::changePowerSources();
  EXPECT_EQ(calls, 0);
  runOnce();
  EXPECT_EQ(calls, 1);
  fakes::changePowerSources();
  runOnce();
  EXPECT_EQ(calls, 2);
}

TEST_F(PowerSourcesSeam, ASubscriptionThatWentTellsNothing) {
  auto subscription = sources->subscribe(count, &calls);
  fakes::changePowerSources();
  subscription.reset();
  runOnce();
  EXPECT_EQ(calls, 0);
  EXPECT_EQ(fakes::live().sources, 0);
}

TEST_F(PowerSourcesSeam, ASubscriptionMayGoInItsOwnCall) {
  struct Holder {
    static void end(void* holder) { static_cast<Holder*>(holder)->subscription.reset(); }
    std::unique_ptr<PowerSourceSubscription> subscription;
  } holder;
  holder.subscription = sources->subscribe(Holder::end, &holder);
  fakes::changePowerSources();
  runOnce();
  EXPECT_FALSE(holder.subscription);
  EXPECT_EQ(fakes::live().sources, 0);
}

TEST_F(PowerSourcesSeam, WhereTheSystemRefusesThereIsNoSubscription) {
  fakes::machine.refusesObjects = true;
  EXPECT_FALSE(sources->subscribe(count, &calls));
}

}  // namespace
}  // namespace vantile
