#include <thread>

#include "fakes/recorded_log.h"
#include "unit/power/battery_fixture.h"

namespace vantile::testing {
namespace {

/// The object's life, and who calls it.
using BatteryInfo = Battery;

TEST_F(BatteryInfo, MakingOneSubscribesItAndReadsNothing) {
  ASSERT_EQ(ports.sources->subscribers.size(), 1u);
  EXPECT_EQ(ports.sources->subscribers[0].first, &PowerSourceChanged);
  EXPECT_EQ(ports.sources->subscribers[0].second, info.get());
  EXPECT_EQ(ports.sources->reads, 0);
  EXPECT_EQ(ports.remaining->reads, 0);
  EXPECT_EQ(ports.entry->reads, 0);
  EXPECT_EQ(info->timeSinceUnpluggedTranslated(), std::nullopt);
}

TEST_F(BatteryInfo, AChangeOfThePowerSourcesIsAFullUpdate) {
  ports.sources->sources = {Source{}.description()};
  ports.remaining->seconds = 3600;
  ports.sources->tellChange();
  EXPECT_EQ(told, Told{"remaining 1:00"});
  EXPECT_EQ(info->batteryHealth(), "Good");
  EXPECT_EQ(info->batteryWatt(), 0.0);
}

TEST_F(BatteryInfo, ASubscriptionEndsWithItsObject) {
  info.reset();
  EXPECT_TRUE(ports.sources->subscribers.empty());
}

TEST_F(BatteryInfo, WithoutASubscriptionTheHostStillUpdates) {
  ports.sources->refuses = true;
  info = KVDBatteryInfo::init();
  ASSERT_TRUE(info);
  update(3600, ofPercent({}, 42));
  EXPECT_EQ(info->currentPercent(), 42);
}

TEST_F(BatteryInfo, ASubscriptionThatThrowsIsALogLine) {
  const RecordedLog log;
  ports.sources->throws = true;
  EXPECT_TRUE(KVDBatteryInfo::init());
  EXPECT_EQ(log.lines,
            std::vector<std::string>{"following the power sources threw: no subscription"});
}

TEST_F(BatteryInfo, ADelegateMayLetGoOfItInTheMidstOfAChange) {
  const std::weak_ptr<KVDBatteryInfo> gone = info;
  delegate->batteryWithRemaining = [this](const std::string&) { info.reset(); };
  ports.sources->sources = {Source{}.description(), Source{}.description()};
  ports.remaining->seconds = 3600;
  ports.sources->tellChange();
  EXPECT_TRUE(gone.expired());
  EXPECT_TRUE(ports.sources->subscribers.empty());
}

TEST_F(BatteryInfo, ADelegateMayLetGoOfItInTheMidstOfTheHostsOwnUpdate) {
  const std::weak_ptr<KVDBatteryInfo> gone = info;
  delegate->batteryWithRemaining = [this](const std::string&) { info.reset(); };
  ports.sources->sources = {Source{}.description()};
  ports.remaining->seconds = 3600;
  info->updateCurrentStatus();
  EXPECT_TRUE(gone.expired());
}

TEST_F(BatteryInfo, AnUpdateKeepsItUntilItsEnd) {
  const std::weak_ptr<KVDBatteryInfo> kept = info;
  std::vector<bool> gone;
  delegate->batteryWithRemaining = [&](const std::string&) {
    info.reset();
    gone.push_back(kept.expired());
  };
  ports.sources->sources = {Source{}.description(), Source{}.description()};
  ports.remaining->seconds = 3600;
  info->updateStatus();
  EXPECT_EQ(gone, (std::vector<bool>{false, false}));
  EXPECT_TRUE(kept.expired());
}

TEST_F(BatteryInfo, WhatADelegateThrowsIsALogLineAndTheUpdateGoesOn) {
  const RecordedLog log;
  delegate->batteryWithRemaining = [](const std::string&) { throw std::runtime_error("mine"); };
  EXPECT_EQ(update(3600, ofPercent({}, 15)), Told{"left 15%"});
  EXPECT_EQ(log.lines, std::vector<std::string>{"a delegate threw: mine"});
}

TEST_F(BatteryInfo, ACallWithoutAContextDoesNothing) {
  PowerSourceChanged(nullptr);
  EXPECT_EQ(ports.sources->reads, 0);
}

TEST_F(BatteryInfo, ACallForOneThatIsGoneDoesNothing) {
  void* const gone = info.get();
  info.reset();
  PowerSourceChanged(gone);
  EXPECT_EQ(ports.sources->reads, 0);
  info = KVDBatteryInfo::init();
  PowerSourceChanged(info.get());
  EXPECT_EQ(ports.sources->reads, 1);
}

TEST_F(BatteryInfo, LetGoOfOnAnotherThreadItHearsNothingAndItsSubscriptionEndsOnTheLoop) {
  std::thread([this] { info.reset(); }).join();
  ports.sources->tellChange();
  EXPECT_EQ(ports.sources->reads, 0);
  EXPECT_EQ(ports.sources->subscribers.size(), 1u);
  loop.settle();
  EXPECT_TRUE(ports.sources->subscribers.empty());
}

// Nothing is thrown to the host.

TEST_F(BatteryInfo, ReadingsThatThrowAreALogLineAndMissing) {
  const RecordedLog log;
  auto keys = std::make_shared<Dictionary>();
  keys->set("Temperature", std::int64_t{3012});
  ports.entry->entry = keys;
  ports.records->isOutOfMemory = true;
  EXPECT_FALSE(info->isHasBattery());
  EXPECT_EQ(info->getAdvancedBatteryInfo(), nullptr);
  info->setCapacity(4500);
  EXPECT_EQ(update(3600, Source{}), Told{"remaining 1:00"});
  EXPECT_EQ(info->capacity(), 0);
  EXPECT_EQ(info->celsius(), 30.12f);
  ports.entry->isOutOfMemory = true;
  EXPECT_EQ(info->getMoreAdvancedBatteryInfo(), nullptr);
  update(3600, Source{});
  EXPECT_EQ(info->fahrenheit(), 32);
  EXPECT_EQ(log.lines[0], "the battery's records threw: std::bad_alloc");
  EXPECT_EQ(log.lines.back(), "the battery's entry threw: std::bad_alloc");
}

TEST_F(BatteryInfo, SourcesThatThrowAreALogLineAndTheRestIsStillRead) {
  const RecordedLog log;
  ports.sources->isOutOfMemory = true;
  auto keys = std::make_shared<Dictionary>();
  keys->set("Temperature", std::int64_t{3012});
  keys->set("MaxCapacity", std::int64_t{5000});
  ports.entry->entry = keys;
  info->updateCurrentStatus();
  EXPECT_EQ(log.lines, std::vector<std::string>{"an update of the battery threw: std::bad_alloc"});
  EXPECT_EQ(info->celsius(), 30.12f);
  EXPECT_EQ(info->timeSinceUnpluggedTranslated(), "0:00");
  EXPECT_EQ(info->batteryMaxCapacity(), Value(std::int64_t{5000}));
}

TEST_F(BatteryInfo, ATranslationThatThrowsIsALogLineAndTheEntryIsStillRead) {
  const RecordedLog log;
  ports.translations->isOutOfMemory = true;
  ports.sources->sources = {Source{}.description()};
  info->updateCurrentStatus();
  EXPECT_EQ(log.lines, std::vector<std::string>{"an update of the battery threw: std::bad_alloc"});
  EXPECT_EQ(info->timeSinceUnpluggedTranslated(), std::nullopt);
  EXPECT_EQ(info->batteryHealth(), "Good");
}

TEST_F(BatteryInfo, SeveralStandSideBySide) {
  const auto other = KVDBatteryInfo::init();
  EXPECT_NE(other, info);
  EXPECT_EQ(ports.sources->subscribers.size(), 2u);
  ports.sources->tellChange();
  EXPECT_EQ(ports.sources->reads, 2);
}

TEST_F(BatteryInfo, ASourceThatIsMissingIsPassedOver) {
  ports.sources->sources = {nullptr, Source{}.description()};
  ports.remaining->seconds = 3600;
  info->updateStatus();
  EXPECT_EQ(told, Told{"remaining 1:00"});
}

}  // namespace
}  // namespace vantile::testing
