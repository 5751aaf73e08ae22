#include "vantile/process/process_info.h"

namespace vantile {

std::shared_ptr<ProcessInfo> ProcessInfo::initWithPidWithAppNameWithAppPath(
    std::int32_t pid, std::optional<std::string> appName, std::optional<std::string> appPath) {
  std::shared_ptr<ProcessInfo> info(new ProcessInfo);
  info->setPid(pid);
  info->setAppName(std::move(appName));
  info->setAppPath(std::move(appPath));
  return info;
}

}  // namespace vantile
