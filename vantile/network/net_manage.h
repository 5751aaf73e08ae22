#pragma once

#include <cstdint>
#include <functional>
#include <map>
#include <memory>
#include <mutex>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "vantile/foundation/api.h"
#include "vantile/foundation/value.h"
#include "vantile/network/network_keys.h"

namespace vantile {

class ConfigurationSession;
class InterfaceCounters;
class NetPPP;
class TrafficSamples;
struct InterfaceReading;
struct InterfaceReadings;
struct NetworkPorts;

/// Answers questions about the machine's network services and their interfaces, and counts what the
/// interfaces move. A service is a configured connection, known by its service ID. Answers are kept
/// until the configuration changes, of which the making thread's run loop is told.
///
/// Any thread; operations take turns. Changes are taken in where the making thread's loop is
/// served. A name or service ID of nothing gives nothing, but where something else is said.
///
/// macOS: SystemConfiguration's dynamic store, the routing sysctl, the I/O registry, and the PPP
/// daemon, for which `init`, a sample and a query of services or of a PPP interface wait 2 seconds
/// at most, each in all. Linux: rtnetlink, ethtool and nl80211 over generic netlink, /sys, the
/// resolver's files, and NetworkManager where it runs; no call waits for another program.
class VANTILE_API NetManage final {
 public:
  using Text = std::optional<std::string>;
  using TextArgument = std::optional<std::string_view>;

  /// A new object, which the calling thread's run loop serves; null when the store or, where there
  /// is one, the PPP daemon can't be reached. It takes a first throughput sample. Let go of on
  /// another thread, it leaves that loop when the loop is served next, or ends.
  static std::shared_ptr<NetManage> init();

  ~NetManage();
  NetManage(const NetManage&) = delete;
  NetManage& operator=(const NetManage&) = delete;

  /// The services in the user's order, the primary one first, as dictionaries of network_keys.h;
  /// null when there is no order. The array is the one that is kept: `Network` adds to its entries,
  /// and so it is to be read where the monitor samples.
  std::shared_ptr<Array> queryInterfaceLists();
  /// The configuration of the interface, keys "service" to "interfaceup"; of the primary service
  /// for "primary", for nothing, and for an interface that no service has. Null without that.
  std::shared_ptr<Dictionary> interfaceConfigWithName(TextArgument name);
  /// The interface and the service that traffic takes by default.
  Text queryMainInterfaceName();
  Text queryMainServiceID();
  /// The service's PPP interface, else its device.
  Text queryInterfaceNameWithServiceID(TextArgument serviceID);
  /// The first service that has the device or PPP interface.
  Text queryServiceWithInterfaceName(TextArgument name);
  /// The interface whose counters carry the service's traffic: its PPP interface, but for PPP over
  /// Ethernet the device.
  Text queryUnderlyingInterfaceNameWithServiceID(TextArgument serviceID);
  /// Bits per second; 10,000,000 when it can't be told, 56,000 for a modem that is not connected.
  std::uint64_t querySpeedWithServiceID(TextArgument serviceID);
  /// Whether an Ethernet interface has a link, and one whose name begins with "ppp" is connected;
  /// on Linux the latter is up by its own flag. True for an Ethernet one of which no link state is
  /// known and for any other, false for nothing.
  bool isUpWithinterfaceName(TextArgument name);
  /// What the store of the configuration holds under the key; null when that is nothing.
  std::shared_ptr<const Dictionary> sysconfigValueForKey(std::string_view key);
  /// Drops all answers that are kept. Totals of the throughput go on.
  void clearHistory();

  /// What each interface moved since the call before, `seconds` ago: a dictionary of network_keys.h
  /// by interface name, the loopback left out, and those of the PPP daemon that are not connected;
  /// null when the system refuses the counters. The result stays as it is for as long as it is
  /// held.
  std::shared_ptr<const Dictionary> netStatsWithInterval(double seconds);
  /// The link speed of the interface in bits per second; 10,000,000 when it can't be told.
  std::uint64_t speedForInterfaceName(TextArgument name);

 private:
  friend class Network;
  template <class Held>
  using Cache = std::map<std::string, Held, std::less<>>;

  explicit NetManage(NetworkPorts ports);
  bool begin(const std::weak_ptr<NetManage>& self);
  std::optional<bool> toldEthernet(TextArgument name);
  bool isEthernet(TextArgument name);
  Text mainValue(Text& cached, std::string_view key);
  std::shared_ptr<Array> serviceOrder();
  void askPppAgain();
  void askUnanswered();
  bool addPppStatus(Dictionary& entry, const std::string& serviceID);
  std::shared_ptr<Dictionary> serviceEntry(const std::string& serviceID);
  static void addName(Dictionary& entry, const Dictionary& interface);
  void addPpp(const std::shared_ptr<Dictionary>& entry, const std::string& serviceID);
  void addAddresses(Dictionary& entry, const std::string& serviceID);
  void addInterfaceState(Dictionary& entry, const std::string& device);
  bool addSpeed(Dictionary& entry, const std::string& serviceID, const std::string& device);
  std::shared_ptr<Dictionary> configuration(const std::string& serviceID, const std::string& stat,
                                            std::string_view name);
  bool hasInterface(const std::string& serviceID, std::string_view name);
  std::optional<bool> linkState(std::string_view name);
  std::optional<bool> pppState(std::string_view name);
  void addInterface(const InterfaceReading& reading);

  const std::unique_ptr<const NetworkPorts> ports_;
  std::recursive_mutex turn_;  // over all below; operations are made of others
  std::shared_ptr<NetPPP> ppp;
  std::shared_ptr<Array> interfaceDetails;
  std::vector<std::shared_ptr<Dictionary>> unanswered_;  // its entries that the daemon left open
  std::vector<std::shared_ptr<Dictionary>> speedless_;   // and those that the platform did
  Text primaryName, primaryService;
  Cache<std::string> serviceToName;
  Cache<std::string> nameToService;
  Text nobodys_;  // the interface that no service was found to have last
  Cache<std::uint64_t> serviceSpeed;
  Cache<std::string> underlyingInterface;
  Cache<bool> interfaceUp;
  Cache<bool> ethernet_;                       // by name: the platform counts it as Ethernet
  std::shared_ptr<const Dictionary> lastData;  // the sample before
  std::unique_ptr<InterfaceCounters> counters_;
  std::unique_ptr<InterfaceReadings> readings_;  // their storage
  std::unique_ptr<TrafficSamples> samples_;
  std::shared_ptr<ConfigurationSession> scSession;  // the first to go; ends on its loop
};

}  // namespace vantile
