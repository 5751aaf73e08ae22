// Callers that ask the PPP daemon for much at once, and what becomes of answers that it owes.

#include "vantile/network/ppp_time.h"

#include "vantile/network/net_ppp.h"
#include "vantile/network/network.h"

#include "unit/network/net_manage_fixture.h"

namespace vantile::testing {
namespace {

using namespace std::chrono_literals;

class PppTime : public Manage {
 protected:
  PppTime() {
    order({"A", "B", "C"});
    add("A", "en0");
    add("B", "en1");
    add("C", "en2");
    for (const char* const each : {"A", "B", "C"}) setup(each, "PPP");
    for (const char* const each : {"ppp0", "ppp1", "ppp2"}) interfaces[each].up = true;
  }
  /// How much time it takes, by the daemon's clock.
  template <class Work>
  std::chrono::nanoseconds timeOf(Work work) {
    const auto before = ports.ppp->now;
    work();
    return ports.ppp->now - before;
  }
  /// Connects anew next.
  void daemonIsBack(std::string replies) {
    ports.ppp->scripts.push_back({.replies = std::move(replies)});
    ports.ppp->now += 30s;
  }
  const Dictionary* pppStatus(std::size_t position) {
    const auto services = manage_->queryInterfaceLists();
    const auto* const found =
        (*services->at(position).as<std::shared_ptr<Dictionary>>())->find("ppp_status_info");
    return found ? found->as<std::shared_ptr<Dictionary>>()->get() : nullptr;
  }
};

TEST_F(PppTime, ASampleOfManyLinksWaitsNoLongerThanOneLink) {
  daemonAnswers("");
  EXPECT_EQ(timeOf([this] { manage(); }), 2s);
  EXPECT_EQ(ports.ppp->requests.size(), 1u) << "the others are answered at once";
}

TEST_F(PppTime, OfASlowDaemonIsSharedByAllRequestsOfASample) {
  std::string replies;
  for (int i = 0; i < 20; ++i) replies += statusReplies(8);
  daemonAnswers(replies);
  manage();
  store.reads.clear();
  ports.ppp->requests.clear();
  ports.ppp->sendingTakes = 300ms;
  EXPECT_EQ(timeOf([this] { manage_->netStatsWithInterval(1); }), 1800ms);
  EXPECT_EQ(ports.ppp->requests.size(), 6u);
  ports.ppp->sendingTakes = 500ms;
  ports.ppp->requests.clear();
  EXPECT_EQ(timeOf([this] { manage_->netStatsWithInterval(1); }), 2s);
  EXPECT_EQ(ports.ppp->requests.size(), 4u) << "the last two get no time, and so are not begun";
}

TEST_F(PppTime, OfATickIsSharedByAllThatItAsksFor) {
  std::string replies;
  for (int i = 0; i < 14; ++i) replies += statusReplies(8);
  daemonAnswers(replies);
  const auto monitor = Network::init();
  change();
  ports.ppp->requests.clear();
  ports.ppp->sendingTakes = 500ms;
  EXPECT_EQ(timeOf([&] { monitor->updateInfo(); }), 2s);
  EXPECT_EQ(ports.ppp->requests.size(), 4u);
  ports.ppp->sendingTakes = 0s;
  monitor->updateInfo();
  EXPECT_EQ(ports.ppp->requests.size(), 16u) << "the next one has a time of its own";
}

TEST_F(PppTime, OfADelegatesOwnRequestsIsAllTheirs) {
  std::string replies;
  for (int i = 0; i < 7; ++i) replies += statusReplies(8);
  daemonAnswers(replies);
  const auto monitor = Network::init();
  const auto delegate = std::make_shared<NetworkDelegate>();
  std::vector<std::chrono::nanoseconds> left;
  delegate->networkStatus = [&](const Array&) { left.push_back(SharedPppTime::left()); };
  monitor->setDelegate(delegate);
  ports.ppp->sendingTakes = 200ms;
  monitor->updateInfo();
  EXPECT_EQ(left, (std::vector<std::chrono::nanoseconds>{2s, 2s, 2s}));
}

TEST_F(PppTime, OfAMonitorsStartIsTwoSecondsInAll) {
  ports.addDaemon();
  ports.ppp->scripts = {{.connecting = PppTransfer::late}, {.connecting = PppTransfer::late}};
  EXPECT_EQ(timeOf([] { Network::init(); }), 2s);
  EXPECT_EQ(ports.ppp->connects, 1);
}

TEST_F(PppTime, IsWhatOperationsTakeAndNotWhatLiesBetween) {
  daemonAnswers(numberReply(1) + numberReply(2));
  const auto controller = NetPPP::init();
  const SharedPppTime together;
  ports.ppp->now += 10s;
  EXPECT_EQ(controller->queryPPPconfdLinkCount(), 1u);
  ports.ppp->now += 10s;
  EXPECT_EQ(controller->queryPPPconfdLinkCount(), 2u);
  EXPECT_EQ(SharedPppTime::left(), 2s);
}

TEST_F(PppTime, InsideOfAnotherIsAPartOfThat) {
  EXPECT_EQ(SharedPppTime::left(), 2s);
  {
    const SharedPppTime together;
    SharedPppTime::spend(500ms);
    {
      const SharedPppTime part;
      EXPECT_EQ(SharedPppTime::left(), 1500ms);
      SharedPppTime::spend(5s);
    }
    EXPECT_EQ(SharedPppTime::left(), 0s);
  }
  EXPECT_EQ(SharedPppTime::left(), 2s);
}

TEST_F(PppTime, AnInterfaceThatAnAwayDaemonTellsNothingOfIsNotUpWhichIsNotKept) {
  order({});
  daemonAnswers("");
  manage();
  EXPECT_FALSE(manage_->isUpWithinterfaceName("ppp0"));
  EXPECT_FALSE(manage_->isUpWithinterfaceName("ppp1"));
  daemonIsBack(statusReplies(8) + statusReplies(8));
  EXPECT_TRUE(manage_->isUpWithinterfaceName("ppp0"));
  EXPECT_TRUE(manage_->isUpWithinterfaceName("ppp1"));
}

TEST_F(PppTime, AnInterfaceThatALostConnectionTellsNothingOfIsNotUpWhichIsNotKept) {
  order({});
  interfaces.readings.clear();
  daemonAnswers("");
  ports.ppp->scripts.front().afterwards = PppTransfer::closed;
  manage();
  EXPECT_FALSE(manage_->isUpWithinterfaceName("ppp0"));
  daemonIsBack(statusReplies(8));
  EXPECT_TRUE(manage_->isUpWithinterfaceName("ppp0"));
}

TEST_F(PppTime, AServicesStatusThatTheDaemonOwesIsAskedForUntilItComes) {
  daemonAnswers("");
  manage();
  EXPECT_FALSE(pppStatus(0));
  daemonIsBack(statusReplies(8) + pppReply("") + statusReplies(3));
  const auto kept = manage_->queryInterfaceLists();
  const auto asked = ports.ppp->requests.size();
  EXPECT_TRUE(store.reads.empty()) << "the list is the one that is kept";
  EXPECT_EQ(pppStatus(0)->uint64("status"), 8u);
  EXPECT_FALSE(pppStatus(1)) << "the daemon does not know it";
  EXPECT_EQ(pppStatus(2)->uint64("status"), 3u);
  EXPECT_EQ(manage_->queryInterfaceLists(), kept);
  EXPECT_EQ(ports.ppp->requests.size(), asked) << "once it came it is kept";
}

TEST_F(PppTime, WhatIsOwedIsForgottenWithTheList) {
  daemonAnswers("");
  manage();
  store.values.erase("Setup:/Network/Service/A/PPP");
  store.values.erase("Setup:/Network/Service/B/PPP");
  store.values.erase("Setup:/Network/Service/C/PPP");
  change();
  manage_->queryInterfaceLists();
  ports.ppp->requests.clear();
  daemonIsBack(statusReplies(8));
  manage_->queryInterfaceLists();
  EXPECT_TRUE(ports.ppp->requests.empty());
}

TEST_F(PppTime, AnEntryThatAHostBrokeIsNotAskedFor) {
  daemonAnswers("");
  manage();
  const auto services = manage_->queryInterfaceLists();
  for (const Value& each : *services)
    (*each.as<std::shared_ptr<Dictionary>>())->remove("service_id");
  daemonIsBack(statusReplies(8));
  ports.ppp->requests.clear();
  EXPECT_EQ(manage_->queryInterfaceLists(), services);
  EXPECT_TRUE(ports.ppp->requests.empty());
}

}  // namespace
}  // namespace vantile::testing
