#pragma once

#include <functional>
#include <memory>
#include <optional>
#include <string_view>

#include "vantile/foundation/run_loop.h"
#include "vantile/platform/linux/configuration_store.h"
#include "vantile/platform/linux/descriptor_source.h"
#include "vantile/platform/linux/generic_netlink.h"
#include "vantile/platform/linux/netlink_lister.h"
#include "vantile/platform/linux/network_dictionaries.h"
#include "vantile/platform/linux/network_model.h"

namespace vantile {

/// What is known of the network, kept up to date on the loop of its maker's thread.
///
/// Links are taken from what the kernel tells of each. Addresses and routes are listed anew after
/// whatever may have changed them: their order counts, and the kernel lets IPv4 routes go without a
/// word when their link or address goes.
class LinuxConfigurationSession final : public ConfigurationSession {
 public:
  /// Null when a step fails.
  static std::unique_ptr<LinuxConfigurationSession> open(const ConfigurationSources& sources,
                                                         std::function<void()> changed);

  std::shared_ptr<const Dictionary> value(std::string_view key) override;

 private:
  /// What has to be asked for anew.
  struct Stale {
    bool links = false, addresses = false, routes = false, wireless = false, servers = false;
    bool any() const { return links || addresses || routes || wireless || servers; }
    static Stale everything() { return {true, true, true, true, true}; }
  };

  LinuxConfigurationSession(const ConfigurationSources& sources, std::function<void()> changed);

  bool follow();
  bool followAnew();
  bool drain();
  void takeIn(std::string_view datagram);
  void takeLink(bool came, std::string_view payload);
  void settleSoon();
  void settle();
  bool refresh();
  bool listLinks();
  bool listAddresses();
  bool listRoutes();
  template <class Part>
  void replace(Part& part, Part now);

  const ConfigurationSources sources_;
  const std::function<void()> changed_;
  NetlinkLister lister_;
  const GenericNetlink generic_;
  NetworkModel network_;
  Stale stale_ = Stale::everything();
  bool isNews_ = false;  // since `changed` was called last
  bool addressWent_ = false;
  std::optional<TimerSchedule::Moment> burstBegan_;
  std::optional<ConfigurationTable> table_;  // until something changes
  std::unique_ptr<ResolverFiles> resolver_;
  std::unique_ptr<NetworkManagerClient> manager_;
  std::unique_ptr<NetlinkChannel> events_;
  std::unique_ptr<DescriptorSource> source_;
  Timer settling_;
};

}  // namespace vantile
