// The network's queries and its monitor on the kernel's own answers, in namespaces that the tests
// make.

#include <gtest/gtest.h>
#include <unistd.h>

#include <chrono>
#include <functional>
#include <map>
#include <memory>
#include <optional>
#include <set>
#include <string>
#include <string_view>
#include <thread>

#include "vantile/network/net_manage.h"
#include "vantile/network/network.h"

#include "fakes/temporary_folder.h"
#include "live/network_namespace.h"

namespace vantile {
namespace {

using namespace std::chrono_literals;
using testing::addPair;
using testing::comesToHold;
using testing::inNetworkNamespace;
using testing::ip;
using testing::listedLinks;

/// A monitor on this thread's loop, and what it told last.
struct Monitored {
  Monitored() {
    delegate->networkStatus = [this](const Array& services) { take(services); };
    monitor->setDelegate(delegate);
    monitor->updateInfo();
  }

  /// A copy of each link's entry. NetworkManager's connections for devices of another network have
  /// no link state.
  void take(const Array& services) {
    ++calls;
    entries.clear();
    for (const Value& each : services) {
      const auto& entry = **each.as<std::shared_ptr<Dictionary>>();
      if (entry.contains(keys::linkactive_status))
        entries.emplace(*entry.text(keys::device_name), entry);
    }
  }
  /// Whether it comes to hold for a sample. Samples are taken faster than they are meant to be.
  bool comesTo(const std::function<bool()>& holds, std::chrono::milliseconds within = 10s) {
    return comesToHold(
        [&] {
          entries.clear();
          monitor->updateInfo();
          return holds();
        },
        within);
  }
  std::set<std::string> devices() const {
    std::set<std::string> names;
    for (const auto& [name, entry] : entries) names.insert(name);
    return names;
  }
  std::optional<bool> active(const std::string& name) const {
    const auto found = entries.find(name);
    return found == entries.end() ? std::nullopt : found->second.boolean(keys::is_active_interface);
  }
  const Dictionary* details(const std::string& name) const {
    const auto found = entries.find(name);
    const auto* const value =
        found == entries.end() ? nullptr : found->second.find(keys::throughput_details);
    return value ? value->as<std::shared_ptr<Dictionary>>()->get() : nullptr;
  }

