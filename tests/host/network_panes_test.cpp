#include "dashboard/network_panes.h"

#include <gtest/gtest.h>

#include <memory>
#include <string>
#include <vector>

#include "drawn.h"

namespace vantile::host {
namespace {

class HostNetworkPanes : public testing::Test {
 protected:
  /// A service with an address, without a link so far.
  std::shared_ptr<Dictionary> service(const std::string& name, const std::string& device) {
    auto made = std::make_shared<Dictionary>();
    made->set("user_defind_name", name);
    made->set("device_name", device);
    made->set("ipv4_addresses", std::make_shared<Array>(Array{"192.0.2.7"}));
    made->set("is_active_interface", false);
    services->push_back(made);
    return made;
  }
  static void moves(Dictionary& of, std::uint64_t in, std::uint64_t out, double seconds) {
    auto moved = std::make_shared<Dictionary>();
    moved->set("downlink_speed", in);
    moved->set("uplink_speed", out);
    moved->set("peak_speek", 4096.0);
    of.set("throughput_details", moved);
    of.set("sampling_interval", seconds);
    of.set("is_active_interface", true);
  }
  void take() { figures->take({"network", "networkStatus", {Value(services)}}); }
  std::vector<std::string> rows(const Pane& pane, Size size) const {
    auto rows = drawn(pane, size);
    for (auto& row : rows) row.resize(row.find_last_not_of(' ') + 1);
    return rows;
  }

