#include <thread>

#include "vantile/network/net_ppp.h"

#include "unit/network/network_fixture.h"

namespace vantile::testing {
namespace {

using namespace std::chrono_literals;

class NetworkLife : public NetworkSample {};

TEST_F(NetworkLife, WithoutAConfigurationTheMonitorIsThereAndTellsNothing) {
  store.refuses = true;
  monitor().updateInfo();
  monitor().updateInfo();
  EXPECT_EQ(calls, 0);
  EXPECT_EQ(interfaces.counterReads, 0);
}

TEST_F(NetworkLife, WithoutADelegateItIsTakenAllTheSame) {
  monitor().setDelegate(nullptr);
  monitor().updateInfo();
  monitor().setDelegate(std::make_shared<NetworkDelegate>());
  monitor().updateInfo();
  EXPECT_EQ(interfaces.counterReads, 3);
}

TEST_F(NetworkLife, ADelegateMaySampleAgain) {
  delegate->networkStatus = [this](const Array&) {
    if (++calls < 5) monitor_->updateInfo();
  };
  monitor().updateInfo();
  EXPECT_EQ(calls, 5);
}

TEST_F(NetworkLife, AChangeInTheMidstOfACallIsSafe) {
  order({"A", "B"});
  add("B", "en1");
  delegate->networkStatus = [this](const Array& services) {
    calls += static_cast<int>(services.size());
    change();
  };
  monitor().updateInfo();
  EXPECT_EQ(calls, 4);
}

TEST_F(NetworkLife, ADelegateMayLetGoOfTheMonitor) {
  order({"A", "B"});
  add("B", "en1");
  delegate->networkStatus = [this](const Array&) {
    ++calls;
    monitor_.reset();
    EXPECT_EQ(store.sessions, 1);
  };
  monitor().updateInfo();
  EXPECT_EQ(calls, 2);
  EXPECT_EQ(store.sessions, 0);
}

TEST_F(NetworkLife, AMonitorThatGoesEndsItsSession) {
  monitor();
  EXPECT_EQ(store.sessions, 1);
  monitor_.reset();
  EXPECT_EQ(store.sessions, 0);
  loop.advance(3s);
  EXPECT_EQ(calls, 0);
}

TEST_F(NetworkLife, AMonitorThatGoesOnAnotherThreadEndsItsSessionOnItsOwnLoop) {
  monitor();
  std::thread([this] { monitor_.reset(); }).join();
  EXPECT_EQ(store.sessions, 1);
  loop.settle();
  EXPECT_EQ(store.sessions, 0);
  EXPECT_EQ(store.endedOn, std::this_thread::get_id());
}

TEST_F(NetworkLife, IsTakenOnTheLoopOfTheThreadThatSetTheInterval) {
  monitor();
  std::thread::id toldOn;
  delegate->networkStatus = [&](const Array& services) {
    toldOn = std::this_thread::get_id();
    calls += static_cast<int>(services.size());
  };
  std::thread([&] {
    SteppedLoop own;
    monitor().setFreshInterval(2);
    loop.advance(10s);
    EXPECT_EQ(calls, 0) << "the old timer is gone";
    own.advance(2s);
    EXPECT_EQ(calls, 1);
    EXPECT_EQ(toldOn, std::this_thread::get_id());
    order({"A", "B"});
    add("B", "en1");
    change();
    own.advance(2s);
    EXPECT_EQ(calls, 5) << "two services, two calls";
  }).join();
}

TEST_F(NetworkLife, AMonitorHoldsThePppController) {
  daemonAnswers("");
  store.refuses = true;  // nobody else holds it then
  monitor();
  const std::weak_ptr<NetPPP> controller = NetPPP::singleton();
  sharedPppController().forget();
  EXPECT_FALSE(controller.expired());
  monitor_.reset();
  EXPECT_TRUE(controller.expired());
}

TEST_F(NetworkLife, TheSharedMonitorIsMadeOnce) {
  const auto shared = Network::singleton();
  EXPECT_EQ(Network::singleton(), shared);
  EXPECT_EQ(store.sessions, 1);
}

}  // namespace
}  // namespace vantile::testing
