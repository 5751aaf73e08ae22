#pragma once

#include <cstdint>
#include <map>
#include <string>
#include <vector>

#include "vantile/platform/linux/network_manager.h"

namespace vantile {

/// What a connection's settings tell of it, its section "connection". A text that they lack is
/// empty.
struct ConnectionSettings {
  std::string uuid, name, type;
  std::string interfaceName;             ///< what it is bound to
  std::int32_t autoconnectPriority = 0;  ///< NetworkManager's default is 0 too
  std::uint64_t timestamp = 0;           ///< seconds since 1970 of its latest use, 0 for never
};

/// NMActiveConnectionState.
enum class ActiveState : std::uint32_t {
  unknown,
  activating,
  activated,
  deactivating,
  deactivated
};

/// A connection in use.
struct ActiveConnection {
  std::string connection;  ///< object path of its settings
  std::string device;      ///< object path of its first device; may be empty
  ActiveState state = ActiveState::unknown;
};

/// NetworkManager's objects, by their object paths, as far as they have been told.
struct NetworkManagerObjects {
  std::map<std::string, ConnectionSettings> connections;
  std::vector<std::string> activePaths;  ///< in NetworkManager's order
  std::map<std::string, ActiveConnection> active;
  std::map<std::string, std::string> deviceNames;
};

/// The connections that those objects make, in NetworkManager's order: the highest autoconnect
/// priority first, then the latest use, then by uuid. One without a uuid has not been told yet or
/// is none; of several with one uuid the first stays.
std::vector<ManagedConnection> managedConnections(const NetworkManagerObjects& objects);

/// The name of a device's network interface: that which carries IP (`IpInterface`) where there is
/// one, since a modem's own (`Interface`) is a serial port.
std::string deviceName(const std::string& interface, const std::string& ipInterface);

}  // namespace vantile
