// Default routes of namespaces that the tests make, against ip(8).

#include <gtest/gtest.h>

#include <chrono>
#include <fstream>
#include <functional>
#include <memory>
#include <string>
#include <string_view>
#include <utility>

#include "live/network_namespace.h"
#include "live/opened_configuration.h"

namespace vantile {
namespace {

using testing::addPair;
using testing::comesToHold;
using testing::inNetworkNamespace;
using testing::ip;
using testing::ipTold;
using testing::Opened;
using testing::textOf;
using testing::Texts;

/// Two links with a network each, one the other's end.
void addTwoNetworks() {
  addPair("va", "vb");
  ip("addr add 10.1.0.2/24 dev va");
  ip("addr add 10.2.0.2/24 dev vb");
}

/// The same, whose other ends are "pa" and "pb".
void addTwoWithPeers() {
  addPair("va", "pa");
  addPair("vb", "pb");
  ip("addr add 10.1.0.2/24 dev va");
  ip("addr add 10.2.0.2/24 dev vb");
}

std::string router(Opened& opened, const std::string& name) {
  return textOf(opened.state(name, "IPv4"), "Router");
}

TEST(LiveRoutes, RoutesAgreeWithIp) {
  inNetworkNamespace([] {
    addTwoNetworks();
    Opened opened;
    EXPECT_EQ(opened.primary(), "");
    ASSERT_TRUE(comesToHold([&] { return opened.active("va") == true; }));
    ip("route add default via 10.1.0.1 dev va metric 100");
    EXPECT_TRUE(comesToHold([&] { return opened.primary() == "va"; }));
    ip("route add default via 10.2.0.1 dev vb metric 50");
    EXPECT_TRUE(comesToHold([&] { return opened.primary() == "vb"; }));
    const auto routes = ipTold("route show default");
    ASSERT_EQ(routes.size(), 2u);
    EXPECT_EQ(textOf(opened.state("vb", "IPv4"), "Router"), routes[0]["gateway"]);
    EXPECT_EQ(textOf(opened.state("va", "IPv4"), "Router"), routes[1]["gateway"]);
    EXPECT_EQ(opened.order(), (Texts{opened.serviceOf("vb"), opened.serviceOf("va")}));
    EXPECT_EQ(textOf(opened.session->value("State:/Network/Global/IPv4"), "PrimaryService"),
              opened.serviceOf("vb"));
  });
}

TEST(LiveRoutes, RoutesThatGoWithoutAWordAreSeenToGo) {
  inNetworkNamespace([] {
    addTwoNetworks();
    ip("route add default via 10.1.0.1 dev va metric 100");
    ip("route add default via 10.2.0.1 dev vb metric 200");
    Opened opened;
    EXPECT_TRUE(comesToHold([&] { return opened.primary() == "va"; }));
    ip("addr del 10.1.0.2/24 dev va");
    EXPECT_TRUE(comesToHold([&] { return opened.primary() == "vb"; }));
    ip("link set vb down");
    EXPECT_TRUE(comesToHold([&] { return opened.primary().empty(); }));
    EXPECT_TRUE(ipTold("route show default").empty());
  });
}

TEST(LiveRoutes, TheKernelsChoiceAmongLinksWithoutACarrierIsFollowed) {
  inNetworkNamespace([] {
    addTwoWithPeers();
    ip("route add default via 10.1.0.1 dev va metric 100");
    ip("route add default via 10.2.0.1 dev vb metric 200");
    Opened opened;
    const auto taken = [] { return ipTold("route get 192.0.2.1")[0]["dev"].get<std::string>(); };
    ip("link set pa down");  // va loses its carrier, and the kernel takes it all the same
    ASSERT_TRUE(comesToHold([&] { return opened.active("va") == false; }));
    EXPECT_EQ(opened.primary(), taken());
    EXPECT_EQ(taken(), "va");
    ip("link set pa up");
    ASSERT_TRUE(comesToHold([&] { return opened.active("va") == true; }));
    std::ofstream("/proc/sys/net/ipv4/conf/va/ignore_routes_with_linkdown") << "1";
    ip("link set pa down");  // where it is told to, it does not
    EXPECT_TRUE(comesToHold([&] { return opened.primary() == "vb"; }));
    EXPECT_EQ(taken(), "vb");
    ip("link set pa up");
    EXPECT_TRUE(comesToHold([&] { return opened.primary() == "va"; }));
    EXPECT_EQ(taken(), "va");
  });
}

TEST(LiveRoutes, OfSeveralWaysTheFirstThatIsAliveCounts) {
  inNetworkNamespace([] {
    addTwoWithPeers();
    Opened opened;
    ip("route add default nexthop via 10.1.0.1 dev va nexthop via 10.2.0.1 dev vb");
    EXPECT_TRUE(comesToHold([&] { return opened.primary() == "va"; }));
    EXPECT_EQ(router(opened, "va"), "10.1.0.1");
    EXPECT_EQ(router(opened, "vb"), "10.2.0.1");
    ip("link set va down");
    EXPECT_TRUE(comesToHold([&] { return opened.primary() == "vb"; }));
    ip("link set va up");
    EXPECT_TRUE(comesToHold([&] { return opened.primary() == "va"; }));
  });
}

TEST(LiveRoutes, ARouteGoesWithoutAWordWithItsNextHop) {
  inNetworkNamespace([] {
    // So that nothing else is told meanwhile.
    std::ofstream("/proc/sys/net/ipv6/conf/default/disable_ipv6") << "1";
    addTwoNetworks();
    if (testing::run("ip nexthop add id 7 via 10.1.0.1 dev va").status != 0)
      GTEST_SKIP() << "no next hops here";
    ip("route add default nhid 7");
    Opened opened;
    EXPECT_TRUE(
        comesToHold([&] { return opened.active("va") == true && opened.active("vb") == true; }));
    comesToHold([] { return false; }, std::chrono::milliseconds(100));
    EXPECT_EQ(opened.primary(), "va");
    ip("nexthop del id 7");
    EXPECT_TRUE(comesToHold([&] { return opened.primary().empty(); }));
  });
}

TEST(LiveRoutes, IPv6sDefaultRoutesAreFollowed) {
  inNetworkNamespace([] {
    addPair("va", "vb");
    ip("addr add fd00:1::2/64 dev va nodad");
    ip("addr add fd00:2::2/64 dev vb nodad");
    ip("link add br9 type bridge");
    Opened opened;
    std::ofstream(opened.folder.path("resolv.conf")) << "nameserver 10.0.0.1\n";
    const Texts servers = {"10.0.0.1"};
    ip("-6 route add default via fd00:2::1 dev vb metric 50");
    EXPECT_TRUE(comesToHold([&] { return opened.servers("vb") == servers; }));
    EXPECT_EQ(opened.device(opened.order().front()), "vb");
    ip("-6 route add default via fd00:1::1 dev va metric 40");
    EXPECT_TRUE(comesToHold([&] { return opened.servers("va") == servers; }));
    ip("link set va down");
    EXPECT_TRUE(comesToHold([&] { return opened.servers("vb") == servers; }));
    ip("-6 route del default dev vb");
    EXPECT_TRUE(comesToHold([&] { return opened.servers("vb").empty(); }));
    EXPECT_EQ(opened.primary(), "");
  });
}

/// A channel that counts what comes of it.
struct CountedChannel final : NetlinkChannel {
  CountedChannel(std::unique_ptr<NetlinkChannel> channel, int& count)
      : channel_(std::move(channel)), count_(count) {}
  bool send(std::string_view request) override { return channel_->send(request); }
  Outcome receive() override {
    ++count_;
    return channel_->receive();
  }
  std::string_view datagram() const override { return channel_->datagram(); }
  int descriptor() const override { return channel_->descriptor(); }

