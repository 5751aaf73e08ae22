#pragma once

#include <string>
#include <vector>

#include "vantile/platform/linux/network_manager.h"
#include "vantile/platform/linux/network_model.h"

namespace vantile {

/// A configured connection, as the store of macOS has them.
struct NetworkService {
  std::string id;
  std::string userDefinedName;  ///< empty without one
  std::string device;           ///< never empty
  std::string hardware;         ///< its kind in words, "Ethernet"; empty where it is not known
  std::string subType;          ///< of a PPP link, "PPPoE"; empty where it is not known
  const NetworkLink* link = nullptr;  ///< the device's, while there is one
  bool showsState = false;            ///< whether the link's state is shown for it
};

/// The services in their order. Valid as long as the network is.
std::vector<NetworkService> networkServices(const NetworkModel& network,
                                            const std::vector<ManagedConnection>& connections);

}  // namespace vantile
