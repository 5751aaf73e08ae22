#include "vantile/platform/posix/ppp_daemon.h"

#include <gtest/gtest.h>
#include <sys/socket.h>
#include <sys/un.h>

#include <array>
#include <chrono>
#include <csignal>
#include <cstring>
#include <functional>
#include <future>
#include <optional>
#include <thread>
#include <vector>

#include "vantile/network/net_ppp.h"
#include "vantile/network/network.h"
#include "vantile/network/network_ports.h"
#include "vantile/platform/posix/descriptor.h"

#include "fakes/fake_network_ports.h"
#include "fakes/ppp_replies.h"
#include "fakes/temporary_folder.h"

namespace vantile::testing {
namespace {

using namespace std::chrono_literals;
using Clock = std::chrono::steady_clock;

constexpr auto limit = 2s;
constexpr auto slack = 1s;  // for a busy machine

/// The daemon's end of one connection.
class Peer {
 public:
  explicit Peer(Descriptor socket) : socket_(std::move(socket)) {}

  /// The next whole request; empty once the other side has closed.
  std::string request() const {
    std::string bytes = exactly(20);
    std::uint32_t length = 0;
    if (bytes.size() == 20) std::memcpy(&length, bytes.data() + 16, sizeof length);
    return length > 0 ? bytes + exactly(length) : bytes;  // reading nothing waits all the same
  }
  void send(std::string_view bytes) const {
    EXPECT_EQ(::send(socket_.get(), bytes.data(), bytes.size(), MSG_NOSIGNAL),
              static_cast<ssize_t>(bytes.size()));
  }
  bool isOpen() const {
    char byte = 0;
    return ::recv(socket_.get(), &byte, 1, MSG_PEEK | MSG_DONTWAIT) != 0;
  }
  /// Waits, silent, until the other side closes.
  void awaitClosing() const {
    char byte = 0;
    while (::recv(socket_.get(), &byte, 1, 0) > 0) continue;
  }

 private:
  std::string exactly(std::size_t size) const {
    std::string bytes(size, '\0');
    const auto count = ::recv(socket_.get(), bytes.data(), size, MSG_WAITALL);
    bytes.resize(count > 0 ? static_cast<std::size_t>(count) : 0);
    return bytes;
  }

  const Descriptor socket_;
};

/// A daemon at a local socket that follows a script, one a connection.
class ScriptedDaemon : public ::testing::Test {
 protected:
  using Script = std::function<void(const Peer&)>;

  ScriptedDaemon() {
    sockaddr_un address = {};
    address.sun_family = AF_UNIX;
    const auto path = folder.path("pppconfd");
    std::memcpy(address.sun_path, path.data(), path.size());
    listener_ = Descriptor(::socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0));
    EXPECT_EQ(::bind(listener_.get(), reinterpret_cast<sockaddr*>(&address), sizeof address), 0);
    EXPECT_EQ(::listen(listener_.get(), 0), 0);
    NetworkPorts::installed().ppp = pppDaemonAt(path);
    NetworkPorts::installed().now = Clock::now;
  }
  ~ScriptedDaemon() override {
    controller_.reset();
    if (thread_.joinable()) thread_.join();
  }

  /// Serves as many connections as there are scripts.
  NetPPP& serves(std::vector<Script> scripts) {
    thread_ = std::thread([this, scripts = std::move(scripts)] {
      for (const auto& script : scripts) {
        const Peer peer(Descriptor(::accept(listener_.get(), nullptr, nullptr)));
        script(peer);
      }
    });
    controller_ = NetPPP::init();
    return *controller_;
  }

  /// How long it takes.
  template <class Work>
  static Clock::duration timeOf(Work work) {
    const auto begin = Clock::now();
    work();
    return Clock::now() - begin;
  }

  TemporaryFolder folder;
  FakeNetworkPorts ports;
  std::shared_ptr<NetPPP> controller_;
  Descriptor listener_;

