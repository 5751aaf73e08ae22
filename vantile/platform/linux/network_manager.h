#pragma once

#include <functional>
#include <memory>
#include <string>
#include <vector>

namespace vantile {

/// A connection that NetworkManager keeps.
struct ManagedConnection {
  std::string uuid, name;  ///< its name as the user gave it
  std::string device;      ///< the interface that it is active on, or is bound to; may be empty
  std::string type;        ///< NetworkManager's, "802-3-ethernet", "802-11-wireless", "ppp"
  bool active = false;
  friend bool operator==(const ManagedConnection&, const ManagedConnection&) = default;
};

/// NetworkManager's connections, kept up to date from the system bus without ever waiting for it.
/// Loop thread of its maker.
class NetworkManagerClient {
 public:
  virtual ~NetworkManagerClient() = default;
  /// In NetworkManager's order (autoconnect priority, then the latest use first); empty while it is
  /// not on the bus or has not answered yet.
  virtual const std::vector<ManagedConnection>& connections() const = 0;
};

/// Begins to follow the connections on the calling thread's loop; `changed` is called there after
/// each burst of changes. Null where there is no bus to ask. `address` is the bus's, empty for the
/// system bus; tests name a private one.
std::unique_ptr<NetworkManagerClient> followNetworkManager(const std::string& address,
                                                           std::function<void()> changed);

}  // namespace vantile
