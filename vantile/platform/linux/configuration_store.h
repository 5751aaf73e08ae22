#pragma once

#include <functional>
#include <memory>
#include <string_view>
#include <utility>

#include "vantile/platform/configuration_store.h"
#include "vantile/platform/linux/netlink_channel.h"
#include "vantile/platform/linux/network_manager.h"
#include "vantile/platform/linux/resolver_files.h"

namespace vantile {

/// Where a session learns what it knows. Tests name others.
struct ConfigurationSources {
  OpenNetlink open = [](int bus, unsigned groups) { return openNetlink(bus, groups); };
  ResolverPaths resolver;
  std::function<std::unique_ptr<NetworkManagerClient>(std::function<void()> changed)> follow =
      [](std::function<void()> changed) { return followNetworkManager("", std::move(changed)); };
};

/// The store of macOS, made up from what Linux tells.
class LinuxConfigurationStore final : public ConfigurationStore {
 public:
  explicit LinuxConfigurationStore(ConfigurationSources sources = {})
      : sources_(std::move(sources)) {}

  std::unique_ptr<ConfigurationSession> open(std::string_view name, const ConfigurationKeys& keys,
                                             std::function<void()> changed) override;

 private:
  const ConfigurationSources sources_;
};

}  // namespace vantile