 private:
  const std::unique_ptr<NetlinkChannel> channel_;
  int& count_;
};

TEST(LiveRoutes, OfATableOfManyOnlyTheBeginningIsRead) {
  inNetworkNamespace([] {
    addTwoNetworks();
    ip("route add 0.0.0.0/8 via 10.1.0.1 dev va");  // beside the default routes
    ip("route add default via 10.1.0.1 dev va metric 100");
    ip("route add default via 10.2.0.1 dev vb metric 50");
    const testing::TemporaryFolder folder;
    std::ofstream batch(folder.path("batch"));
    for (int each = 0; each < 20000; ++each)
      batch << "route add 11." << each / 65536 << "." << each / 256 % 256 << "." << each % 256
            << "/32 via 10.1.0.1 dev va\n";
    batch.close();
    ip("-batch " + folder.path("batch"));
    int received = 0;
    ConfigurationSources sources;
    sources.follow = [](std::function<void()>) { return nullptr; };
    sources.open = [&](int bus, unsigned groups) {
      return std::make_unique<CountedChannel>(openNetlink(bus, groups), received);
    };
    const auto session = LinuxConfigurationStore(sources).open("test", {}, [] {});
    ASSERT_TRUE(session);
    EXPECT_EQ(textOf(session->value("State:/Network/Global/IPv4"), "PrimaryInterface"), "vb");
    // The whole table takes some seventy datagrams.
    EXPECT_LT(received, 25);
  });
}

}  // namespace
}  // namespace vantile
