#pragma once

#include <gtest/gtest.h>

#include <memory>
#include <string>
#include <vector>

#include "vantile/network/net_manage.h"

#include "fakes/fake_network_ports.h"
#include "fakes/ppp_replies.h"
#include "fakes/stepped_loop.h"

namespace vantile::testing {

using Names = std::vector<std::string>;

inline std::shared_ptr<Array> arrayOf(const Names& texts) {
  return std::make_shared<Array>(texts.begin(), texts.end());
}

/// A `NetManage` on a store that a test fills.
class Manage : public ::testing::Test {
 protected:
  void order(const Names& services) {
    store["Setup:/Network/Global/IPv4"].set("ServiceOrder", arrayOf(services));
  }
  void primary(const std::string& service, const std::string& interface) {
    auto& state = store["State:/Network/Global/IPv4"];
    state.set("PrimaryService", service);
    state.set("PrimaryInterface", interface);
  }
  Dictionary& setup(const std::string& service) {
    return store["Setup:/Network/Service/" + service];
  }
  Dictionary& setup(const std::string& service, const std::string& what) {
    return store["Setup:/Network/Service/" + service + "/" + what];
  }
  Dictionary& state(const std::string& service, const std::string& what) {
    return store["State:/Network/Service/" + service + "/" + what];
  }
  Dictionary& interface(const std::string& name, const std::string& what) {
    return store["State:/Network/Interface/" + name + "/" + what];
  }
  /// A service with an interface of that name.
  void add(const std::string& service, const std::string& device) {
    setup(service, "Interface").set("DeviceName", device);
  }

  /// The platform has a daemon, which gives these bytes on its first connection.
  void daemonAnswers(std::string replies) {
    ports.addDaemon();
    ports.ppp->scripts.push_back({.replies = std::move(replies)});
  }

  NetManage& manage() {
    if (!manage_) manage_ = NetManage::init();
    store.reads.clear();
    return *manage_;
  }
  /// The store tells of a change.
  void change() { store.notify(); }

  /// How often the store was read for an answer, the first time and the second.
  template <class Query>
  std::pair<std::size_t, std::size_t> reads(Query query) {
    manage().clearHistory();
    const auto first = query();
    const auto once = store.reads.size();
    EXPECT_EQ(query(), first);
    return {once, store.reads.size() - once};
  }

  SteppedLoop loop;
  FakeNetworkPorts ports;
  FakeConfigurationStore& store = *ports.store;
  FakeInterfaces& interfaces = *ports.interfaces;
  std::shared_ptr<NetManage> manage_;
};

}  // namespace vantile::testing
