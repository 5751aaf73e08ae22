#pragma once

#include <functional>
#include <mutex>
#include <vector>

#include "vantile/platform/host_resources.h"
#include "vantile/platform/linux/roots.h"

namespace vantile {

/// Files in share/PROGRAM beside the folder of the host's executable, or where the host said.
class LinuxHostResources final : public HostResources {
 public:
  using Languages = std::function<std::vector<std::string>()>;

  explicit LinuxHostResources(const LinuxRoots& roots = {}, Languages languages = usersLanguages);

  /// The user's languages, the best one first.
  static std::vector<std::string> usersLanguages();

  std::optional<std::string> path(std::string_view name, std::string_view type) override;
  std::string localizedString(std::string_view key) override;
  void setFolder(std::optional<std::string> folder) override;

 private:
  std::optional<std::string> folder();
  std::optional<std::string> folderOfExecutable() const;

  const std::string executable_;
  const Languages languages_;

  std::mutex mutex_;  // over all below
  std::optional<std::string> folder_;
};

}  // namespace vantile
