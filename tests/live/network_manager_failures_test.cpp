// What comes of NetworkManager's connections when it or the bus does not answer, goes away or comes
// back, and when the client goes.

#include <gtest/gtest.h>
#include <poll.h>
#include <signal.h>

#include <chrono>
#include <stdexcept>
#include <string>
#include <thread>

#include "live/network_manager_fixture.h"

namespace vantile {
namespace {

using namespace testing;
using namespace std::chrono_literals;

using LiveNetworkManagerBus = FollowedNetworkManager;

TEST_F(LiveNetworkManagerBus, NetworkManagerLeavesAndComesBack) {
  startAll();
  bus.add(home);
  follow();
  ASSERT_TRUE(becomes("Home"));
  bus.endManager();
  ASSERT_TRUE(becomes(""));
  EXPECT_EQ(changes, 2);
  bus.startManager();
  bus.add(wired);
  EXPECT_TRUE(becomes("Wired"));
}

TEST_F(LiveNetworkManagerBus, ANetworkManagerThatHangsIsWaitedForWithoutHoldingUpTheLoop) {
  startAll();
  bus.add(home);
  ::kill(bus.manager(), SIGSTOP);
  const auto before = Clock::now();
  follow();
  EXPECT_LT(Clock::now() - before, 2000ms);
  EXPECT_LT(longestWait(3000ms), 2000ms);
  EXPECT_EQ(told(), "");
  ::kill(bus.manager(), SIGCONT);
  EXPECT_TRUE(becomes("Home"));
}

TEST_F(LiveNetworkManagerBus, AnAnswerThatNeverCameIsAskedForAgain) {
  startAll();
  bus.add(home);
  // The first time it is asked, NetworkManager takes longer than is waited for.
  bus.define("ListConnections", "ao", R"(
import time
if not hasattr(self, "asked"):
  self.asked = True
  time.sleep(11)
ret = self.Get("org.freedesktop.NetworkManager.Settings", "Connections"))");
  follow();
  EXPECT_LT(longestWait(10500ms), 2000ms);
  EXPECT_EQ(told(), "");
  EXPECT_TRUE(becomes("Home"));
}

TEST_F(LiveNetworkManagerBus, ABusThatGoesAwayIsLookedForUntilItIsBack) {
  startAll();
  bus.add(home);
  follow();
  ASSERT_TRUE(becomes("Home"));
  bus.end();
  ASSERT_TRUE(becomes(""));
  bus.endManager();
  EXPECT_LT(longestWait(3000ms), 2000ms);  // over the first vain try
  startAll();
  bus.add(wired);
  EXPECT_TRUE(becomes("Wired"));
}

TEST_F(LiveNetworkManagerBus, ABusThatIsNotThereYetIsFoundOnceItIs) {
  follow();
  EXPECT_LT(longestWait(3000ms), 2000ms);
  startAll();
  bus.add(home);
  EXPECT_TRUE(becomes("Home"));
  EXPECT_EQ(changes, 1);
}

TEST_F(LiveNetworkManagerBus, ABusThatNeverAnswersIsGivenUpAndTriedAgainWithoutHoldingUpTheLoop) {
  const testing::ListeningSocket silent(bus.socket());
  const auto before = Clock::now();
  follow();
  EXPECT_LT(Clock::now() - before, 2000ms);
  Descriptor first;
  ASSERT_TRUE(until([&] { return static_cast<bool>(first = silent.accepted()); }));
  EXPECT_LT(longestWait(3000ms), 2000ms);
  const auto tried = Clock::now();
  Descriptor second;
  ASSERT_TRUE(until([&] { return static_cast<bool>(second = silent.accepted()); }, 30s));
  EXPECT_GT(Clock::now() - tried, 5s);
  EXPECT_EQ(changes, 0);
}

TEST_F(LiveNetworkManagerBus, ABusThatEndsEveryConnectionIsTriedAtABoundedPace) {
  const testing::ListeningSocket rude(bus.socket());
  follow();
  int tries = 0;
  const auto end = RunLoop::current().every(5ms, [&] { tries += rude.accepted() ? 1 : 0; });
  EXPECT_LT(longestWait(4500ms), 2000ms);
  // At once, after one second, after two more; four more would be beyond the time.
  EXPECT_GE(tries, 2);
  EXPECT_LE(tries, 3);
}

TEST_F(LiveNetworkManagerBus, ABusThatTalksNonsenseIsTriedAtABoundedPace) {
  const testing::ListeningSocket odd(bus.socket());
  follow();
  Descriptor connection;
  ASSERT_TRUE(until([&] { return static_cast<bool>(connection = odd.accepted()); }));
  const std::string nonsense = "DATA\r\nOK 0123456789abcdef0123456789abcdef\r\nAGREE_UNIX_FD\r\n" +
                               std::string(4096, '\xff');
  ASSERT_GT(::send(connection.get(), nonsense.data(), nonsense.size(), MSG_NOSIGNAL), 0);
  Descriptor next;
  EXPECT_TRUE(until([&] { return static_cast<bool>(next = odd.accepted()); }, 5s));
}

TEST_F(LiveNetworkManagerBus, NothingWakesTheLoopWhileNothingChanges) {
  startAll();
  bus.add(home);
  follow();
  ASSERT_TRUE(becomes("Home"));
  serve(300ms);
  RunLoop::current().dispatch();
  pollfd loop{RunLoop::current().fd(), POLLIN, 0};
  EXPECT_EQ(::poll(&loop, 1, 2000), 0);
}

TEST_F(LiveNetworkManagerBus, AHostThatPollsTheLoopsDescriptorIsServed) {
  startAll();
  bus.keepMany(500);
  follow();
  while (client->connections().empty()) {
    pollfd loop{RunLoop::current().fd(), POLLIN, 0};
    ASSERT_EQ(::poll(&loop, 1, 5000), 1) << "something was due that the descriptor did not tell";
    RunLoop::current().dispatch();
  }
  EXPECT_EQ(client->connections().size(), 500u);
}

TEST_F(LiveNetworkManagerBus, MayEndInsideItsOwnCall) {
  startAll();
  bus.add(home);
  client = followNetworkManager(bus.address(), [this] {
    ++changes;
    client.reset();
  });
  EXPECT_TRUE(until([this] { return changes > 0; }));
  serve(100ms);
  EXPECT_EQ(changes, 1);
}

TEST_F(LiveNetworkManagerBus, AnExceptionStaysInsideAndTheNextChangeIsTold) {
  startAll();
  const auto path = bus.add(home);
  client = followNetworkManager(bus.address(), [this] {
    ++changes;
    throw std::runtime_error("from a call");
  });
  ASSERT_TRUE(becomes("Home"));
  bus.update(path, "'id': <'Cottage'>");
  EXPECT_TRUE(becomes("Cottage"));
  EXPECT_EQ(changes, 2);
}

TEST_F(LiveNetworkManagerBus, NothingIsToldOnceItEndedOnAnotherThread) {
  startAll();
  bus.add(home);
  follow();
  ASSERT_TRUE(becomes("Home"));
  bus.add(wired);
  std::thread([this] { client.reset(); }).join();
  serve(500ms);
  EXPECT_EQ(changes, 1);
}

TEST_F(LiveNetworkManagerBus, MayOutliveItsThread) {
  startAll();
  bus.add(home);
  std::thread([this] {
    follow();
    EXPECT_TRUE(becomes("Home"));
  }).join();
  client.reset();
  EXPECT_EQ(changes, 1);
}

TEST(LiveNetworkManagerAddress, AnAddressThatCanBeNoBusIsNone) {
  EXPECT_FALSE(followNetworkManager("disabled:", {}));
  EXPECT_FALSE(followNetworkManager("unix:nonsense", {}));
}

}  // namespace
}  // namespace vantile
