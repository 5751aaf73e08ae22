#include <set>

#include "unit/network/network_fixture.h"

namespace vantile::testing {
namespace {

using namespace std::chrono_literals;

TEST_F(NetworkSample, TellsOfAServiceAndWhatItMoved) {
  monitor();
  interfaces["en0"].received = 1500;
  auto& entry = tick();
  EXPECT_EQ(*entry.text("service_id"), "A");
  EXPECT_EQ(entry.boolean("is_active_interface"), true);
  ASSERT_TRUE(details(entry));
  EXPECT_EQ(details(entry)->uint64("downlink_speed"), 500u);
  EXPECT_EQ(calls, 1);
}

TEST_F(NetworkSample, IsTakenEverySecondFromTheStart) {
  monitor();
  EXPECT_EQ(monitor().freshInterval(), 1);
  loop.advance(3s);
  EXPECT_EQ(calls, 3);
}

TEST_F(NetworkSample, TheFirstCoversTheRefreshInterval) {
  monitor().setFreshInterval(7);
  EXPECT_EQ(*tick(2s).find("sampling_interval"), Value(7.0));
}

TEST_F(NetworkSample, LaterOnesCoverTheTimeSinceTheOneBefore) {
  tick();
  EXPECT_EQ(*tick(2500ms).find("sampling_interval"), Value(2.5));
  EXPECT_EQ(*tick(1s).find("sampling_interval"), Value(1.0));
}

TEST_F(NetworkSample, TheTimeThatASampleTakesBelongsToNone) {
  interfaces.onRead = [this] { ports.ppp->now += 5s; };
  tick();
  EXPECT_EQ(*tick(1s).find("sampling_interval"), Value(1.0));
  EXPECT_EQ(*tick(2s).find("sampling_interval"), Value(2.0));
}

TEST_F(NetworkSample, TheMeasuredTimeMakesTheRate) {
  tick();
  interfaces["en0"].received += 1000;
  EXPECT_EQ(details(tick(4s))->number("peak_speek"), 250.0);
}

TEST_F(NetworkSample, OneSampleStaysAtFirst) {
  EXPECT_EQ(monitor().stayNetHistoryCount(), 1);
  monitor().setStayNetHistoryCount(3);
  EXPECT_EQ(monitor().stayNetHistoryCount(), 3);
}

TEST_F(NetworkSample, TheHistoryKeepsAsManySamplesAsItIsToldTo) {
  // A sample that nobody holds lends its storage to the next one. So there are as many different
  // ones as are held at a time, and the one that is being made.
  const auto storages = [this](std::int32_t stay) {
    monitor().setStayNetHistoryCount(stay);
    for (int i = 0; i < 8; ++i) tick();
    std::set<const void*> seen;
    for (int i = 0; i < 24; ++i) {
      ++interfaces["en0"].received;
      seen.insert(details(tick()));
    }
    return seen.size();
  };
  const auto ofOne = storages(1);
  EXPECT_EQ(storages(0), ofOne);
  EXPECT_EQ(storages(-7), ofOne);
  EXPECT_EQ(storages(3), ofOne + 3) << "three, four at times";
  EXPECT_EQ(storages(2), ofOne + 2);
}

TEST_F(NetworkSample, TheNewestOfALongerHistoryIsTold) {
  monitor().setStayNetHistoryCount(3);
  for (std::uint64_t i = 1; i <= 9; ++i) {
    interfaces["en0"].received = 1000 + i;
    EXPECT_EQ(details(tick())->uint64("total_in"), 1000 + i);
  }
}

TEST_F(NetworkSample, WhetherAKeptEntryIsActiveIsSeenEachTime) {
  tick().set("linkactive_status", false);
  EXPECT_EQ(tick().boolean("is_active_interface"), false);
  tick().set("linkactive_status", true);
  EXPECT_EQ(tick().boolean("is_active_interface"), true);
}

TEST_F(NetworkSample, TwoServicesAreTwoCallsWithTheSameList) {
  order({"A", "B"});
  add("B", "en1");
  tick();
  EXPECT_EQ(calls, 2);
  EXPECT_EQ(lists.at(0), lists.at(1));
  EXPECT_EQ(entries.size(), 2u);
}

TEST_F(NetworkSample, ADelegateSetInACallIsToldOfTheNextService) {
  order({"A", "B"});
  add("B", "en1");
  int others = 0;
  const auto other = std::make_shared<NetworkDelegate>();
  other->networkStatus = [&others](const Array&) { ++others; };
  delegate->networkStatus = [&](const Array&) {
    ++calls;
    monitor().setDelegate(other);
  };
  monitor().updateInfo();
  EXPECT_EQ(calls, 1);
  EXPECT_EQ(others, 1);
}

TEST_F(NetworkSample, ALaterServicesKeysAreThereFromItsOwnCallOn) {
  order({"A", "B"});
  add("B", "en1");
  std::vector<bool> second;
  delegate->networkStatus = [&second](const Array& services) {
    second.push_back(
        (*services.at(1).as<std::shared_ptr<Dictionary>>())->contains("is_active_interface"));
  };
  monitor().updateInfo();
  EXPECT_EQ(second, (std::vector<bool>{false, true}));
}

TEST_F(NetworkSample, WithoutServicesNobodyIsTold) {
  order({});
  monitor().updateInfo();
  EXPECT_EQ(calls, 0);
  store.values.erase("Setup:/Network/Global/IPv4");
  change();
  monitor().updateInfo();
  EXPECT_EQ(calls, 0);
}

TEST_F(NetworkSample, WithoutServicesTheSampleIsTakenAllTheSame) {
  order({});
  monitor().updateInfo();
  EXPECT_EQ(interfaces.counterReads, 2);
  ports.ppp->now += 3s;
  order({"A"});
  change();
  EXPECT_EQ(*tick(0s).find("sampling_interval"), Value(3.0));
}

TEST_F(NetworkSample, AServiceIsActiveWhileItsLinkIs) {
  interface("en0", "Link").set("Active", false);
  EXPECT_EQ(tick().boolean("is_active_interface"), false);
  interface("en0", "Link").set("Active", true);
  change();
  EXPECT_EQ(tick().boolean("is_active_interface"), true);
}

TEST_F(NetworkSample, AServiceWithoutLinkAndPppStatusIsActive) {
  EXPECT_EQ(tick().boolean("is_active_interface"), true);
}

TEST_F(NetworkSample, AServiceWhosePppStatusIsZeroIsNotActive) {
  daemonAnswers(statusReplies(0));
  setup("A", "PPP");
  interface("en0", "Link").set("Active", true);
  EXPECT_EQ(tick().boolean("is_active_interface"), false);
}

TEST_F(NetworkSample, AServiceWithAnyOtherPppStatusIsActiveWithItsLink) {
  daemonAnswers(statusReplies(4) + statusReplies(4));
  setup("A", "PPP");
  EXPECT_EQ(tick().boolean("is_active_interface"), true);
  interface("en0", "Link").set("Active", false);
  change();
  EXPECT_EQ(tick().boolean("is_active_interface"), false);
}

TEST_F(NetworkSample, AServicesPppInterfaceIsTheOneThatMoves) {
  add("A", "tty0");
  state("A", "PPP").set("InterfaceName", "ppp0");
  interfaces["ppp0"].received = 7;
  interfaces["tty0"].received = 9;
  EXPECT_EQ(details(tick())->uint64("total_in"), 7u);
}

TEST_F(NetworkSample, PppOverEthernetIsReadFromTheDevice) {
  state("A", "PPP").set("InterfaceName", "ppp0");
  interfaces["ppp0"].received = 7;
  EXPECT_EQ(details(tick())->uint64("total_in"), 1000u);
  add("A", "eth0");
  interfaces["eth0"].received = 5;
  interfaces.ethernet = {"eth0"};
  change();
  EXPECT_EQ(details(tick())->uint64("total_in"), 5u);
}

TEST_F(NetworkSample, ThePlatformIsNotAskedAgainWhetherADeviceIsEthernet) {
  add("A", "eth0");
  state("A", "PPP").set("InterfaceName", "ppp0");
  interfaces.ethernet = {"eth0"};
  tick();
  interfaces.ethernetReads = 0;
  tick();
  EXPECT_EQ(interfaces.ethernetReads, 0);
}

TEST_F(NetworkSample, AServiceWithNoDeviceIsReadFromItsPppInterface) {
  setup("A", "Interface") = Dictionary();
  state("A", "PPP").set("InterfaceName", "ppp0");
  interfaces["ppp0"].received = 7;
  EXPECT_EQ(details(tick())->uint64("total_in"), 7u);
}

TEST_F(NetworkSample, AServiceWithNeitherNameHasNoDetails) {
  setup("A", "Interface") = Dictionary();
  auto& entry = tick();
  EXPECT_EQ(entry.boolean("is_active_interface"), true);
  EXPECT_FALSE(entry.contains("throughput_details"));
  EXPECT_FALSE(entry.contains("sampling_interval"));
}

TEST_F(NetworkSample, ServicesMayComeInAnyOrder) {
  order({"C", "A", "D", "B"});
  add("B", "en1");
  add("C", "en2");
  add("D", "en9");
  interfaces["en1"].received = 1001;
  interfaces["en2"].received = 1002;
  tick();
  EXPECT_EQ(details(*entries.at(0))->uint64("total_in"), 1002u);
  EXPECT_EQ(details(*entries.at(1))->uint64("total_in"), 1000u);
  EXPECT_FALSE(details(*entries.at(2)));
  EXPECT_EQ(details(*entries.at(3))->uint64("total_in"), 1001u);
}

TEST_F(NetworkSample, AServiceThatTheSampleLacksHasNoDetailsOnANewList) {
  add("A", "en7");
  auto& entry = tick();
  EXPECT_TRUE(entry.contains("is_active_interface"));
  EXPECT_FALSE(entry.contains("throughput_details"));
  EXPECT_FALSE(entry.contains("sampling_interval"));
}

TEST_F(NetworkSample, AServiceThatTheSampleLacksKeepsItsOldDetailsOnTheKeptList) {
  tick();
  interfaces.remove("en0");
  auto& entry = tick(5s);
  EXPECT_EQ(details(entry)->uint64("total_in"), 1000u);
  EXPECT_EQ(*entry.find("sampling_interval"), Value(1.0));
  change();
  EXPECT_FALSE(tick().contains("throughput_details"));
}

TEST_F(NetworkSample, ARefusedSampleKeepsItsPlaceAndLeavesTheDetails) {
  monitor().setStayNetHistoryCount(3);
  tick();
  interfaces.refuses = true;
  interfaces["en0"].received = 2000;
  auto& entry = tick(5s);
  EXPECT_EQ(calls, 2);
  EXPECT_EQ(details(entry)->uint64("total_in"), 1000u);
  EXPECT_EQ(*entry.find("sampling_interval"), Value(1.0));
  change();
  EXPECT_FALSE(tick(5s).contains("throughput_details"));
  interfaces.refuses = false;
  auto& again = tick(2s);
  EXPECT_EQ(details(again)->uint64("downlink_speed"), 1000u);
  EXPECT_EQ(*again.find("sampling_interval"), Value(2.0));
}

TEST_F(NetworkSample, EntriesStayUntilTheConfigurationChanges) {
  tick();
  const auto before = entries.at(0);
  EXPECT_EQ(&tick(), before.get());
  change();
  EXPECT_NE(&tick(), before.get());
  EXPECT_EQ(entries.at(0)->size(), before->size());
}

TEST_F(NetworkSample, TheInterfaceEn4IsAskedForFirst) {
  add("A", "en4");
  tick();
  change();
  store.reads.clear();
  monitor_->updateInfo();
  ASSERT_GE(store.reads.size(), 3u);
  EXPECT_EQ(store.reads[0], "Setup:/Network/Global/IPv4");
  EXPECT_EQ(store.reads[1], "Setup:/Network/Service/A/Interface");
  // Of its service once that is found; for another name this would be the PPP state of A.
  EXPECT_EQ(store.reads[2], "Setup:/Network/Service/A/Interface");
}

TEST_F(NetworkSample, TheInterfaceEn4IsAskedForAnewByEverySample) {
  tick();
  store.reads.clear();
  tick();
  const auto first = store.reads;
  ASSERT_FALSE(first.empty());
  store.reads.clear();
  tick();
  EXPECT_EQ(store.reads, first);
}

TEST_F(NetworkSample, WithAnUnchangedConfigurationNothingIsReadButForEn4WhichIsNotThere) {
  interface("en0", "Link").set("Active", true);
  primary("A", "en0");
  tick();
  store.reads.clear();
  tick();
  EXPECT_EQ(store.reads, (std::vector<std::string>{"Setup:/Network/Global/IPv4",
                                                   "Setup:/Network/Service/A/Interface",
                                                   "State:/Network/Service/A/PPP"}));
}

}  // namespace
}  // namespace vantile::testing
