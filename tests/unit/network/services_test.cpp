#include "unit/network/net_manage_fixture.h"

namespace vantile::testing {
namespace {

class Services : public Manage {
 protected:
  Services() {
    order({"A"});
    add("A", "en0");
  }
  /// The one service's entry.
  Dictionary& entry() { return entryAt(0); }
  Dictionary& entryAt(std::size_t position) {
    services = manage().queryInterfaceLists();
    return **services->at(position).as<std::shared_ptr<Dictionary>>();
  }
  Names identifiers() {
    Names names;
    services = manage().queryInterfaceLists();
    for (const Value& each : *services)
      names.push_back(*(*each.as<std::shared_ptr<Dictionary>>())->text("service_id"));
    return names;
  }

  std::shared_ptr<Array> services;
};

TEST_F(Services, HaveEveryKeyThatTheirDictionariesGive) {
  primary("A", "en0");
  setup("A").set("UserDefinedName", "Office");
  setup("A", "Interface").set("Hardware", "Ethernet");
  setup("A", "Interface").set("SubType", "PPPoE");
  setup("A", "Interface").set("Type", "PPP");
  state("A", "PPP").set("InterfaceName", "ppp0");
  state("A", "IPv4").set("Addresses", arrayOf({"10.0.0.2"}));
  state("A", "IPv4").set("Router", "10.0.0.1");
  state("A", "IPv4").set("SubnetMasks", arrayOf({"255.0.0.0"}));
  state("A", "DNS").set("ServerAddresses", arrayOf({"1.1.1.1", "9.9.9.9"}));
  interface("en0", "IPv6").set("Addresses", arrayOf({"fe80::1"}));
  interface("en0", "AppleTalk").set("NetworkID", 7);
  interface("en0", "AppleTalk").set("NodeID", 8);
  interface("en0", "AppleTalk").set("DefaultZone", "*");
  interface("en0", "Link").set("Active", true);
  interfaces.speeds["en0"] = 1'000'000'000;

  Dictionary expected;
  expected.set("service_id", "A");
  expected.set("is_primary", true);
  expected.set("user_defind_name", "Office");
  expected.set("device_name", "en0");
  expected.set("connection_type", "PPPoE");
  expected.set("device_ppp_name", "ppp0");
  expected.set("ipv4_addresses", arrayOf({"10.0.0.2"}));
  expected.set("ipv4_router", "10.0.0.1");
  expected.set("ipv4_subnetmasks", arrayOf({"255.0.0.0"}));
  expected.set("ipv4_dns", arrayOf({"1.1.1.1", "9.9.9.9"}));
  expected.set("ipv6_addresses", arrayOf({"fe80::1"}));
  expected.set("appletalk_net_id", 7);
  expected.set("appletalk_node_id", 8);
  expected.set("appletalk_zone", "*");
  expected.set("linkactive_status", true);
  expected.set("link_speed", std::uint64_t{1'000'000'000});
  EXPECT_EQ(entry(), expected);
}

TEST_F(Services, HaveNoKeyForWhatIsMissing) {
  setup("A", "Interface") = Dictionary();
  setup("A", "Interface").set("Hardware", "Modem");
  Dictionary expected;
  expected.set("service_id", "A");
  expected.set("is_primary", false);
  expected.set("user_defind_name", "Modem");
  EXPECT_EQ(entry(), expected);
}

TEST_F(Services, WithoutADeviceAreNotLookedUpByIt) {
  primary("A", "en0");
  setup("A", "Interface") = Dictionary();
  manage().clearHistory();
  manage_->queryInterfaceLists();
  EXPECT_EQ(store.reads, (Names{"Setup:/Network/Global/IPv4", "State:/Network/Global/IPv4",
                                "Setup:/Network/Service/A", "Setup:/Network/Service/A/Interface",
                                "State:/Network/Service/A/PPP", "Setup:/Network/Service/A/PPP",
                                "State:/Network/Service/A/IPv4", "State:/Network/Service/A/DNS"}));
}

TEST_F(Services, HaveEachAddressKeyByItself) {
  state("A", "IPv4").set("Router", "10.0.0.1");
  EXPECT_EQ(*entry().text("ipv4_router"), "10.0.0.1");
  EXPECT_FALSE(entry().contains("ipv4_addresses"));
  EXPECT_FALSE(entry().contains("ipv4_subnetmasks"));
  EXPECT_FALSE(entry().contains("ipv4_dns"));
}

TEST_F(Services, WithoutAnInterfaceAreLeftOut) {
  order({"B", "A", "C"});
  setup("B").set("UserDefinedName", "Away");
  EXPECT_EQ(identifiers(), Names{"A"});
}

TEST_F(Services, AreNamedByTheUserFirst) {
  setup("A").set("UserDefinedName", "Office");
  setup("A", "Interface").set("Hardware", "Ethernet");
  EXPECT_EQ(*entry().text("user_defind_name"), "Office");
}

TEST_F(Services, AreNamedByTheirHardwareNext) {
  setup("A").set("Other", "value");
  setup("A", "Interface").set("Hardware", "AirPort");
  EXPECT_EQ(*entry().text("user_defind_name"), "AirPort");
}

TEST_F(Services, WithoutAnyNameAreAnUnknownInterface) {
  EXPECT_EQ(*entry().text("user_defind_name"), "Unknown Interface");
}

TEST_F(Services, AreAskedForANameUnderTheEntrysOwnSpellingBeforeTheHardware) {
  auto& held = setup("A", "Interface");
  held.set("user_defind_name", "x");
  held.set("UserDefinedName", "Odd");
  held.set("Hardware", "AirPort");
  EXPECT_EQ(*entry().text("user_defind_name"), "Odd");
  held.remove("UserDefinedName");
  change();
  EXPECT_FALSE(entry().contains("user_defind_name"));
}

TEST_F(Services, AreOfTheirSubTypeElseOfTheirType) {
  setup("A", "Interface").set("Type", "Ethernet");
  EXPECT_EQ(*entry().text("connection_type"), "Ethernet");
  setup("A", "Interface").set("SubType", "PPPoE");
  change();
  EXPECT_EQ(*entry().text("connection_type"), "PPPoE");
}

TEST_F(Services, OfPppHaveTheirLinksStatus) {
  daemonAnswers(statusReplies(8, 900, 400));
  setup("A", "PPP");
  const auto* const status = entry().find("ppp_status_info");
  ASSERT_TRUE(status);
  EXPECT_EQ((*status->as<std::shared_ptr<Dictionary>>())->uint64("inBytes"), 900u);
  EXPECT_EQ(ports.ppp->requests.at(0), pppHeader(13, 0, 0xFFFFFFFF, 1) + "A");
}

TEST_F(Services, OfPppThatTheDaemonDoesNotKnowHaveNoStatus) {
  daemonAnswers(pppReply(""));
  setup("A", "PPP");
  EXPECT_FALSE(entry().contains("ppp_status_info"));
}

TEST_F(Services, WithoutAPppSetupAreNotAskedFor) {
  daemonAnswers(statusReplies(8));
  state("A", "PPP").set("InterfaceName", "ppp0");
  EXPECT_FALSE(entry().contains("ppp_status_info"));
  EXPECT_TRUE(ports.ppp->requests.empty());
}

TEST_F(Services, HaveAppleTalkOnlyWhole) {
  for (const char* const missing : {"NetworkID", "NodeID", "DefaultZone"}) {
    auto& appleTalk = interface("en0", "AppleTalk");
    appleTalk.set("NetworkID", 7);
    appleTalk.set("NodeID", 8);
    appleTalk.set("DefaultZone", "*");
    appleTalk.remove(missing);
    manage().clearHistory();
    EXPECT_FALSE(entry().contains("appletalk_net_id")) << missing;
    EXPECT_FALSE(entry().contains("appletalk_node_id")) << missing;
    EXPECT_FALSE(entry().contains("appletalk_zone")) << missing;
  }
}

TEST_F(Services, OfEthernetHaveASpeedEvenAnUnknownOne) {
  EXPECT_EQ(entry().uint64("link_speed"), 10'000'000u);
}

TEST_F(Services, OfOtherKindsHaveNoSpeed) {
  add("A", "modem");
  state("A", "Modem").set("ConnectSpeed", 48'000);
  state("A", "PPP").set("Status", 8);
  state("A", "PPP").set("ConnectSpeed", 48'000);
  interfaces.speeds["modem"] = 1;
  EXPECT_FALSE(entry().contains("link_speed"));
}

TEST_F(Services, WhoseDeviceCountsAsEthernetHaveASpeed) {
  add("A", "eth0");
  interfaces.ethernet = {"eth0"};
  interfaces.speeds["eth0"] = 100'000'000;
  EXPECT_EQ(entry().uint64("link_speed"), 100'000'000u);
}

TEST_F(Services, WhosePlatformCouldNotBeAskedHaveTheirSpeedLater) {
  add("A", "wlan0");
  interfaces.ethernet = {"wlan0"};
  interfaces.speeds["wlan0"] = 866'700'000;
  interfaces.refusesFacts = true;
  const auto list = manage().queryInterfaceLists();
  const auto& entry = **list->at(0).as<std::shared_ptr<Dictionary>>();
  EXPECT_FALSE(entry.contains("link_speed"));
  manage_->queryInterfaceLists();
  EXPECT_FALSE(entry.contains("link_speed"));
  interfaces.refusesFacts = false;
  EXPECT_EQ(manage_->queryInterfaceLists(), list);
  EXPECT_EQ(entry.uint64("link_speed"), 866'700'000u);
  interfaces.speedReads = 0;
  manage_->queryInterfaceLists();
  EXPECT_EQ(interfaces.speedReads, 0);
}

TEST_F(Services, BeginWithThePrimaryOne) {
  order({"A", "B", "C", "D"});
  for (const char* const each : {"B", "C", "D"}) add(each, "en1");
  primary("C", "en1");
  EXPECT_EQ(identifiers(), (Names{"C", "A", "B", "D"}));
  EXPECT_EQ(entryAt(0).boolean("is_primary"), true);
  EXPECT_EQ(entryAt(1).boolean("is_primary"), false);
}

TEST_F(Services, KeepTheirOrderWhenThePrimaryOneIsTheFirst) {
  order({"A", "B"});
  add("B", "en1");
  primary("A", "en0");
  EXPECT_EQ(identifiers(), (Names{"A", "B"}));
}

TEST_F(Services, KeepTheirOrderWhenThePrimaryOneIsNoneOfThem) {
  order({"A", "B"});
  add("B", "en1");
  primary("Z", "en1");
  EXPECT_EQ(identifiers(), (Names{"A", "B"}));
}

TEST_F(Services, MovingThePrimaryOneLeavesTheStoresOrderAlone) {
  order({"A", "B"});
  add("B", "en1");
  primary("B", "en1");
  identifiers();
  EXPECT_EQ(manage().queryServiceWithInterfaceName("en1"), "B");
  const auto* const held = store["Setup:/Network/Global/IPv4"].find("ServiceOrder");
  EXPECT_EQ(**held->as<std::shared_ptr<Array>>(), *arrayOf({"A", "B"}));
}

TEST_F(Services, AreReadOnceUntilAChange) {
  const auto first = manage().queryInterfaceLists();
  EXPECT_EQ(manage().queryInterfaceLists(), first);
  EXPECT_TRUE(store.reads.empty());
  change();
  EXPECT_NE(manage().queryInterfaceLists(), first);
}

TEST_F(Services, TakeNineReadingsEach) {
  primary("A", "en0");
  manage().clearHistory();
  manage_->queryInterfaceLists();
  EXPECT_EQ(
      store.reads,
      (Names{"Setup:/Network/Global/IPv4", "State:/Network/Global/IPv4", "Setup:/Network/Service/A",
             "Setup:/Network/Service/A/Interface", "State:/Network/Service/A/PPP",
             "Setup:/Network/Service/A/PPP", "State:/Network/Service/A/IPv4",
             "State:/Network/Service/A/DNS", "State:/Network/Interface/en0/IPv6",
             "State:/Network/Interface/en0/AppleTalk", "State:/Network/Interface/en0/Link"}));
}

TEST_F(Services, WithoutAnOrderThereAreNone) {
  store.values.erase("Setup:/Network/Global/IPv4");
  EXPECT_FALSE(manage().queryInterfaceLists());
  store["Setup:/Network/Global/IPv4"].set("ServiceOrder", 5);
  EXPECT_FALSE(manage().queryInterfaceLists());
}

TEST_F(Services, OfAnEmptyOrderAreAnEmptyList) {
  order({});
  ASSERT_TRUE(manage().queryInterfaceLists());
  EXPECT_TRUE(manage().queryInterfaceLists()->empty());
}

TEST_F(Services, WhoseIdentifierIsNoTextAreLeftOut) {
  auto mixed = arrayOf({"A"});
  mixed->emplace_back(5);
  store["Setup:/Network/Global/IPv4"].set("ServiceOrder", mixed);
  EXPECT_EQ(identifiers(), Names{"A"});
}

TEST_F(Services, ThatAreKeptAskForPppAgainUnderTheirOldKeys) {
  daemonAnswers(statusReplies(8) + statusReplies(3) + pppReply(""));
  entry().set("pppstatus", "old");
  EXPECT_EQ(*entry().text("pppstatus"), "old") << "there is no service under the old key";
  entry().set("service", "A");
  const auto status = [this] {
    const auto* const held = services->at(0).as<std::shared_ptr<Dictionary>>();
    const auto* const found = (*held)->find("pppstatus")->as<std::shared_ptr<Dictionary>>();
    return found ? (*found)->uint64("status") : std::nullopt;
  };
  manage_->queryInterfaceLists();
  EXPECT_EQ(status(), 8u);
  manage_->queryInterfaceLists();
  EXPECT_EQ(status(), 3u);
  manage_->queryInterfaceLists();
  EXPECT_EQ(status(), 3u) << "what the daemon does not tell leaves the status";
}

TEST_F(Services, ThatAreKeptAskForNothingOtherwise) {
  daemonAnswers(statusReplies(8));
  setup("A", "PPP");
  entry();
  ports.ppp->requests.clear();
  entry();
  EXPECT_TRUE(ports.ppp->requests.empty());
}

}  // namespace
}  // namespace vantile::testing
