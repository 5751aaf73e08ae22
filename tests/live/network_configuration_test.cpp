// The network's configuration of namespaces that the tests make, against ip(8) and resolv.conf.

#include <gtest/gtest.h>

#include <algorithm>
#include <fstream>
#include <memory>
#include <set>
#include <string>
#include <vector>

#include "fakes/open_descriptors.h"
#include "live/network_namespace.h"
#include "live/opened_configuration.h"

namespace vantile {
namespace {

using testing::addPair;
using testing::comesToHold;
using testing::inNetworkNamespace;
using testing::ip;
using testing::ipTold;
using testing::listedLinks;
using testing::makeMany;
using testing::Opened;
using testing::removeMany;
using testing::textOf;
using testing::Texts;
using testing::textsOf;

Texts listedAddresses(const nlohmann::json& link, const std::string& family) {
  Texts texts;
  for (const auto& each : link["addr_info"])
    if (each["family"] == family) texts.push_back(each["local"].get<std::string>());
  return texts;
}

/// Whether all that both tell agrees.
bool agrees(Opened& opened) {
  bool agree = opened.devices() == listedLinks();
  for (const auto& link : ipTold("addr")) {
    const auto name = link["ifname"].get<std::string>();
    if (link["link_type"] == "loopback") continue;
    const auto& flags = link["flags"];
    const bool carrier = std::find(flags.begin(), flags.end(), "LOWER_UP") != flags.end();
    const auto ipv6 = opened.session->value("State:/Network/Interface/" + name + "/IPv6");
    agree &= textsOf(opened.state(name, "IPv4"), "Addresses") == listedAddresses(link, "inet") &&
             textsOf(ipv6, "Addresses") == listedAddresses(link, "inet6") &&
             opened.active(name) == carrier;
  }
  return agree;
}

TEST(LiveConfiguration, AddressesAndLinkStateAgreeWithIp) {
  inNetworkNamespace([] {
    addPair("va", "vb");
    ip("link add br9 type bridge");
    ip("addr add 10.1.2.3/24 dev va");
    ip("addr add 10.1.2.4/24 dev va");
    ip("addr add 172.16.0.1 peer 172.16.0.2/32 dev vb");
    ip("addr add fd00:1::5/64 dev va nodad");
    Opened opened;
    EXPECT_TRUE(comesToHold([&] { return agrees(opened); }));
    EXPECT_EQ(textsOf(opened.state("va", "IPv4"), "SubnetMasks"),
              (Texts{"255.255.255.0", "255.255.255.0"}));
    ip("addr add 10.7.0.1/8 dev vb");
    ip("addr add fd00:2::6/64 dev vb nodad");
    ip("link set br9 up");
    EXPECT_TRUE(comesToHold([&] { return agrees(opened) && opened.told > 0; }));
    ip("addr del 10.1.2.3/24 dev va");
    ip("addr del fd00:1::5/64 dev va");
    EXPECT_TRUE(comesToHold([&] { return agrees(opened); }));
    EXPECT_TRUE(comesToHold([&] { return opened.active("va") == true; }));
  });
}

TEST(LiveConfiguration, ALinkGoesDownAndUpIsRenamedRemovedAndAdded) {
  inNetworkNamespace([] {
    addPair("va", "vb");
    Opened opened;
    EXPECT_TRUE(comesToHold([&] { return opened.active("va") == true; }));
    ip("link set va down");
    EXPECT_TRUE(comesToHold([&] { return opened.active("va") == false; }));
    ip("link set va up");
    EXPECT_TRUE(comesToHold([&] { return opened.active("va") == true; }));
    ip("link set vb down");  // its peer loses the carrier
    EXPECT_TRUE(comesToHold([&] { return opened.active("va") == false; }));
    ip("link set va name vc");
    EXPECT_TRUE(comesToHold([&] { return opened.devices() == listedLinks(); }));
    EXPECT_TRUE(opened.devices().contains("vc"));
    EXPECT_FALSE(opened.active("va"));
    ip("link del vc");
    EXPECT_TRUE(comesToHold([&] { return opened.devices() == listedLinks(); }));
    EXPECT_FALSE(opened.devices().contains("vc"));
    addPair("vc", "vd");
    EXPECT_TRUE(comesToHold([&] { return agrees(opened) && opened.devices().contains("vd"); }));
  });
}

TEST(LiveConfiguration, TwoHundredLinksInABurstEndInTheRightList) {
  inNetworkNamespace([] {
    Opened opened;
    std::thread maker([&] { makeMany(opened.folder.path()); });
    EXPECT_TRUE(
        comesToHold([&] { return opened.devices().size() >= 200; }, std::chrono::seconds(60)));
    maker.join();
    EXPECT_TRUE(comesToHold([&] { return agrees(opened); }));
    std::thread remover([&] { removeMany(opened.folder.path()); });
    remover.join();
    EXPECT_TRUE(comesToHold([&] { return opened.devices() == listedLinks(); }));
    EXPECT_EQ(opened.serviceOf("m0"), "");
  });
}

TEST(LiveConfiguration, AfterAnOverrunEverythingIsReadAnew) {
  inNetworkNamespace([] {
    Opened opened(2048);
    // Nobody reads meanwhile: all but the first messages are lost.
    makeMany(opened.folder.path());
    ip("addr add 10.8.0.1/24 dev m99");
    EXPECT_TRUE(comesToHold([&] { return agrees(opened); }));
    EXPECT_GE(opened.devices().size(), 200u);
    removeMany(opened.folder.path());
    EXPECT_TRUE(comesToHold([&] { return agrees(opened); }));
  });
}

TEST(LiveConfiguration, ABurstIsToldOnce) {
  inNetworkNamespace([] {
    addPair("va", "vb");
    Opened opened;
    ASSERT_TRUE(comesToHold([&] { return agrees(opened) && opened.active("va") == true; }));
    comesToHold([] { return false; }, std::chrono::milliseconds(1500));  // addresses of their own
    opened.told = 0;
    std::ofstream batch(opened.folder.path("batch"));
    for (int each = 1; each <= 100; ++each) batch << "addr add 10.1.0." << each << "/24 dev va\n";
    batch.close();
    ip("-batch " + opened.folder.path("batch"));
    ASSERT_TRUE(comesToHold(
        [&] { return textsOf(opened.state("va", "IPv4"), "Addresses").size() == 100; }));
    comesToHold([] { return false; }, std::chrono::milliseconds(50));
    EXPECT_EQ(opened.told, 1);
  });
}

TEST(LiveConfiguration, ATunDeviceOfPppTypeIsAPppLink) {
  inNetworkNamespace([] {
    const auto tun = testing::tunDevice("ppp7", 512);
    if (!tun) GTEST_SKIP() << "no tun devices here";
    Opened opened;
    const auto service = opened.serviceOf("ppp7");
    const auto interface =
        opened.session->value("Setup:/Network/Service/" + service + "/Interface");
    EXPECT_EQ(textOf(interface, "Hardware"), "PPP");
    EXPECT_EQ(textOf(interface, "Type"), "PPP");
    EXPECT_EQ(textOf(opened.state("ppp7", "PPP"), "InterfaceName"), "ppp7");
    EXPECT_FALSE(opened.state("ppp7", "PPP")->contains("Status"));
    ip("link set ppp7 up");
    EXPECT_TRUE(comesToHold([&] { return opened.state("ppp7", "PPP")->int64("Status") == 8; }));
  });
}

TEST(LiveConfiguration, TheMachinesOwnAgreesWithIpAndResolvConf) {
  const auto session = systemConfigurationStore()->open("test", {}, [] {});
  ASSERT_TRUE(session);
  std::set<std::string> names;
  Texts servers;
  for (const auto& service :
       textsOf(session->value("Setup:/Network/Global/IPv4"), "ServiceOrder")) {
    names.insert(
        textOf(session->value("Setup:/Network/Service/" + service + "/Interface"), "DeviceName"));
    for (const auto& each :
         textsOf(session->value("State:/Network/Service/" + service + "/DNS"), "ServerAddresses"))
      servers.push_back(each);
  }
  for (const auto& link : listedLinks()) EXPECT_TRUE(names.contains(link)) << link;
  const auto routes = ipTold("route show default");
  if (routes.empty()) GTEST_SKIP() << "no default route, so no service has the servers";
  const auto file = testing::run("awk '/^nameserver/ {print $2}' /etc/resolv.conf").text;
  if (file.find("127.0.0.53") != file.npos) GTEST_SKIP() << "the servers are behind a stub";
  std::string listed;
  for (const auto& each : servers) listed += each + "\n";
  EXPECT_EQ(listed, file);
}

TEST(LiveConfiguration, AThousandChangesOpenNoDescriptor) {
  inNetworkNamespace([] {
    addPair("va", "vb");
    Opened opened;
    ASSERT_TRUE(comesToHold([&] { return agrees(opened); }));
    const auto before = testing::openDescriptors();
    std::ofstream batch(opened.folder.path("batch"));
    for (int each = 0; each < 500; ++each)
      batch << "addr add 10.1.0.1/24 dev va\naddr del 10.1.0.1/24 dev va\n";
    batch.close();
    std::thread changer([&] { ip("-batch " + opened.folder.path("batch")); });
    for (int each = 0; each < 50; ++each) {
      std::ofstream(opened.folder.path("resolv.conf")) << "nameserver 10.0.0." << each << "\n";
      comesToHold([] { return false; }, std::chrono::milliseconds(5));
    }
    changer.join();
    EXPECT_TRUE(comesToHold([&] { return agrees(opened); }));
    EXPECT_EQ(testing::openDescriptors(), before);
    opened.session.reset();
    comesToHold([] { return false; }, std::chrono::milliseconds(5));
    EXPECT_LT(testing::openDescriptors(), before);
  });
}

}  // namespace
}  // namespace vantile
