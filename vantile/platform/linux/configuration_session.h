#pragma once

#include <functional>
#include <memory>
#include <mutex>
#include <optional>
#include <string_view>
#include <vector>

#include "vantile/foundation/run_loop.h"
#include "vantile/platform/linux/burst.h"
#include "vantile/platform/linux/configuration_store.h"
#include "vantile/platform/linux/descriptor_source.h"
#include "vantile/platform/linux/generic_netlink.h"
#include "vantile/platform/linux/network_dictionaries.h"
#include "vantile/platform/linux/network_lists.h"
#include "vantile/platform/linux/network_model.h"
#include "vantile/platform/linux/retry_pace.h"

namespace vantile {

/// What is known of the network, kept up to date on the loop of its maker's thread. That thread
/// alone changes what is known, and ends the session.
///
/// Links are taken from what the kernel tells of each. Addresses and routes are listed anew, once a
/// burst, after whatever may have changed them: their order counts, and the kernel lets IPv4 routes
/// go without a word when their link or address goes. IPv6's routes, whose table has to be read
/// whole, are listed where the kernel tells of a default route or a link changes that one leads
/// over. What the kernel refuses stays as it was and is asked for again at RetryPace's pace.
class LinuxConfigurationSession final : public ConfigurationSession {
 public:
  /// Null when a step fails.
  static std::unique_ptr<LinuxConfigurationSession> open(const ConfigurationSources& sources,
                                                         std::function<void()> changed);

  std::shared_ptr<const Dictionary> value(std::string_view key) override;
  bool tellsEveryChange() const override { return true; }

 private:
  /// What has to be asked for anew.
  struct Stale {
    bool links = false, addresses = false, routes = false, ipv6Routes = false, wireless = false;
    bool any() const { return links || addresses || routes || ipv6Routes || wireless; }
    static Stale everything() { return {true, true, true, true, true}; }
  };

  LinuxConfigurationSession(const ConfigurationSources& sources, std::function<void()> changed);

  bool follow();
  bool followAnew();
  bool drain();
  void takeIn(std::string_view datagram);
  void takeLink(bool came, std::string_view payload);
  void takeRoute(AddressFamily family);
  void settleSoon();
  void settleUnlessInABurst();
  void settle();
  void takeConnections();
  void refresh(bool linksToo);
  void tryAgain();
  bool listRoutes(AddressFamily family);
  template <class Part>
  bool replace(Part& part, std::optional<Part> now);

  const ConfigurationSources sources_;
  const std::function<void()> changed_;
  NetworkLists lists_;
  const GenericNetlink generic_;
  std::mutex knownLock_;  // over changes of the next two, and over the table
  NetworkModel network_;
  std::vector<ManagedConnection> connections_;
  Stale stale_ = Stale::everything();
  bool isNews_ = false;   // since `changed` was called last
  bool isHeard_ = false;  // from the kernel, since the burst was looked at last
  bool addressWent_ = false;
  Burst burst_;
  RetryPace pace_;
  std::optional<ConfigurationTable> table_;  // until something changes
  std::unique_ptr<ResolverFiles> resolver_;
  std::unique_ptr<NetworkManagerClient> manager_;
  std::unique_ptr<NetlinkChannel> events_;
  std::unique_ptr<DescriptorSource> source_;
  Timer settling_, secondLook_, retry_;
};

}  // namespace vantile
