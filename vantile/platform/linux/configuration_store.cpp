#include "vantile/platform/linux/configuration_store.h"

#include <system_error>

#include "vantile/platform/linux/configuration_session.h"

namespace vantile {

std::unique_ptr<ConfigurationSession> LinuxConfigurationStore::open(std::string_view,
                                                                    const ConfigurationKeys&,
                                                                    std::function<void()> changed) {
  try {
    return LinuxConfigurationSession::open(sources_, std::move(changed));
  } catch (const std::system_error&) {
    return nullptr;  // the loop takes no descriptor
  }
}

std::shared_ptr<ConfigurationStore> systemConfigurationStore() {
  static auto& store =
      *new std::shared_ptr<ConfigurationStore>(std::make_shared<LinuxConfigurationStore>());
  return store;
}

}  // namespace vantile
