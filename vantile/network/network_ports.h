#pragma once

#include <chrono>
#include <functional>
#include <memory>

#include "vantile/platform/configuration_store.h"
#include "vantile/platform/interface_counters.h"
#include "vantile/platform/interface_facts.h"
#include "vantile/platform/ppp_daemon.h"

namespace vantile {

/// What the network subsystem asks of the operating system.
struct NetworkPorts {
  std::shared_ptr<ConfigurationStore> store = systemConfigurationStore();
  std::function<std::unique_ptr<InterfaceCounters>()> makeCounters = makeInterfaceCounters;
  std::shared_ptr<InterfaceFacts> facts = systemInterfaceFacts();
  std::shared_ptr<PppDaemon> ppp = systemPppDaemon();  ///< null: the platform has none
  std::function<std::chrono::steady_clock::time_point()> now = std::chrono::steady_clock::now;

  /// The ports in use. They are replaced by tests alone, before anything else runs.
  static NetworkPorts& installed();
};

}  // namespace vantile
