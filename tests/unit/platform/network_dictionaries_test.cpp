#include "vantile/platform/linux/network_dictionaries.h"

#include <gtest/gtest.h>

#include <algorithm>

namespace vantile {
namespace {

using namespace std::string_literals;
using Texts = std::vector<std::string>;

constexpr std::uint32_t up = LinkFlags::up, running = LinkFlags::up | LinkFlags::lowerUp;

/// A machine with an Ethernet and a wireless device, a bridge and the loopback.
struct NetworkTable : ::testing::Test {
  NetworkTable() {
    link(1, "lo", 772, running | LinkFlags::loopback);
    link(2, "eth0", 1, running, "", "0000:00:1f.6", "\x52\x54\x00\xA1\xB2\xC3"s);
    link(3, "wlan0", 1, up, "", "0000:02:00.0", "\x52\x54\x00\x00\x00\x07"s);
    link(4, "br0", 1, running, "bridge");
    network.wireless = {3};
    address(1, "127.0.0.1", 8);
    address(2, "192.168.1.7", 24);
    address(2, "10.0.0.7", 8);
    network.addresses.push_back({2, AddressFamily::ipv6, 64, "fe80::1"});
    route(2, 100, "192.168.1.1");
    network.servers = {"192.168.1.1", "9.9.9.9"};
  }

  void link(std::uint32_t index, std::string_view name, std::uint16_t type, std::uint32_t flags,
            std::string_view kind = {}, std::string_view parent = {},
            std::string_view hardware = {}) {
    LinkMessage message;
    message.index = index;
    message.name = name;
    message.type = type;
    message.flags = flags;
    message.kind = kind;
    message.parentDevice = parent;
    message.permanentAddress = hardware;
    network.keep(message);
  }
  void address(std::uint32_t index, const std::string& text, std::uint8_t prefix) {
    network.addresses.push_back({index, AddressFamily::ipv4, prefix, text});
  }
  void route(std::uint32_t index, std::uint32_t metric, const std::string& gateway,
             bool dead = false, AddressFamily family = AddressFamily::ipv4) {
    network.routes.push_back({index, family, metric, gateway, dead});
  }

  const Dictionary* at(const std::string& key) {
    table = networkDictionaries(network, connections);
    const auto found = table.find(key);
    return found == table.end() ? nullptr : found->second.get();
  }
  std::string text(const std::string& key, std::string_view name) {
    const auto* const dictionary = at(key);
    const auto* const found = dictionary ? dictionary->text(name) : nullptr;
    return found ? *found : "absent";
  }
  Texts texts(const std::string& key, std::string_view name) {
    const auto* const dictionary = at(key);
    const auto* const value = dictionary ? dictionary->find(name) : nullptr;
    const auto* const array = value ? value->as<std::shared_ptr<Array>>() : nullptr;
    if (!array) return {"absent"};
    Texts all;
    for (const auto& each : **array) all.push_back(*each.as<std::string>());
    return all;
  }
  Texts order() { return texts("Setup:/Network/Global/IPv4", "ServiceOrder"); }
  std::string hardware(const std::string& id) {
    return text("Setup:/Network/Service/" + id + "/Interface", "Hardware");
  }

  NetworkModel network;
  std::vector<ManagedConnection> connections;
  ConfigurationTable table;

