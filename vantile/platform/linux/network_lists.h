#pragma once

#include <optional>
#include <utility>
#include <vector>

#include "vantile/platform/linux/netlink_lister.h"
#include "vantile/platform/linux/network_model.h"

namespace vantile {

/// The kernel's lists of what a `NetworkModel` keeps, asked for through one channel. Each is
/// nothing where the kernel does not give it. What changes while it is listed is told as well.
class NetworkLists {
 public:
  explicit NetworkLists(OpenNetlink open) : lister_(NETLINK_ROUTE, std::move(open)) {}

  std::optional<std::vector<NetworkLink>> links();
  std::optional<std::vector<AddressMessage>> addresses();
  /// The default routes of the main table. IPv4's stand at the beginning of their table, which the
  /// kernel walks by destination, and are read no further. IPv6's stand at its end, and no request
  /// names them: all of it is read.
  std::optional<std::vector<DefaultRoute>> defaultRoutes(AddressFamily family);

 private:
  NetlinkLister lister_;
};

}  // namespace vantile
