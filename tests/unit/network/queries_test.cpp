#include "unit/network/queries_fixture.h"

namespace vantile::testing {
namespace {

using Text = std::optional<std::string>;

TEST_F(Queries, TheMainInterfaceAndServiceAreReadOnce) {
  EXPECT_EQ(manage().queryMainInterfaceName(), "en0");
  EXPECT_EQ(manage().queryMainServiceID(), "A");
  EXPECT_EQ(reads([this] { return manage_->queryMainInterfaceName(); }), Reads(1, 0));
  EXPECT_EQ(reads([this] { return manage_->queryMainServiceID(); }), Reads(1, 0));
  EXPECT_EQ(store.reads, Names{"State:/Network/Global/IPv4"});
}

TEST_F(Queries, WithoutAPrimaryThereIsNoMainOneAndItIsAskedForAgain) {
  store.values.erase("State:/Network/Global/IPv4");
  EXPECT_EQ(manage().queryMainInterfaceName(), std::nullopt);
  EXPECT_EQ(manage().queryMainServiceID(), std::nullopt);
  primary("B", "fw0");
  EXPECT_EQ(manage().queryMainInterfaceName(), "fw0");
  EXPECT_EQ(manage().queryMainServiceID(), "B");
}

TEST_F(Queries, AnInterfaceNameIsThePppOneFirst) {
  state("A", "PPP").set("InterfaceName", "ppp0");
  EXPECT_EQ(manage().queryInterfaceNameWithServiceID("A"), "ppp0");
  EXPECT_EQ(manage().queryInterfaceNameWithServiceID("B"), "fw0");
  EXPECT_EQ(reads([this] { return manage_->queryInterfaceNameWithServiceID("B"); }), Reads(2, 0));
}

TEST_F(Queries, AServiceWithoutAnInterfaceHasNoNameAndIsAskedForAgain) {
  EXPECT_EQ(manage().queryInterfaceNameWithServiceID("C"), std::nullopt);
  EXPECT_EQ(reads([this] { return manage_->queryInterfaceNameWithServiceID("C"); }), Reads(2, 2));
  add("C", "en5");
  EXPECT_EQ(manage().queryInterfaceNameWithServiceID("C"), "en5");
}

TEST_F(Queries, NothingGivesNothing) {
  EXPECT_EQ(manage().queryInterfaceNameWithServiceID(std::nullopt), std::nullopt);
  EXPECT_EQ(manage().queryServiceWithInterfaceName(std::nullopt), std::nullopt);
  EXPECT_EQ(manage().queryUnderlyingInterfaceNameWithServiceID(std::nullopt), std::nullopt);
  EXPECT_TRUE(store.reads.empty());
}

TEST_F(Queries, AServiceIsFoundByItsDeviceInTheOrder) {
  add("B", "en0");
  EXPECT_EQ(manage().queryServiceWithInterfaceName("en0"), "A");
  order({"B", "A"});
  change();
  EXPECT_EQ(manage().queryServiceWithInterfaceName("en0"), "B") << "the primary one is not first";
}

TEST_F(Queries, AServiceIsFoundByItsPppInterface) {
  state("B", "PPP").set("InterfaceName", "ppp0");
  EXPECT_EQ(manage().queryServiceWithInterfaceName("ppp0"), "B");
  EXPECT_EQ(manage().queryServiceWithInterfaceName("fw0"), "B");
}

TEST_F(Queries, AnEarlierServicesPppInterfaceComesBeforeALaterOnesDevice) {
  state("A", "PPP").set("InterfaceName", "fw0");
  EXPECT_EQ(manage().queryServiceWithInterfaceName("fw0"), "A");
}

TEST_F(Queries, AServiceIsReadForByItsInterfaceOnce) {
  EXPECT_EQ(reads([this] { return manage_->queryServiceWithInterfaceName("en0"); }), Reads(2, 0));
  EXPECT_EQ(store.reads,
            (Names{"Setup:/Network/Global/IPv4", "Setup:/Network/Service/A/Interface"}));
}

TEST_F(Queries, ThatNoServiceHasAnInterfaceIsNotKept) {
  EXPECT_EQ(manage().queryServiceWithInterfaceName("en4"), std::nullopt);
  EXPECT_EQ(reads([this] { return manage_->queryServiceWithInterfaceName("en4"); }), Reads(5, 5));
  add("B", "en4");
  EXPECT_EQ(manage().queryServiceWithInterfaceName("en4"), "B");
}

TEST_F(Queries, WhereEveryChangeIsToldThatNoServiceHasAnInterfaceIsKeptUntilThen) {
  store.tellsEveryChange = true;
  EXPECT_EQ(reads([this] { return manage_->queryServiceWithInterfaceName("en4"); }), Reads(5, 0));
  EXPECT_EQ(manage().queryServiceWithInterfaceName("en5"), std::nullopt);
  add("B", "en4");
  add("A", "en5");
  EXPECT_EQ(manage().queryServiceWithInterfaceName("en4"), "B") << "one name is kept";
  EXPECT_EQ(manage().queryServiceWithInterfaceName("en5"), std::nullopt);
  change();
  EXPECT_EQ(manage().queryServiceWithInterfaceName("en5"), "A");
}

TEST_F(Queries, WithoutAnOrderNoServiceIsFound) {
  store.values.erase("Setup:/Network/Global/IPv4");
  EXPECT_EQ(manage().queryServiceWithInterfaceName("en0"), std::nullopt);
  store["Setup:/Network/Global/IPv4"].set("ServiceOrder", "A");
  EXPECT_EQ(manage().queryServiceWithInterfaceName("en0"), std::nullopt);
}

TEST_F(Queries, TrafficOfPppIsCountedByItsInterface) {
  state("B", "PPP").set("InterfaceName", "ppp0");
  EXPECT_EQ(manage().queryUnderlyingInterfaceNameWithServiceID("B"), "ppp0");
  state("C", "PPP").set("InterfaceName", "ppp1");
  EXPECT_EQ(manage().queryUnderlyingInterfaceNameWithServiceID("C"), "ppp1");
}

TEST_F(Queries, TrafficOfPppOverEthernetIsCountedByTheDevice) {
  state("A", "PPP").set("InterfaceName", "ppp0");
  EXPECT_EQ(manage().queryUnderlyingInterfaceNameWithServiceID("A"), "en0");
  interfaces.ethernet = {"fw0"};
  change();
  state("B", "PPP").set("InterfaceName", "ppp0");
  EXPECT_EQ(manage().queryUnderlyingInterfaceNameWithServiceID("B"), "fw0");
}

TEST_F(Queries, OtherTrafficIsCountedByTheDevice) {
  EXPECT_EQ(manage().queryUnderlyingInterfaceNameWithServiceID("B"), "fw0");
  EXPECT_EQ(manage().queryUnderlyingInterfaceNameWithServiceID("C"), std::nullopt);
  EXPECT_EQ(reads([this] { return manage_->queryUnderlyingInterfaceNameWithServiceID("B"); }),
            Reads(2, 0));
}

TEST_F(Queries, ThePlatformIsAskedOnceWhetherANameIsEthernet) {
  interfaces.ethernet = {"eth0"};
  add("B", "eth0");
  manage();
  interfaces.ethernetReads = 0;
  change();
  for (int i = 0; i < 3; ++i) {
    manage_->isUpWithinterfaceName("eth0");
    manage_->querySpeedWithServiceID("B");
    manage_->interfaceConfigWithName("eth0");
    manage_->queryInterfaceLists();
  }
  EXPECT_EQ(interfaces.ethernetReads, 1) << "and not at all for en0";
  change();
  manage_->isUpWithinterfaceName("eth0");
  EXPECT_EQ(interfaces.ethernetReads, 2);
}

TEST_F(Queries, APlatformThatCantBeAskedCountsAsNoEthernetWhichIsNotKept) {
  add("B", "eth0");
  state("B", "PPP").set("InterfaceName", "ppp0");
  interface("eth0", "Link").set("Active", false);
  interfaces.ethernet = {"eth0"};
  interfaces.refusesFacts = true;
  EXPECT_EQ(isUp("eth0"), true);
  EXPECT_EQ(manage().queryUnderlyingInterfaceNameWithServiceID("B"), "ppp0");
  EXPECT_EQ(isUp("en0"), true) << "which need not be asked for";
  interfaces.refusesFacts = false;
  EXPECT_EQ(isUp("eth0"), false);
  EXPECT_EQ(manage().queryUnderlyingInterfaceNameWithServiceID("B"), "eth0");
}

TEST_F(Queries, AnEthernetInterfaceIsUpWhileItsLinkIsActive) {
  interface("en0", "Link").set("Active", true);
  interface("en1", "Link").set("Active", false);
  interface("en2", "Link").set("Active", 1);
  interface("en3", "Link").set("Active", 0);
  EXPECT_EQ(isUp("en0"), true);
  EXPECT_EQ(isUp("en1"), false);
  EXPECT_EQ(isUp("en2"), true);
  EXPECT_EQ(isUp("en3"), false);
  EXPECT_EQ(reads([this] { return manage_->isUpWithinterfaceName("en1"); }), Reads(1, 0));
}

TEST_F(Queries, AnEthernetInterfaceWithoutALinkStateIsUpWhichIsNotKept) {
  EXPECT_EQ(isUp("en1"), true);
  interface("en1", "Link");
  EXPECT_EQ(isUp("en1"), true);
  interface("en1", "Link").set("Active", false);
  EXPECT_EQ(isUp("en1"), false);
}

TEST_F(Queries, WhatCountsAsEthernetIsUpWhileItsLinkIsActive) {
  interface("wlan0", "Link").set("Active", false);
  EXPECT_EQ(isUp("wlan0"), true);
  interfaces.ethernet = {"wlan0"};
  EXPECT_EQ(isUp("wlan0"), true);  // kept until a change
  change();
  EXPECT_EQ(isUp("wlan0"), false);
}

TEST_F(Queries, AnyOtherNameIsUpAndNoneIsNot) {
  interface("lo0", "Link").set("Active", false);
  EXPECT_EQ(isUp("lo0"), true);
  EXPECT_FALSE(manage().isUpWithinterfaceName(std::nullopt));
  EXPECT_TRUE(store.reads.empty());
}

TEST_F(Queries, APppInterfaceIsUpWhileTheDaemonSaysSo) {
  daemonAnswers(statusReplies(8) + statusReplies(7));
  EXPECT_EQ(isUp("ppp0"), true);
  EXPECT_EQ(isUp("ppp1"), false);
  EXPECT_EQ(ports.ppp->requests.size(), 4u);
  EXPECT_EQ(isUp("ppp0"), true);
  EXPECT_EQ(isUp("ppp1"), false);
  EXPECT_EQ(ports.ppp->requests.size(), 4u) << "both answers are kept";
}

TEST_F(Queries, APppInterfaceThatTheDaemonDoesNotKnowIsNotUp) {
  daemonAnswers(pppReply("") + statusReplies(8));
  EXPECT_EQ(isUp("ppp0"), false);
  EXPECT_EQ(isUp("ppp0"), false) << "the answer is kept";
  EXPECT_EQ(ports.ppp->requests.size(), 1u);
}

TEST_F(Queries, WithoutADaemonAPppInterfaceIsUpByItsOwnFlag) {
  interfaces["ppp0"].up = true;
  interfaces["ppp1"].up = false;
  EXPECT_EQ(isUp("ppp0"), true);
  EXPECT_EQ(isUp("ppp1"), false);
  EXPECT_EQ(isUp("ppp2"), false);
  interfaces["ppp1"].up = true;
  EXPECT_EQ(isUp("ppp1"), false) << "the answer is kept";
  change();
  EXPECT_EQ(isUp("ppp1"), true);
}

TEST_F(Queries, WithoutCountersAPppInterfaceIsNotUpWhichIsNotKept) {
  interfaces["ppp0"].up = true;
  interfaces.refuses = true;
  EXPECT_EQ(isUp("ppp0"), false);
  interfaces.refuses = false;
  EXPECT_EQ(isUp("ppp0"), true);
}

TEST_F(Queries, AConfigurationTellsAllOfAnInterface) {
  interfaces.speeds["en0"] = 1'000'000'000;
  interface("en0", "Link").set("Active", true);
  const auto record = manage().interfaceConfigWithName("en0");
  ASSERT_TRUE(record);
  Dictionary expected;
  expected.set("service", "A");
  expected.set("statname", "en0");
  expected.set("speed", std::uint64_t{1'000'000'000});
  expected.set("name", "en0");
  expected.set("interfaceup", true);
  EXPECT_EQ(*record, expected);
}

TEST_F(Queries, AConfigurationNamesTheInterfaceThatCounts) {
  state("A", "PPP").set("InterfaceName", "ppp0");
  interface("en0", "Link").set("Active", true);
  const auto record = manage().interfaceConfigWithName("ppp0");
  ASSERT_TRUE(record);
  EXPECT_EQ(*record->text("statname"), "en0");
  EXPECT_EQ(*record->text("name"), "ppp0");
  EXPECT_EQ(record->boolean("interfaceup"), true) << "of the interface that counts";
}

TEST_F(Queries, AConfigurationIsReadOnce) {
  interface("en0", "Link").set("Active", true);
  manage();
  change();
  manage_->interfaceConfigWithName("en0");
  store.reads.clear();
  manage_->interfaceConfigWithName("en0");
  EXPECT_TRUE(store.reads.empty());
}

TEST_F(Queries, AServiceWithoutAnInterfaceThatCountsHasNoConfigurationNotEvenThePrimarys) {
  EXPECT_EQ(manage().queryServiceWithInterfaceName("fw0"), "B");
  setup("B", "Interface") = Dictionary();  // which the kept answer does not show
  EXPECT_FALSE(manage_->interfaceConfigWithName("fw0"));
}

TEST_F(Queries, ThePrimaryServiceAnswersForItsOwnNameForNoneAndForUnknownOnes) {
  primary("B", "fw0");
  for (const auto& name : {Text("primary"), Text(), Text("en4")}) {
    const auto record = manage().interfaceConfigWithName(name);
    ASSERT_TRUE(record);
    EXPECT_EQ(*record->text("service"), "B");
    EXPECT_EQ(*record->text("statname"), "fw0");
    EXPECT_EQ(*record->text("name"), "primary");
  }
}

TEST_F(Queries, AnInterfaceThatIsCalledPrimaryIsNotMeant) {
  add("B", "primary");
  const auto record = manage().interfaceConfigWithName("primary");
  ASSERT_TRUE(record);
  EXPECT_EQ(*record->text("service"), "A");
}

TEST_F(Queries, APrimaryServiceWithoutADeviceIsCountedByTheMainInterface) {
  primary("C", "utun0");
  const auto record = manage().interfaceConfigWithName("primary");
  ASSERT_TRUE(record);
  EXPECT_EQ(*record->text("statname"), "utun0");
}

TEST_F(Queries, WithoutAPrimaryServiceOrANameThereIsNoConfiguration) {
  store.values.erase("State:/Network/Global/IPv4");
  EXPECT_FALSE(manage().interfaceConfigWithName("primary"));
  store["State:/Network/Global/IPv4"].set("PrimaryService", "C");
  EXPECT_FALSE(manage().interfaceConfigWithName("primary"));
}

TEST_F(Queries, AfterAChangeEveryAnswerIsMadeAnew) {
  add("B", "en1");
  interface("en1", "Link").set("Active", true);
  interfaces.speeds["en1"] = 100;
  const auto ask = [this] {
    auto& m = manage();
    return std::tuple(m.queryMainInterfaceName(), m.queryMainServiceID(),
                      m.queryInterfaceNameWithServiceID("B"),
                      m.queryServiceWithInterfaceName("en1"), m.querySpeedWithServiceID("B"),
                      m.queryUnderlyingInterfaceNameWithServiceID("B"),
                      m.isUpWithinterfaceName("en1"), m.queryInterfaceLists()->size());
  };
  const auto first = ask();
  primary("B", "en9");
  add("B", "en9");
  interface("en1", "Link").set("Active", false);
  interfaces.speeds["en9"] = 200;
  order({"B"});
  EXPECT_EQ(ask(), first);
  EXPECT_TRUE(store.reads.empty());
  change();
  EXPECT_EQ(ask(), std::tuple(Text("en9"), Text("B"), Text("en9"), Text(), 200u, Text("en9"), false,
                              std::size_t{1}));
}

}  // namespace
}  // namespace vantile::testing
