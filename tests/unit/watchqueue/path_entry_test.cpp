#include "vantile/watchqueue/path_entry.h"

#include <gtest/gtest.h>

#include <cerrno>
#include <memory>
#include <string>
#include <vector>

#include "fakes/fake_watch_queue_ports.h"

namespace vantile {
namespace {

class PathEntry : public ::testing::Test {
 protected:
  PathEntry() { ports.disk->tree->file("d/a"); }

  static std::shared_ptr<WatchQueuePathEntry> entry(const std::string& path = "/disk/d/a") {
    return WatchQueuePathEntry::initWithPathAndSubscriptionFlags(path, 0x23);
  }

  testing::FakeWatchQueuePorts ports;
  testing::FakeFileEvents& events = *ports.events;
};

TEST_F(PathEntry, OpensThePathAndKeepsWhatItWasGiven) {
  const auto made = entry();
  ASSERT_NE(made, nullptr);
  EXPECT_EQ(events.opened, std::vector<std::string>{"/disk/d/a"});
  EXPECT_EQ(made->path(), "/disk/d/a");
  EXPECT_EQ(made->subscriptionFlags(), 0x23u);
  EXPECT_EQ(events.identity(made->watchedFD()), ports.disk->identityOf("/disk/d/a"));
}

TEST_F(PathEntry, IsNullForAPathThatCanNotBeOpened) {
  EXPECT_EQ(entry("/disk/d/missing"), nullptr);
  events.openError = EACCES;
  EXPECT_EQ(entry(), nullptr);
  EXPECT_TRUE(events.closed.empty());
}

TEST_F(PathEntry, ClosesAtItsEndWhatItOpened) {
  auto made = entry();
  const auto watched = made->watchedFD();
  EXPECT_TRUE(events.closed.empty());
  made.reset();
  EXPECT_EQ(events.closed, std::vector{watched});
}

TEST_F(PathEntry, ClosesAtItsEndWhatItWasGivenInstead) {
  for (const std::int32_t descriptor : {0, 5}) {
    events.closed.clear();
    entry()->setWatchedFD(descriptor);
    EXPECT_EQ(events.closed, std::vector{descriptor});
  }
}

TEST_F(PathEntry, ClosesNothingWhenItHoldsNothing) {
  for (const std::int32_t none : {-1, INT32_MIN}) {
    const auto made = entry();
    made->setWatchedFD(none);
    EXPECT_EQ(made->watchedFD(), none);
  }
  EXPECT_TRUE(events.closed.empty());
}

TEST_F(PathEntry, KeepsWhatItIsSetTo) {
  const auto made = entry();
  made->setPath("/disk/d/b");
  made->setSubscriptionFlags(0xFFFFFFFF);
  EXPECT_EQ(made->path(), "/disk/d/b");
  EXPECT_EQ(made->subscriptionFlags(), 0xFFFFFFFFu);
}

TEST_F(PathEntry, TakesAnyBytesForAName) {
  const std::string path = "/disk/d/line\nbreak and \xff\xc3";
  ports.disk->tree->file("d/line\nbreak and \xff\xc3");
  const auto made = entry(path);
  ASSERT_NE(made, nullptr);
  EXPECT_EQ(made->path(), path);
  EXPECT_EQ(events.opened, std::vector{path});
}

TEST_F(PathEntry, RegistersNothingWithAKernelQueue) {
  int error = 0;
  const auto kernel = events.newQueue(error);
  const auto made = entry();
  EXPECT_TRUE(events.watchedPaths().empty());
}

}  // namespace
}  // namespace vantile