  int calls = 0;
  std::map<std::string, Dictionary> entries;
  const std::shared_ptr<NetworkDelegate> delegate = std::make_shared<NetworkDelegate>();
  const std::shared_ptr<Network> monitor = Network::init();
};

/// Texts of an array, each ended by a space.
std::string joined(const Dictionary& entry, std::string_view key) {
  std::string texts;
  const auto* const value = entry.find(key);
  const auto* const array = value ? value->as<std::shared_ptr<Array>>() : nullptr;
  if (array)
    for (const Value& each : **array) texts += *each.as<std::string>() + " ";
  return texts;
}

TEST(LiveNetwork, AChangeMakesANewListWithItInIt) {
  inNetworkNamespace([] {
    addPair("va", "vb");
    const auto manage = NetManage::init();
    ASSERT_TRUE(manage);
    // The links' own addresses come within two seconds.
    comesToHold([] { return false; }, 2500ms);
    const auto before = manage->queryInterfaceLists();
    EXPECT_EQ(manage->queryInterfaceLists(), before);
    ip("addr add 10.1.2.3/24 dev vb");
    ip("route add default via 10.1.2.1");
    EXPECT_TRUE(comesToHold([&] { return manage->queryMainInterfaceName() == "vb"; }));
    const auto now = manage->queryInterfaceLists();
    ASSERT_TRUE(now);
    EXPECT_NE(now, before);
    const auto& first = **now->at(0).as<std::shared_ptr<Dictionary>>();
    EXPECT_EQ(first.boolean(keys::is_primary), true);
    EXPECT_EQ(*first.text(keys::device_name), "vb");
    EXPECT_EQ(*first.text(keys::ipv4_router), "10.1.2.1");
    EXPECT_EQ(*first.text(keys::user_defind_name), "Virtual Ethernet");
    EXPECT_EQ(joined(first, keys::ipv4_addresses), "10.1.2.3 ");
    EXPECT_EQ(joined(first, keys::ipv4_subnetmasks), "255.255.255.0 ");
    const auto record = manage->interfaceConfigWithName("primary");
    ASSERT_TRUE(record);
    EXPECT_EQ(*record->text(keys::statname), "vb");
    EXPECT_EQ(manage->queryServiceWithInterfaceName("vb"), manage->queryMainServiceID());
  });
}

TEST(LiveNetwork, ALinkGoesDownAndUpIsRenamedRemovedAndAddedWhileMonitored) {
  inNetworkNamespace([] {
    addPair("va", "vb");
    Monitored it;
    EXPECT_TRUE(it.comesTo([&] { return it.active("va") == true && it.active("vb") == true; }));
    EXPECT_TRUE(it.details("va"));
    ip("link set va down");
    EXPECT_TRUE(it.comesTo([&] { return it.active("va") == false; }));
    ASSERT_TRUE(it.details("va"));
    EXPECT_FALSE(it.details("va")->contains(keys::downlink_speed));
    ip("link set va up");
    EXPECT_TRUE(it.comesTo([&] { return it.active("va") == true; }));
    ip("link set va name vc");
    EXPECT_TRUE(it.comesTo([&] { return it.devices() == listedLinks(); }));
    EXPECT_TRUE(it.devices().contains("vc"));
    EXPECT_TRUE(it.comesTo([&] { return it.details("vc") != nullptr; }));
    ip("link del vc");
    EXPECT_TRUE(it.comesTo([&] { return it.devices().empty(); }));
    addPair("vc", "vd");
    EXPECT_TRUE(it.comesTo([&] { return it.active("vc") == true && it.details("vc"); }));
    EXPECT_EQ(it.devices(), listedLinks());
  });
}

TEST(LiveNetwork, IsToldOfWithoutBeingAskedFor) {
  inNetworkNamespace([] {
    addPair("va", "vb");
    Monitored it;
    const int before = it.calls;
    EXPECT_GE(before, 2) << "one for each service";
    EXPECT_TRUE(comesToHold([&] { return it.calls > before + 1; }));
    EXPECT_EQ(it.devices(), listedLinks());
  });
}

TEST(LiveNetwork, APppTypeTunIsInTheListCountedAndUpByItsOwnFlag) {
  inNetworkNamespace([] {
    const auto tun = testing::tunDevice("ppp7", 512);
    if (!tun) GTEST_SKIP() << "no tun devices here";
    const auto manage = NetManage::init();
    ASSERT_TRUE(manage);
    Monitored it;
    ASSERT_TRUE(it.entries.contains("ppp7"));
    const auto& entry = it.entries.at("ppp7");
    EXPECT_EQ(*entry.text(keys::device_ppp_name), "ppp7");
    EXPECT_EQ(*entry.text(keys::connection_type), "PPP");
    EXPECT_EQ(*entry.text(keys::user_defind_name), "PPP");
    EXPECT_FALSE(entry.contains(keys::ppp_status_info));
    EXPECT_FALSE(manage->isUpWithinterfaceName("ppp7"));
    ip("link set ppp7 up");
    EXPECT_TRUE(comesToHold([&] { return manage->isUpWithinterfaceName("ppp7"); }));
    EXPECT_TRUE(it.comesTo([&] {
      return it.active("ppp7") == true && it.details("ppp7")->contains(keys::downlink_speed);
    }));
    // A packet comes in.
    std::string packet(1000, '\0');
    packet[0] = '\x45';
    const auto before = it.details("ppp7")->uint64(keys::total_in);
    ASSERT_EQ(::write(tun.get(), packet.data(), packet.size()), 1000);
    it.monitor->updateInfo();
    EXPECT_EQ(it.details("ppp7")->uint64(keys::total_in), before.value() + 1000);
    EXPECT_EQ(it.details("ppp7")->uint64(keys::downlink_speed), 1000u);
    EXPECT_EQ(manage->queryServiceWithInterfaceName("ppp7"),
              *it.entries.at("ppp7").text(keys::service_id));
    ip("link set ppp7 down");
    EXPECT_TRUE(comesToHold([&] { return !manage->isUpWithinterfaceName("ppp7"); }));
  });
}

TEST(LiveNetwork, TwoHundredLinksInABurstEndInTheRightList) {
  inNetworkNamespace([] {
    const testing::TemporaryFolder folder;
    addPair("va", "vb");
    Monitored it;
    std::thread maker([&] { testing::makeMany(folder.path()); });
    EXPECT_TRUE(it.comesTo([&] { return it.devices().size() == 202; }, 60s));
    maker.join();
    EXPECT_EQ(it.devices(), listedLinks());
    EXPECT_TRUE(it.comesTo([&] { return it.details("m0") && it.details("n99"); }));
    std::thread remover([&] { testing::removeMany(folder.path()); });
    EXPECT_TRUE(it.comesTo([&] { return it.devices().size() == 2; }, 60s));
    remover.join();
    EXPECT_EQ(it.devices(), listedLinks());
  });
}

}  // namespace
}  // namespace vantile