  const std::string eth0 = "hardware-525400a1b2c3", wlan0 = "hardware-525400000007",
                    br0 = "interface-br0";
};

TEST_F(NetworkTable, ServicesAreAllLinksButTheLoopback) {
  EXPECT_EQ(order(), (Texts{eth0, wlan0, br0}));
}

TEST_F(NetworkTable, WithoutLinksTheOrderIsEmpty) {
  network = {};
  EXPECT_EQ(order(), Texts{});
  EXPECT_FALSE(at("State:/Network/Global/IPv4"));
}

TEST_F(NetworkTable, LinksWithADefaultRouteComeFirstByItsMetric) {
  route(4, 50, "10.9.0.2");
  EXPECT_EQ(order(), (Texts{br0, eth0, wlan0}));
}

TEST_F(NetworkTable, DevicesComeBeforeVirtualLinksThenTheIndexDecides) {
  network.routes.clear();
  link(1, "a", 1, up, "tun");
  link(9, "z", 1, up, "", "usb-1");
  link(10, "lan1", 1, up, "dsa", "switch");
  EXPECT_EQ(order(), (Texts{eth0, wlan0, "interface-z", "interface-lan1", "interface-a", br0}));
}

TEST_F(NetworkTable, AServiceKeepsItsIdentifierWhenItsDeviceIsRenamed) {
  link(2, "lan0", 1, running, "", "0000:00:1f.6", "\x52\x54\x00\xA1\xB2\xC3"s);
  EXPECT_EQ(order().front(), eth0);
  EXPECT_EQ(text("Setup:/Network/Service/" + eth0 + "/Interface", "DeviceName"), "lan0");
}

TEST_F(NetworkTable, AnAddressThatSeveralLinksHaveIdentifiesTheFirst) {
  link(7, "wlan1", 1, up, "", "0000:02:00.0", "\x52\x54\x00\x00\x00\x07"s);
  link(8, "lan1", 1, up, "dsa", "switch", "\x52\x54\x00\xA1\xB2\xC3"s);
  EXPECT_EQ(order(), (Texts{eth0, wlan0, "interface-wlan1", "interface-lan1", br0}))
      << "the others stay as they were";
}

TEST_F(NetworkTable, ThePrimaryServiceIsThatOfTheDefaultRoute) {
  EXPECT_EQ(text("State:/Network/Global/IPv4", "PrimaryInterface"), "eth0");
  EXPECT_EQ(text("State:/Network/Global/IPv4", "PrimaryService"), eth0);
}

TEST_F(NetworkTable, OfSeveralDefaultRoutesTheLeastMetricCountsTheFirstOfEquals) {
  route(3, 99, "10.3.0.1");
  EXPECT_EQ(text("State:/Network/Global/IPv4", "PrimaryInterface"), "wlan0");
  route(4, 99, "10.4.0.1");
  EXPECT_EQ(text("State:/Network/Global/IPv4", "PrimaryInterface"), "wlan0");
}

TEST_F(NetworkTable, ARouteWithoutACarrierCountsByItsMetricAsTheKernelHasIt) {
  network.routes.clear();
  route(2, 100, "192.168.1.1");
  route(3, 1, "10.3.0.1");
  EXPECT_EQ(text("State:/Network/Global/IPv4", "PrimaryInterface"), "wlan0");
  EXPECT_EQ(at("State:/Network/Interface/wlan0/Link")->boolean("Active"), false);
  EXPECT_EQ(order(), (Texts{wlan0, eth0, br0}));
}

TEST_F(NetworkTable, ADeadRouteIsPassedOver) {
  network.routes.clear();
  route(3, 1, "10.3.0.1", true);
  EXPECT_FALSE(at("State:/Network/Global/IPv4"));
  route(2, 100, "192.168.1.1");
  EXPECT_EQ(text("State:/Network/Global/IPv4", "PrimaryInterface"), "eth0");
  EXPECT_EQ(order(), (Texts{eth0, wlan0, br0}));
  EXPECT_FALSE(at("State:/Network/Service/" + wlan0 + "/IPv4"));
}

TEST_F(NetworkTable, ARouteOverALinkThatIsDownIsNone) {
  route(3, 1, "10.3.0.1");
  link(3, "wlan0", 1, 0, "", "0000:02:00.0", "\x52\x54\x00\x00\x00\x07"s);
  EXPECT_EQ(text("State:/Network/Global/IPv4", "PrimaryInterface"), "eth0");
  EXPECT_FALSE(at("State:/Network/Service/" + wlan0 + "/IPv4"));
  link(3, "wlan0", 1, up, "", "0000:02:00.0", "\x52\x54\x00\x00\x00\x07"s);
  EXPECT_EQ(text("State:/Network/Global/IPv4", "PrimaryInterface"), "wlan0");
}

TEST_F(NetworkTable, LinksWithADefaultRouteOfIPv6AloneComeAfterThoseOfIPv4BeforeTheRest) {
  link(5, "eth1", 1, running, "", "0000:03:00.0");
  link(6, "eth2", 1, running, "", "0000:04:00.0");
  route(6, 1, "fe80::9", false, AddressFamily::ipv6);
  route(4, 0, "fe80::8", false, AddressFamily::ipv6);
  EXPECT_EQ(order(), (Texts{eth0, br0, "interface-eth2", wlan0, "interface-eth1"}));
}

TEST_F(NetworkTable, WithoutADefaultRouteThereIsNoPrimaryService) {
  network.routes.clear();
  EXPECT_FALSE(at("State:/Network/Global/IPv4"));
  route(2, 1, "fe80::9", false, AddressFamily::ipv6);
  EXPECT_FALSE(at("State:/Network/Global/IPv4"));
}

TEST_F(NetworkTable, ARouteOverTheLoopbackOrAnUnknownLinkIsNone) {
  network.routes.clear();
  route(1, 1, "");
  route(77, 1, "10.0.0.1");
  EXPECT_FALSE(at("State:/Network/Global/IPv4"));
}

TEST_F(NetworkTable, AnInterfaceHasItsDeviceAndTheKindOfItsHardware) {
  EXPECT_EQ(text("Setup:/Network/Service/" + eth0 + "/Interface", "DeviceName"), "eth0");
  EXPECT_EQ(text("Setup:/Network/Service/" + eth0 + "/Interface", "Type"), "Ethernet");
  EXPECT_EQ(text("Setup:/Network/Service/" + eth0 + "/Interface", "SubType"), "absent");
  EXPECT_EQ(hardware(eth0), "Ethernet");
  EXPECT_EQ(hardware(wlan0), "Wi-Fi");
  EXPECT_EQ(hardware(br0), "Bridge");
}

TEST_F(NetworkTable, KindsOfVirtualLinksHaveTheirWords) {
  const std::vector<std::pair<std::string, std::string>> words = {{"veth", "Virtual Ethernet"},
                                                                  {"macvlan", "Virtual Ethernet"},
                                                                  {"bond", "Bond"},
                                                                  {"vlan", "VLAN"},
                                                                  {"tun", "Tunnel"},
                                                                  {"wireguard", "WireGuard"},
                                                                  {"wwan", "Mobile Broadband"},
                                                                  {"vxlan", "Tunnel"},
                                                                  {"ip6gretap", "Tunnel"},
                                                                  {"erspan", "Tunnel"},
                                                                  {"dummy", "Virtual Ethernet"},
                                                                  {"ifb", "Virtual Ethernet"},
                                                                  {"macsec", "MACsec"},
                                                                  {"batadv", "Mesh"},
                                                                  {"vrf", "VRF"},
                                                                  {"can", "CAN"},
                                                                  {"dsa", "Ethernet"}};
  for (const auto& [kind, word] : words) {
    link(9, "x9", 1, up, kind);
    EXPECT_EQ(hardware("interface-x9"), word) << kind;
  }
}

TEST_F(NetworkTable, HardwareThatIsNotKnownIsAbsent) {
  link(9, "x9", 65534, up, "news");
  EXPECT_EQ(hardware("interface-x9"), "absent");
  EXPECT_EQ(text("Setup:/Network/Service/interface-x9/Interface", "Type"), "absent");
  link(9, "x9", 32, up);
  EXPECT_EQ(hardware("interface-x9"), "InfiniBand");
}

TEST_F(NetworkTable, AKindWithoutWordsIsNotCalledByItsLinksType) {
  for (const auto type : {std::uint16_t{1}, std::uint16_t{24}, std::uint16_t{32}}) {
    link(9, "x9", type, up, "news");
    EXPECT_EQ(hardware("interface-x9"), "absent") << type;
  }
}

TEST_F(NetworkTable, AServiceHasNoNameOfAUsers) {
  EXPECT_FALSE(at("Setup:/Network/Service/" + eth0));
}

TEST_F(NetworkTable, AServiceHasItsAddressesMasksAndRouter) {
  const auto key = "State:/Network/Service/" + eth0 + "/IPv4";
  EXPECT_EQ(texts(key, "Addresses"), (Texts{"192.168.1.7", "10.0.0.7"}));
  EXPECT_EQ(texts(key, "SubnetMasks"), (Texts{"255.255.255.0", "255.0.0.0"}));
  EXPECT_EQ(text(key, "Router"), "192.168.1.1");
}

TEST_F(NetworkTable, WhatAServiceDoesNotHaveIsAbsent) {
  EXPECT_FALSE(at("State:/Network/Service/" + wlan0 + "/IPv4"));
  EXPECT_FALSE(at("State:/Network/Interface/wlan0/IPv6"));
  network.addresses.clear();
  EXPECT_EQ(texts("State:/Network/Service/" + eth0 + "/IPv4", "Addresses"), Texts{"absent"});
  EXPECT_EQ(text("State:/Network/Service/" + eth0 + "/IPv4", "Router"), "192.168.1.1");
  network.routes = {{2, AddressFamily::ipv4, 0, "", false}};
  EXPECT_FALSE(at("State:/Network/Service/" + eth0 + "/IPv4"));
}

TEST_F(NetworkTable, ADeviceHasItsNewerAddressesAndItsLinkState) {
  EXPECT_EQ(texts("State:/Network/Interface/eth0/IPv6", "Addresses"), Texts{"fe80::1"});
  ASSERT_TRUE(at("State:/Network/Interface/eth0/Link"));
  EXPECT_EQ(at("State:/Network/Interface/eth0/Link")->boolean("Active"), true);
  EXPECT_EQ(at("State:/Network/Interface/wlan0/Link")->boolean("Active"), false);
  EXPECT_FALSE(at("State:/Network/Interface/lo/Link"));
}

TEST_F(NetworkTable, ALinkThatIsDownIsNotActive) {
  link(2, "eth0", 1, LinkFlags::lowerUp);
  EXPECT_EQ(at("State:/Network/Interface/eth0/Link")->boolean("Active"), false);
}

TEST_F(NetworkTable, TheServersAreThePrimaryServices) {
  EXPECT_EQ(texts("State:/Network/Service/" + eth0 + "/DNS", "ServerAddresses"),
            (Texts{"192.168.1.1", "9.9.9.9"}));
  EXPECT_FALSE(at("State:/Network/Service/" + wlan0 + "/DNS"));
}

TEST_F(NetworkTable, WithoutADefaultRouteTheServersAreTheNewerOnesThenTheFirstWithAnAddress) {
  network.routes.clear();
  EXPECT_TRUE(at("State:/Network/Service/" + eth0 + "/DNS"));
  route(3, 1, "fe80::9", false, AddressFamily::ipv6);
  EXPECT_TRUE(at("State:/Network/Service/" + wlan0 + "/DNS"));
  EXPECT_FALSE(at("State:/Network/Service/" + eth0 + "/DNS"));
}

TEST_F(NetworkTable, WithoutServersThereIsNoResolver) {
  network.servers.clear();
  EXPECT_FALSE(at("State:/Network/Service/" + eth0 + "/DNS"));
}

TEST_F(NetworkTable, APppLinkIsConnectedWhileItIsUp) {
  link(9, "ppp7", 512, running);
  const auto state = "State:/Network/Service/interface-ppp7/PPP"s;
  EXPECT_EQ(hardware("interface-ppp7"), "PPP");
  EXPECT_EQ(text("Setup:/Network/Service/interface-ppp7/Interface", "Type"), "PPP");
  EXPECT_TRUE(at("Setup:/Network/Service/interface-ppp7/PPP"));
  EXPECT_EQ(text(state, "InterfaceName"), "ppp7");
  EXPECT_EQ(at(state)->int64("Status"), 8);
  link(9, "ppp7", 512, 0);
  EXPECT_EQ(text(state, "InterfaceName"), "ppp7");
  EXPECT_FALSE(at(state)->contains("Status"));
}

TEST_F(NetworkTable, OtherLinksHaveNoPpp) {
  EXPECT_FALSE(at("Setup:/Network/Service/" + eth0 + "/PPP"));
  EXPECT_FALSE(at("State:/Network/Service/" + eth0 + "/PPP"));
}

/// The same machine, whose NetworkManager has connections.
struct ManagedNetworkTable : NetworkTable {
  ManagedNetworkTable() {
    connections = {{"uuid-w", "Café", "wlan0", "802-11-wireless", true},
                   {"uuid-e", "Wired", "eth0", "802-3-ethernet", true}};
  }
};

TEST_F(ManagedNetworkTable, ConnectionsComeFirstInNetworkManagersOrder) {
  EXPECT_EQ(order(), (Texts{"uuid-w", "uuid-e", br0}));
  EXPECT_EQ(text("State:/Network/Global/IPv4", "PrimaryService"), "uuid-e");
}

TEST_F(ManagedNetworkTable, ConnectionsHaveTheUsersNameAndTheirDevice) {
  EXPECT_EQ(text("Setup:/Network/Service/uuid-w", "UserDefinedName"), "Café");
  EXPECT_EQ(text("Setup:/Network/Service/uuid-w/Interface", "DeviceName"), "wlan0");
  EXPECT_EQ(texts("State:/Network/Service/uuid-e/IPv4", "Addresses"),
            (Texts{"192.168.1.7", "10.0.0.7"}));
}

TEST_F(ManagedNetworkTable, AConnectionWithoutADeviceIsNoService) {
  connections.push_back({"uuid-old", "Hotel", "", "802-11-wireless", false});
  EXPECT_EQ(order(), (Texts{"uuid-w", "uuid-e", br0}));
}

TEST_F(ManagedNetworkTable, ADeviceThatIsNotThereKeepsItsServiceWithoutState) {
  connections.push_back({"uuid-usb", "Dock", "eth7", "802-3-ethernet", false});
  EXPECT_EQ(order(), (Texts{"uuid-w", "uuid-e", "uuid-usb", br0}));
  EXPECT_EQ(text("Setup:/Network/Service/uuid-usb/Interface", "DeviceName"), "eth7");
  EXPECT_EQ(hardware("uuid-usb"), "Ethernet");
  EXPECT_FALSE(at("State:/Network/Interface/eth7/Link"));
}

TEST_F(ManagedNetworkTable, OfSeveralConnectionsOfALinkTheActiveOneShowsItsState) {
  connections.insert(connections.begin(), {"uuid-o", "Office", "eth0", "802-3-ethernet", false});
  EXPECT_EQ(order(), (Texts{"uuid-o", "uuid-w", "uuid-e", br0}));
  EXPECT_FALSE(at("State:/Network/Service/uuid-o/IPv4"));
  EXPECT_TRUE(at("State:/Network/Service/uuid-e/IPv4"));
}

TEST_F(ManagedNetworkTable, WithoutAnActiveOneTheFirstShowsTheState) {
  for (auto& each : connections) each.active = false;
  connections.push_back({"uuid-o", "Office", "eth0", "802-3-ethernet", false});
  EXPECT_TRUE(at("State:/Network/Service/uuid-e/IPv4"));
  EXPECT_FALSE(at("State:/Network/Service/uuid-o/IPv4"));
}

TEST_F(ManagedNetworkTable, TunnelsAndTheLoopbackAreNotTheLinksConnections) {
  connections = {{"uuid-v", "Work", "eth0", "vpn", true},
                 {"uuid-l", "lo", "lo", "loopback", true},
                 {"uuid-x", "odd", "lo", "802-3-ethernet", true}};
  EXPECT_EQ(order(), (Texts{eth0, wlan0, br0}));
}

TEST_F(ManagedNetworkTable, NetworkManagerTellsWhatAPppLinkRunsOver) {
  link(9, "ppp0", 512, running);
  connections = {{"uuid-p", "DSL", "ppp0", "pppoe", true}};
  const auto key = "Setup:/Network/Service/uuid-p/Interface"s;
  EXPECT_EQ(text(key, "Type"), "PPP");
  EXPECT_EQ(text(key, "SubType"), "PPPoE");
  connections[0].type = "gsm";
  EXPECT_EQ(text(key, "SubType"), "absent");
}

TEST_F(ManagedNetworkTable, NetworkManagerTellsAWirelessLinkThatTheKernelDoesNot) {
  network.wireless.clear();
  EXPECT_EQ(hardware("uuid-w"), "Wi-Fi");
}

TEST(NetworkModelLinks, OnlyWhatIsNewIsAChange) {
  NetworkModel network;
  LinkMessage link;
  link.index = 3;
  link.name = "eth0";
  EXPECT_TRUE(network.keep(link));
  EXPECT_FALSE(network.keep(link));
  link.received = 77;
  EXPECT_FALSE(network.keep(link));
  link.name = "lan0";
  EXPECT_TRUE(network.keep(link));
  EXPECT_EQ(network.link(3)->name, "lan0");
  EXPECT_TRUE(network.forget(3));
  EXPECT_FALSE(network.forget(3));
  EXPECT_FALSE(network.link(3));
}

}  // namespace
}  // namespace vantile
