#include "vantile/foundation/notification_center.h"

#include <gtest/gtest.h>

#include <stdexcept>
#include <string>

#include "fakes/recorded_log.h"

namespace vantile {
namespace {

class Center : public ::testing::Test {
 protected:
  NotificationCenter::Observer note(char name) {
    return [this, name](const Notification&) { seen += name; };
  }

  NotificationCenter center;
  std::string seen;
};

TEST_F(Center, TellsObserversOfTheNameInTheirOrder) {
  const auto first = center.observe("written", note('a'));
  const auto other = center.observe("deleted", note('x'));
  const auto second = center.observe("written", note('b'));
  center.post({"written"});
  EXPECT_EQ(seen, "ab");
}

TEST_F(Center, HandsOverObjectAndUserInfo) {
  Dictionary info;
  info.set("path", "file");
  bool told = false;
  const auto observer = center.observe("written", [&](const Notification& notification) {
    told = notification.object == &center && notification.userInfo == &info;
  });
  center.post({"written", &center, &info});
  EXPECT_TRUE(told);
}

TEST_F(Center, ARegistrationThatIsGoneIsNotTold) {
  { const auto gone = center.observe("written", note('a')); }
  center.post({"written"});
  EXPECT_EQ(seen, "");
}

TEST_F(Center, AnObserverThatGoesDuringThePostIsNotToldAnyMore) {
  NotificationCenter::Registration second;
  const auto first = center.observe("written", [&](const Notification&) { second = {}; });
  second = center.observe("written", note('b'));
  center.post({"written"});
  EXPECT_EQ(seen, "");
}

TEST_F(Center, AnObserverMayGoInItsOwnCall) {
  NotificationCenter::Registration self;
  self = center.observe("written", [&](const Notification&) {
    seen += 'a';
    self = {};
  });
  center.post({"written"});
  center.post({"written"});
  EXPECT_EQ(seen, "a");
}

TEST_F(Center, AnObserverMayPostAndObserve) {
  NotificationCenter::Registration inner;
  const auto outer = center.observe("one", [&](const Notification&) {
    inner = center.observe("two", note('b'));
    center.post({"two"});
  });
  center.post({"one"});
  EXPECT_EQ(seen, "b");
}

TEST_F(Center, WhatAnObserverThrowsDoesNotKeepTheNextFromBeingTold) {
  const testing::RecordedLog log;
  const auto first =
      center.observe("written", [](const Notification&) { throw std::runtime_error("mine"); });
  const auto second = center.observe("written", note('b'));
  center.post({"written"});
  EXPECT_EQ(seen, "b");
  EXPECT_EQ(log.lines.at(0), "an observer threw: mine");
}

TEST_F(Center, TheWorkspacesIsOne) {
  EXPECT_EQ(&NotificationCenter::workspace(), &NotificationCenter::workspace());
}

}  // namespace
}  // namespace vantile