 private:
  std::thread thread_;
};

TEST_F(ScriptedDaemon, RightRepliesComeThrough) {
  std::vector<std::string> requests;
  auto& controller = serves({[&requests](const Peer& peer) {
    requests.push_back(peer.request());
    peer.send(numberReply(5));
    requests.push_back(peer.request());
    const auto reply = pppReply(statusRecord(8, 900, 400));
    peer.send(reply.substr(0, 11));  // in pieces, as streams may
    peer.send(reply.substr(11, 30));
    peer.send(reply.substr(41));
    peer.request();
    peer.send(numberReply(3));
  }});
  const auto status = controller.queryStatusWithInterfaceName("ppp0");
  ASSERT_TRUE(status);
  EXPECT_EQ(status->uint64("inBytes"), 900u);
  EXPECT_EQ(status->uint64("outBytes"), 400u);
  EXPECT_EQ(controller.queryPPPconfdLinkCount(), 3u);
  EXPECT_EQ(requests.at(0), pppHeader(14, 0, 0xFFFFFFFF, 4) + "ppp0");
  EXPECT_EQ(requests.at(1), pppHeader(2, 0, 5, 0));
}

TEST_F(ScriptedDaemon, LengthZeroAndFailuresLeaveTheStreamInStep) {
  auto& controller = serves({[](const Peer& peer) {
    peer.request();
    peer.send(pppReply(""));
    peer.request();
    peer.send(pppReply("payload of a failure", 22));
    peer.request();
    peer.send(numberReply(4));
  }});
  EXPECT_EQ(controller.queryPPPconfdLinkCount(), 0u);
  EXPECT_EQ(controller.queryPPPconfdLinkCount(), 0u);
  EXPECT_EQ(controller.queryPPPconfdLinkCount(), 4u);
}

TEST_F(ScriptedDaemon, StatusesOfAWrongSizeAreNone) {
  auto& controller = serves({[](const Peer& peer) {
    for (const std::size_t size : {35u, 37u}) {
      peer.request();
      peer.send(numberReply(5));
      peer.request();
      peer.send(pppReply(std::string(size, '\x08')));
    }
    peer.request();
    peer.send(numberReply(2));
  }});
  EXPECT_FALSE(controller.queryStatusWithServiceID("S"));
  EXPECT_FALSE(controller.queryStatusWithServiceID("S"));
  EXPECT_EQ(controller.queryPPPconfdLinkCount(), 2u) << "the stream is in step";
}

TEST_F(ScriptedDaemon, SilenceAndHalfAHeaderHoldNobodyUpLongerThanTheTime) {
  auto& controller = serves({[](const Peer& peer) {
    peer.request();
    peer.send(numberReply(1).substr(0, 10));
    peer.awaitClosing();
  }});
  const auto waited = timeOf([&] { EXPECT_EQ(controller.queryPPPconfdLinkCount(), 0u); });
  EXPECT_GE(waited, limit);
  EXPECT_LT(waited, limit + slack);
  EXPECT_LT(timeOf([&] { controller.queryPPPconfdLinkCount(); }), slack) << "it counts as away";
}

TEST_F(ScriptedDaemon, SilenceAfterTheFirstReplyHoldsNobodyUpLongerThanTheTime) {
  auto& controller = serves({[](const Peer& peer) {
    peer.request();
    peer.send(numberReply(5));
    peer.awaitClosing();  // which never answers the second request
  }});
  const auto waited = timeOf([&] { EXPECT_FALSE(controller.queryStatusWithServiceID("S")); });
  EXPECT_LT(waited, limit + slack);
}

TEST_F(ScriptedDaemon, OneThatDripsHoldsNobodyUpLongerThanTheTime) {
  auto& controller = serves({[](const Peer& peer) {
    peer.request();
    const auto reply = pppReply(std::string(60, 'x'));
    for (std::size_t at = 0; at < reply.size() && peer.isOpen(); ++at) {
      peer.send(reply.substr(at, 1));
      std::this_thread::sleep_for(50ms);  // 4 seconds in all
    }
  }});
  const auto request = pppHeader(11, 0, 0xFFFFFFFF, 0);
  const auto waited =
      timeOf([&] { EXPECT_EQ(controller.pppconfdExecMessage(request), std::nullopt); });
  EXPECT_GE(waited, limit);
  EXPECT_LT(waited, limit + slack);
}

TEST_F(ScriptedDaemon, WaitingForAnotherThreadsTurnIsPartOfTheTime) {
  std::promise<void> asked;
  auto& controller = serves({[&asked](const Peer& peer) {
    peer.request();
    asked.set_value();
    std::this_thread::sleep_for(1500ms);
    peer.send(numberReply(1));
    peer.request();
    peer.awaitClosing();  // the second one gets no answer
  }});
  std::thread first([&] { EXPECT_EQ(controller.queryPPPconfdLinkCount(), 1u); });
  asked.get_future().wait();
  const auto waited = timeOf([&] { EXPECT_EQ(controller.queryPPPconfdLinkCount(), 0u); });
  first.join();
  EXPECT_GE(waited, limit);
  EXPECT_LT(waited, limit + slack) << "and not 3.5 seconds";
}

TEST_F(ScriptedDaemon, ARequestThatItDoesNotReadHoldsNobodyUpLongerThanTheTime) {
  std::promise<void> done;
  auto& controller = serves({[&done](const Peer&) { done.get_future().wait(); }});
  const std::string large(8u << 20, 'x');
  const auto waited = timeOf([&] { controller.pppconfdExecMessage(large); });
  done.set_value();
  EXPECT_GE(waited, limit);
  EXPECT_LT(waited, limit + slack);
}

TEST_F(ScriptedDaemon, AConnectionThatItClosesIsMadeAnew) {
  auto& controller = serves({[](const Peer& peer) { peer.request(); },
                             [](const Peer& peer) {
                               peer.request();
                               peer.send(numberReply(1).substr(0, 22));
                             },
                             [](const Peer& peer) {
                               peer.request();
                               peer.send(numberReply(6));
                             }});
  EXPECT_EQ(controller.queryPPPconfdLinkCount(), 0u);
  EXPECT_EQ(controller.queryPPPconfdLinkCount(), 0u);
  EXPECT_EQ(controller.queryPPPconfdLinkCount(), 6u);
}

TEST_F(ScriptedDaemon, WritingToAClosedConnectionRaisesNoSignal) {
  ASSERT_EQ(std::signal(SIGPIPE, SIG_DFL), SIG_DFL) << "it would end the program";
  const auto made = NetworkPorts::installed().ppp->reach(limit);
  ASSERT_TRUE(made.connection);
  Descriptor(::accept(listener_.get(), nullptr, nullptr));
  EXPECT_EQ(made.connection->send("request", limit), PppTransfer::closed);
}

TEST_F(ScriptedDaemon, APayloadOfFourGibibytesTakesNoMemory) {
  auto& controller = serves({[](const Peer& peer) {
    peer.request();
    peer.send(pppHeader(0, 0, 0xFFFFFFFF, 0xFFFFFFFF) + std::string(1000, 'x'));
    peer.awaitClosing();
  }});
  const auto waited = timeOf([&] { EXPECT_EQ(controller.queryPPPconfdLinkCount(), 0u); });
  EXPECT_LT(waited, slack) << "nothing is waited for";
}

TEST_F(ScriptedDaemon, AFullQueueOfConnectionsHoldsNobodyUpLongerThanTheTime) {
  // The one that is being made and the one behind it take all the room there is.
  const auto daemon = NetworkPorts::installed().ppp;
  std::vector<PppConnecting> held;
  PppTransfer outcome = PppTransfer::done;
  const auto waited = timeOf([&] {
    while (outcome == PppTransfer::done && held.size() < 10) {
      held.push_back(daemon->reach(200ms));
      outcome = held.back().outcome;
    }
  });
  EXPECT_EQ(outcome, PppTransfer::late);
  EXPECT_LT(waited, 200ms + slack);
}

TEST_F(ScriptedDaemon, OneThatTakesNobodyInCostsAMonitorsStartTheTimeOnce) {
  // Its queue is filled, so that connecting takes all the time there is.
  const auto daemon = NetworkPorts::installed().ppp;
  std::vector<PppConnecting> held;
  do held.push_back(daemon->reach(50ms));
  while (held.back().outcome == PppTransfer::done && held.size() < 10);
  ASSERT_EQ(held.back().outcome, PppTransfer::late);
  const auto waited = timeOf([] { Network::init(); });
  EXPECT_GE(waited, limit);
  EXPECT_LT(waited, limit + slack);
  EXPECT_LT(timeOf([] { EXPECT_FALSE(NetPPP::singleton()); }), slack) << "it counts as away";
}

TEST(LocalDaemon, WhereNobodyListensConnectingIsRefusedAtOnce) {
  const TemporaryFolder folder;
  const auto daemon = pppDaemonAt(folder.path("nobody"));
  const auto made = daemon->reach(2s);
  EXPECT_EQ(made.outcome, PppTransfer::closed);
  EXPECT_FALSE(made.connection);
}

TEST(LocalDaemon, APathThatNoAddressHoldsIsNone) {
  EXPECT_FALSE(pppDaemonAt(std::string(108, 'x')));
  EXPECT_TRUE(pppDaemonAt(std::string(107, 'x')));
}

}  // namespace
}  // namespace vantile::testing
