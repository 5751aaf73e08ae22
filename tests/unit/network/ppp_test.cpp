#include <gtest/gtest.h>

#include "vantile/network/net_ppp.h"

#include "fakes/fake_network_ports.h"
#include "fakes/ppp_replies.h"

namespace vantile::testing {
namespace {

using namespace std::chrono_literals;
using Requests = std::vector<std::string>;

constexpr std::uint32_t none = 0xFFFFFFFF;

/// A controller whose daemon answers what a test says.
class Ppp : public ::testing::Test {
 protected:
  Ppp() { ports.addDaemon(); }

  /// A controller with a connection on which these bytes come back.
  std::shared_ptr<NetPPP> answeredBy(std::string replies,
                                     PppTransfer afterwards = PppTransfer::late) {
    add(std::move(replies), afterwards);
    return NetPPP::init();
  }
  void add(std::string replies, PppTransfer afterwards = PppTransfer::late) {
    daemon.scripts.push_back({.replies = std::move(replies), .afterwards = afterwards});
  }

  FakeNetworkPorts ports;
  FakePppDaemon& daemon = *ports.ppp;
};

TEST_F(Ppp, ARunningLinkTellsAllFiveNumbers) {
  const auto status = answeredBy(statusReplies(8, 900, 400))->queryStatusWithServiceID("S");
  ASSERT_TRUE(status);
  EXPECT_EQ(status->size(), 5u);
  EXPECT_EQ(*status->find("status"), Value(8u));
  EXPECT_EQ(*status->find("timeElapsed"), Value(70u));
  EXPECT_EQ(*status->find("timeRemaining"), Value(80u));
  EXPECT_EQ(*status->find("inBytes"), Value(900u));
  EXPECT_EQ(*status->find("outBytes"), Value(400u));
}

TEST_F(Ppp, ALinkThatIsNotRunningTellsItsStatusAlone) {
  const auto status = answeredBy(statusReplies(7, 900, 400))->queryStatusWithServiceID("S");
  ASSERT_TRUE(status);
  EXPECT_EQ(status->size(), 1u);
  EXPECT_EQ(*status->find("status"), Value(7u));
}

TEST_F(Ppp, AServiceIsAskedForByItsIdentifierThenByItsLink) {
  answeredBy(statusReplies(8))->queryStatusWithServiceID("A-1");
  EXPECT_EQ(daemon.requests, (Requests{pppHeader(13, 0, none, 3) + "A-1", pppHeader(2, 0, 5, 0)}));
}

TEST_F(Ppp, AnInterfaceIsAskedForByItsName) {
  answeredBy(statusReplies(8))->queryStatusWithInterfaceName("ppp0");
  EXPECT_EQ(daemon.requests, (Requests{pppHeader(14, 0, none, 4) + "ppp0", pppHeader(2, 0, 5, 0)}));
}

TEST_F(Ppp, ConnectingLooksTheLinkUpAndReadsTheReplyWithoutExaminingIt) {
  const auto controller = answeredBy(numberReply(9) + pppReply("any", 6) + numberReply(2));
  controller->connectWithServiceID("S");
  EXPECT_EQ(daemon.requests, (Requests{pppHeader(13, 0, none, 1) + "S", pppHeader(3, 0, 9, 0)}));
  EXPECT_EQ(controller->queryPPPconfdLinkCount(), 2u) << "the stream is in step";
}

TEST_F(Ppp, DisconnectingLooksTheLinkUpAndReadsTheReply) {
  const auto controller = answeredBy(numberReply(9) + pppReply("") + numberReply(2));
  controller->disconnectWithServiceID("S");
  EXPECT_EQ(daemon.requests, (Requests{pppHeader(13, 0, none, 1) + "S", pppHeader(5, 0, 9, 0)}));
  EXPECT_EQ(controller->queryPPPconfdLinkCount(), 2u) << "the stream is in step";
}

TEST_F(Ppp, ALinkThatIsNotFoundIsNotAskedForItsStatus) {
  const auto controller = answeredBy(pppReply("") + pppReply("link", 3) + numberReply(2));
  EXPECT_FALSE(controller->queryStatusWithServiceID("S"));
  EXPECT_FALSE(controller->queryStatusWithInterfaceName("ppp0"));
  EXPECT_EQ(daemon.requests.size(), 2u);
  EXPECT_EQ(controller->queryPPPconfdLinkCount(), 2u);
}

TEST_F(Ppp, ANameLongerThanItsLengthCanSayIsRefused) {
  const auto controller = answeredBy(numberReply(2));
  const char byte = 'x';
  const std::string_view name(&byte, std::size_t{1} << 32);  // of which nothing may be read
  EXPECT_FALSE(controller->queryStatusWithServiceID(name));
  EXPECT_FALSE(controller->queryStatusWithInterfaceName(name));
  controller->connectWithServiceID(name);
  controller->disconnectWithServiceID(name);
  EXPECT_TRUE(daemon.requests.empty());
  EXPECT_EQ(controller->queryPPPconfdLinkCount(), 2u);
}

TEST_F(Ppp, ALinkReferenceThatIsNotFourBytesEndsTheOperation) {
  for (const char* const payload : {"abc", "abcde"}) {
    daemon.requests.clear();
    const auto controller = answeredBy(pppReply(payload) + pppReply(payload) + pppReply(payload));
    controller->connectWithServiceID("S");
    controller->disconnectWithServiceID("S");
    EXPECT_FALSE(controller->queryStatusWithServiceID("S"));
    EXPECT_EQ(daemon.requests, Requests(3, pppHeader(13, 0, none, 1) + "S"));
  }
}

TEST_F(Ppp, AStatusOfAnySizeBut36BytesIsNone) {
  for (const std::size_t size : {35u, 37u}) {
    const auto controller = answeredBy(numberReply(5) + pppReply(std::string(size, '\x08')));
    EXPECT_FALSE(controller->queryStatusWithServiceID("S")) << size;
  }
}

TEST_F(Ppp, TheDaemonsLinksAreCounted) {
  EXPECT_EQ(answeredBy(numberReply(3))->queryPPPconfdLinkCount(), 3u);
  EXPECT_EQ(daemon.requests, Requests{pppHeader(11, 0, none, 0)});
}

TEST_F(Ppp, AnyOtherReplyCountsNoLinks) {
  EXPECT_EQ(answeredBy(pppReply("abc"))->queryPPPconfdLinkCount(), 0u);
  EXPECT_EQ(answeredBy(pppReply("abcde"))->queryPPPconfdLinkCount(), 0u);
  EXPECT_EQ(answeredBy(pppReply("abcd", 1))->queryPPPconfdLinkCount(), 0u);
}

TEST_F(Ppp, AReplyOfLengthZeroIsNothingEvenWhenItSucceeded) {
  const auto controller = answeredBy(pppReply("") + numberReply(2));
  EXPECT_EQ(controller->pppconfdExecMessage("request"), std::nullopt);
  EXPECT_EQ(controller->queryPPPconfdLinkCount(), 2u) << "the stream is in step";
}

TEST_F(Ppp, AFailuresPayloadIsReadToStayInStep) {
  const auto controller = answeredBy(pppReply("payload", 22) + numberReply(2));
  EXPECT_EQ(controller->pppconfdExecMessage("request"), std::nullopt);
  EXPECT_EQ(controller->queryPPPconfdLinkCount(), 2u);
}

TEST_F(Ppp, AWholeRequestGoesOutAsItIsAndItsPayloadComesBack) {
  EXPECT_EQ(answeredBy(pppReply("payload"))->pppconfdExecMessage("request"), "payload");
  EXPECT_EQ(daemon.requests, Requests{"request"});
}

TEST_F(Ppp, PayloadsAreTakenUpTo64KiB) {
  const std::string largest(64 << 10, 'x');
  const auto controller = answeredBy(pppReply(largest) + pppReply(largest + "x"));
  EXPECT_EQ(controller->pppconfdExecMessage("request"), largest);
  EXPECT_EQ(controller->pppconfdExecMessage("request"), std::nullopt);
}

TEST_F(Ppp, AnAbsurdLengthGivesTheStreamUp) {
  const auto controller = answeredBy(pppHeader(0, 0, none, 0xFFFFFFFF) + numberReply(1));
  EXPECT_EQ(controller->queryPPPconfdLinkCount(), 0u);
  EXPECT_EQ(daemon.connections, 0);
  add(numberReply(4));
  EXPECT_EQ(controller->queryPPPconfdLinkCount(), 0u) << "it counts as away";
  daemon.now += 30s;
  EXPECT_EQ(controller->queryPPPconfdLinkCount(), 4u);
}

TEST_F(Ppp, ASilentDaemonCostsTwoSecondsAndIsAwayForThirty) {
  const auto controller = answeredBy("");
  const auto before = daemon.now;
  EXPECT_EQ(controller->queryPPPconfdLinkCount(), 0u);
  EXPECT_EQ(daemon.now - before, 2s);
  EXPECT_EQ(daemon.connections, 0);

  add(numberReply(4));
  daemon.now += 30s - 1ns;
  EXPECT_EQ(controller->queryPPPconfdLinkCount(), 0u);
  EXPECT_EQ(daemon.connects, 1) << "nothing is tried";
  daemon.now += 1ns;
  EXPECT_EQ(controller->queryPPPconfdLinkCount(), 4u);
}

TEST_F(Ppp, HalfAHeaderIsSilenceToo) {
  const auto controller = answeredBy(numberReply(1).substr(0, 10));
  EXPECT_EQ(controller->queryPPPconfdLinkCount(), 0u);
  EXPECT_EQ(daemon.connections, 0);
}

TEST_F(Ppp, ConnectingWritingAndReadingShareTheTime) {
  const auto controller = answeredBy("", PppTransfer::closed);
  controller->queryPPPconfdLinkCount();  // the connection is lost
  daemon.connectingTakes = 500ms;
  daemon.sendingTakes = 700ms;
  daemon.waits.clear();
  add("");
  const auto before = daemon.now;
  controller->queryPPPconfdLinkCount();
  EXPECT_EQ(daemon.now - before, 2s);
  EXPECT_EQ(daemon.waits, (std::vector<std::chrono::nanoseconds>{2s, 1500ms, 800ms}));
}

TEST_F(Ppp, BothExchangesOfAQueryShareTheTime) {
  const auto controller = answeredBy(numberReply(5));
  daemon.sendingTakes = 900ms;
  const auto before = daemon.now;
  EXPECT_FALSE(controller->queryStatusWithServiceID("S"));
  EXPECT_EQ(daemon.now - before, 2s);
}

TEST_F(Ppp, WritingThatBlocksCostsNoMoreThanTheTime) {
  daemon.scripts.push_back({.sending = PppTransfer::late, .replies = numberReply(1)});
  const auto controller = NetPPP::init();
  const auto before = daemon.now;
  EXPECT_EQ(controller->queryPPPconfdLinkCount(), 0u);
  EXPECT_EQ(daemon.now - before, 2s);
  EXPECT_EQ(daemon.connections, 0);
}

TEST_F(Ppp, AClosedConnectionIsMadeAnewByTheNextOperation) {
  for (const auto& cut : {numberReply(1).substr(0, 0), numberReply(1).substr(0, 7),
                          numberReply(1).substr(0, 20), numberReply(1).substr(0, 22)}) {
    const auto controller = answeredBy(cut, PppTransfer::closed);
    EXPECT_EQ(controller->queryPPPconfdLinkCount(), 0u) << cut.size();
    EXPECT_EQ(daemon.connections, 0);
    add(numberReply(4));
    EXPECT_EQ(controller->queryPPPconfdLinkCount(), 4u) << cut.size();
  }
}

TEST_F(Ppp, ADaemonThatClosesWhileWrittenToIsReachedAnewToo) {
  daemon.scripts.push_back({.sending = PppTransfer::closed});
  const auto controller = NetPPP::init();
  EXPECT_EQ(controller->queryPPPconfdLinkCount(), 0u);
  add(numberReply(4));
  EXPECT_EQ(controller->queryPPPconfdLinkCount(), 4u);
}

TEST_F(Ppp, WithoutAConnectionThereIsNoController) {
  EXPECT_FALSE(NetPPP::singleton());
  EXPECT_EQ(daemon.connects, 1);
}

TEST_F(Ppp, AFailedControllerIsTriedAgainAtTheNextCall) {
  EXPECT_FALSE(NetPPP::singleton());
  add("");
  const auto controller = NetPPP::singleton();
  EXPECT_TRUE(controller);
  EXPECT_EQ(NetPPP::singleton(), controller);
  EXPECT_EQ(daemon.connects, 2);
}

TEST_F(Ppp, ConnectingThatTakesTooLongGivesNoController) {
  daemon.scripts.push_back({.connecting = PppTransfer::late});
  const auto before = daemon.now;
  EXPECT_FALSE(NetPPP::init());
  EXPECT_EQ(daemon.now - before, 2s);
}

TEST_F(Ppp, ADaemonThatLetsTheTimeOfConnectingPassIsAwayForThirtySeconds) {
  daemon.scripts = {{.connecting = PppTransfer::late}, {.replies = numberReply(4)}};
  EXPECT_FALSE(NetPPP::singleton());
  const auto before = daemon.now;
  EXPECT_FALSE(NetPPP::singleton());
  daemon.now += 30s - 1ns;
  EXPECT_FALSE(NetPPP::init());
  EXPECT_EQ(daemon.connects, 1) << "nothing is tried";
  daemon.now += 1ns;
  EXPECT_EQ(daemon.now - before, 30s);
  ASSERT_TRUE(NetPPP::singleton());
  EXPECT_EQ(NetPPP::singleton()->queryPPPconfdLinkCount(), 4u);
}

TEST_F(Ppp, ALaterConnectionThatTakesTooLongIsAnAbsenceToo) {
  const auto controller = answeredBy("", PppTransfer::closed);
  controller->queryPPPconfdLinkCount();
  daemon.scripts = {{.connecting = PppTransfer::late}, {.replies = numberReply(4)}};
  EXPECT_EQ(controller->queryPPPconfdLinkCount(), 0u);
  EXPECT_EQ(controller->queryPPPconfdLinkCount(), 0u);
  EXPECT_EQ(daemon.connects, 2);
  daemon.now += 30s;
  EXPECT_EQ(controller->queryPPPconfdLinkCount(), 4u);
}

TEST_F(Ppp, AnAbsenceIsOneOfEveryControllers) {
  const auto other = answeredBy(numberReply(4));
  EXPECT_EQ(answeredBy("")->queryPPPconfdLinkCount(), 0u);
  EXPECT_EQ(other->queryPPPconfdLinkCount(), 0u);
  EXPECT_EQ(daemon.requests.size(), 1u);
  daemon.now += 30s;
  EXPECT_EQ(other->queryPPPconfdLinkCount(), 4u);
}

TEST_F(Ppp, ADaemonThatRefusesIsNotAway) {
  EXPECT_FALSE(NetPPP::init());
  EXPECT_FALSE(NetPPP::init());
  EXPECT_EQ(daemon.connects, 2);
}

TEST_F(Ppp, OneThatGoesClosesItsConnection) {
  answeredBy("");
  EXPECT_EQ(daemon.connections, 0);
}

class PppWithoutDaemon : public ::testing::Test {
 protected:
  FakeNetworkPorts ports;
};

TEST_F(PppWithoutDaemon, TheControllerIsThereAndReportsNoLinks) {
  const auto controller = NetPPP::singleton();
  ASSERT_TRUE(controller);
  EXPECT_FALSE(controller->hasDaemon());
  EXPECT_FALSE(controller->queryStatusWithServiceID("S"));
  EXPECT_FALSE(controller->queryStatusWithInterfaceName("ppp0"));
  EXPECT_EQ(controller->pppconfdExecMessage("request"), std::nullopt);
  EXPECT_EQ(controller->queryPPPconfdLinkCount(), 0u);
  controller->connectWithServiceID("S");
  controller->disconnectWithServiceID("S");
  EXPECT_EQ(ports.ppp->connects, 0);
}

}  // namespace
}  // namespace vantile::testing