  std::shared_ptr<Array> services = std::make_shared<Array>();
  std::shared_ptr<NetworkFigures> figures = std::make_shared<NetworkFigures>();
  ServicesPane list{figures};
  ThroughputPane graph{figures};
};

TEST_F(HostNetworkPanes, WaitForTheFirstSample) {
  EXPECT_TRUE(contains(drawn(list, {60, 4}), "waiting"));
  EXPECT_TRUE(contains(drawn(graph, {60, 4}), "waiting"));
  EXPECT_EQ(list.note() + graph.note(), "");
}

TEST_F(HostNetworkPanes, SayWhereThereIsNoService) {
  take();
  EXPECT_EQ(rows(list, {60, 1})[0], "no network service");
  EXPECT_EQ(list.rows().wanted, 1);
  EXPECT_EQ(graph.note(), "");
}

TEST_F(HostNetworkPanes, AServiceIsTwoLines) {
  auto home = service("Home", "eth0");
  moves(*home, 4096, 2048, 2);
  home->set("link_speed", std::uint64_t{1'000'000'000});
  home->set("ipv4_router", "192.0.2.1");
  home->set("ipv4_dns", std::make_shared<Array>(Array{"192.0.2.2", "192.0.2.3"}));
  service("Tunnel", "tun0");
  take();
  const auto drawnRows = rows(list, {80, 4});
  EXPECT_EQ(drawnRows[0],
            "■ Home    192.0.2.7                                    ↓ 2.00 KiB/s ↑ 1.00 KiB/s");
  EXPECT_EQ(drawnRows[1], "  eth0   1 Gbit/s   router 192.0.2.1   DNS 192.0.2.2 +1");
  EXPECT_EQ(drawnRows[2], "· Tunnel  192.0.2.7");
  EXPECT_EQ(drawnRows[3], "  tun0");
  EXPECT_EQ(list.note(), "1 of 2 active");
  EXPECT_EQ(list.rows().wanted, 4);
}

TEST_F(HostNetworkPanes, ColumnsLineUpWhetherOrNotAServiceHasRates) {
  moves(*service("Wired connection", "eth0"), 4096, 2048, 2);
  service("Tunnel", "tun0")
      ->set("ipv4_addresses", std::make_shared<Array>(Array{"198.51.100.200", "192.0.2.9"}));
  moves(*service("日本", "eth1"), 4096, 2048, 2);
  take();
  const auto wide = rows(list, {80, 4});
  const std::string rates = "↓ 2.00 KiB/s ↑ 1.00 KiB/s";
  EXPECT_EQ(wide[0], "■ Wired connection  192.0.2.7                          " + rates);
  EXPECT_EQ(wide[2], "· Tunnel tun0       198.51.100.200 +1");
  EXPECT_EQ(wide[3], "■ 日本 eth1         192.0.2.7                          " + rates);
}

TEST_F(HostNetworkPanes, RatesAndNamesMakeRoomForWholeAddresses) {
  moves(*service("Wired connection", "eth0"), 4096, 2048, 2);
  service("Tunnel", "tun0")
      ->set("ipv4_addresses", std::make_shared<Array>(Array{"198.51.100.200", "192.0.2.9"}));
  take();
  EXPECT_EQ(rows(list, {61, 4})[0],
            "■ Wired connect…  192.0.2.7         ↓ 2.00 KiB/s ↑ 1.00 KiB/s");
  EXPECT_EQ(rows(list, {60, 4})[0], "■ Wired connection  192.0.2.7");
  EXPECT_EQ(rows(list, {35, 4})[0], "■ Wired connect…  192.0.2.7");
  EXPECT_EQ(rows(list, {35, 4})[2], "· Tunnel          198.51.100.200 +1");
}

TEST_F(HostNetworkPanes, AnAddressIsShownWholeOrLeftOut) {
  auto home = service("Wired connection", "eth0");
  home->set("ipv4_router", "192.0.2.1");
  home->set("ipv4_dns", std::make_shared<Array>(Array{"192.0.2.2"}));
  take();
  EXPECT_EQ(rows(list, {27, 2})[0], "· Wired connect…  192.0.2.7");
  EXPECT_EQ(rows(list, {26, 2})[0], "· Wired connect…");
  EXPECT_EQ(rows(list, {41, 2})[1], "  eth0   router 192.0.2.1   DNS 192.0.2.2");
  EXPECT_EQ(rows(list, {40, 2})[1], "  eth0   router 192.0.2.1");
  EXPECT_EQ(rows(list, {24, 2})[1], "  eth0   DNS 192.0.2.2");
  EXPECT_EQ(rows(list, {20, 2})[1], "  eth0");
}

TEST_F(HostNetworkPanes, ASpeedThatStandsForAnUnknownOneIsNotShown) {
  auto home = service("Home", "eth0");
  home->set("is_active_interface", true);
  home->set("link_speed", std::uint64_t{10'000'000});
  take();
  EXPECT_EQ(rows(list, {40, 2})[1], "  eth0");
  home->set("link_speed", std::uint64_t{100'000'000});
  take();
  EXPECT_EQ(rows(list, {40, 2})[1], "  eth0   100 Mbit/s");
}

TEST_F(HostNetworkPanes, WithFewerRowsOnlyTheFirstHasItsSecond) {
  service("Home", "eth0");
  service("Tunnel", "tun0");
  take();
  EXPECT_TRUE(contains({rows(list, {40, 3})[1]}, "eth0"));
  EXPECT_TRUE(contains({rows(list, {40, 3})[2]}, "Tunnel"));
}

TEST_F(HostNetworkPanes, SaysHowManyHaveNoRoom) {
  for (int i = 0; i < 4; ++i) service("Ethernet", "veth" + std::to_string(i));
  take();
  EXPECT_EQ(list.rows().minimum, 4);
  auto drawnRows = rows(list, {60, 4});
  EXPECT_TRUE(contains({drawnRows[1]}, "  veth0"));
  EXPECT_TRUE(drawnRows[2].starts_with("· Ethernet veth1 "));
  EXPECT_EQ(drawnRows[3], "and 2 more");
  drawnRows = rows(list, {60, 5});
  EXPECT_TRUE(drawnRows[4].starts_with("· Ethernet veth3 "));
  EXPECT_TRUE(rows(list, {60, 1})[0].starts_with("· Ethernet veth0 "));
}

TEST_F(HostNetworkPanes, APppServiceIsKnownByItsPppInterface) {
  service("Modem", "modem")->set("device_ppp_name", "ppp0");
  take();
  EXPECT_TRUE(contains(rows(list, {40, 2}), "ppp0"));
}

TEST_F(HostNetworkPanes, WithoutAVersion4AddressTheOtherIsShown) {
  auto home = service("Home", "eth0");
  home->set("ipv4_addresses", std::make_shared<Array>());
  home->set("ipv6_addresses", std::make_shared<Array>(Array{"2001:db8::7"}));
  take();
  EXPECT_TRUE(contains(rows(list, {60, 1}), "2001:db8::7"));
  home->remove("ipv6_addresses");
  take();
  EXPECT_TRUE(contains(rows(list, {60, 1}), "no address"));
}

TEST_F(HostNetworkPanes, TheGraphIsOfThePrimaryServiceElseOfTheFirstActiveOne) {
  moves(*service("Tunnel", "tun0"), 10, 10, 1);
  auto home = service("Home", "eth0");
  moves(*home, 2048, 1024, 1);
  take();
  EXPECT_TRUE(graph.note().starts_with("tun0 "));
  home->set("is_primary", true);
  take();
  EXPECT_EQ(graph.note(), "eth0 ↓ 2.00 KiB/s ↑ 1.00 KiB/s, peak 4.00 KiB/s");
  EXPECT_EQ(figures->received.ago(0), 2048);
  EXPECT_EQ(figures->sent.ago(0), 1024);
  EXPECT_EQ(figures->received.ago(1), 10);
}

TEST_F(HostNetworkPanes, WithoutAMeasureTheRateIsNotKnownAndTheGraphAtRest) {
  auto home = service("Home", "eth0");
  moves(*home, 2048, 1024, 0);
  home->set("is_primary", true);
  take();
  EXPECT_EQ(graph.note(), "eth0, peak 4.00 KiB/s");
  EXPECT_EQ(figures->received.ago(0), 0);
}

TEST_F(HostNetworkPanes, BothDirectionsHaveAGraphWithItsTop) {
  auto home = service("Home", "eth0");
  home->set("is_primary", true);
  moves(*home, 3000, 500, 1);
  take();
  const auto drawnRows = rows(graph, {40, 4});
  EXPECT_TRUE(contains({drawnRows[1]}, "received"));
  EXPECT_TRUE(contains({drawnRows[3]}, "sent"));
  EXPECT_TRUE(contains({drawnRows[0]}, "/s"));
}

TEST_F(HostNetworkPanes, TheTopIsARoundNumberOfItsUnit) {
  moves(*service("Home", "eth0"), 3000, 600 << 10, 1);
  take();
  auto drawnRows = rows(graph, {76, 2});
  EXPECT_TRUE(drawnRows[0].starts_with("received  5.00 KiB/s ")) << drawnRows[0];
  EXPECT_TRUE(drawnRows[1].starts_with("sent      1.00 MiB/s ")) << drawnRows[1];
  services->clear();
  moves(*service("Home", "eth0"), (1 << 20) + 1, UINT64_MAX, 1);
  take();
  drawnRows = rows(graph, {76, 2});
  EXPECT_TRUE(drawnRows[0].starts_with("received  2.00 MiB/s ")) << drawnRows[0];
  EXPECT_TRUE(drawnRows[1].starts_with("sent ")) << drawnRows[1];
}

TEST_F(HostNetworkPanes, OnARowOfItsOwnADirectionIsStillNamed) {
  take();
  auto drawnRows = rows(graph, {76, 2});
  EXPECT_TRUE(drawnRows[0].starts_with("received  1.00 KiB/s   ")) << drawnRows[0];
  EXPECT_TRUE(drawnRows[1].starts_with("sent      1.00 KiB/s   ")) << drawnRows[1];
  drawnRows = rows(graph, {36, 2});
  EXPECT_TRUE(drawnRows[0].starts_with("received  "));
  EXPECT_TRUE(drawnRows[1].starts_with("sent      "));
}

TEST_F(HostNetworkPanes, OtherReportsAndWhatIsNoServiceAreIgnored) {
  figures->take({"network", "elsewhere", {Value(services)}});
  figures->take({"network", "networkStatus", {std::nullopt}});
  EXPECT_FALSE(figures->known());
  services->emplace_back("text");
  take();
  EXPECT_TRUE(figures->known());
  EXPECT_TRUE(figures->rows().empty());
}

TEST_F(HostNetworkPanes, NamesAreSafeToPrint) {
  service("a\x1b\xff", "eth0");
  take();
  EXPECT_TRUE(contains(rows(list, {60, 1}), "a\uFFFD\uFFFD"));
}

}  // namespace
}  // namespace vantile::host
