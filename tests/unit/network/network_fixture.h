#pragma once

#include <chrono>
#include <memory>
#include <vector>

#include "vantile/network/network.h"

#include "unit/network/net_manage_fixture.h"

namespace vantile::testing {

/// A monitor of one service, "A" on "en0".
class NetworkSample : public Manage {
 protected:
  NetworkSample() {
    delegate->networkStatus = [this](const Array& services) {
      ++calls;
      lists.push_back(&services);
      entries.clear();
      for (const Value& each : services) entries.push_back(*each.as<std::shared_ptr<Dictionary>>());
    };
    order({"A"});
    add("A", "en0");
    interfaces["en0"].received = 1000;
  }

  Network& monitor() {
    if (!monitor_) {
      monitor_ = Network::init();
      monitor_->setDelegate(delegate);
    }
    return *monitor_;
  }
  /// Takes a sample after so much time; gives the one service's entry.
  Dictionary& tick(std::chrono::nanoseconds time = std::chrono::seconds(1)) {
    monitor();
    ports.ppp->now += time;
    monitor_->updateInfo();
    return *entries.at(0);
  }
  static const Dictionary* details(const Dictionary& entry) {
    const Value* const found = entry.find("throughput_details");
    return found ? found->as<std::shared_ptr<Dictionary>>()->get() : nullptr;
  }

  const std::shared_ptr<NetworkDelegate> delegate = std::make_shared<NetworkDelegate>();
  std::shared_ptr<Network> monitor_;
  int calls = 0;
  std::vector<const Array*> lists;
  std::vector<std::shared_ptr<Dictionary>> entries;
};

}  // namespace vantile::testing
