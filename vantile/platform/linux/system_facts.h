#pragma once

#include <functional>
#include <string>

#include "vantile/platform/linux/roots.h"
#include "vantile/platform/posix/account.h"
#include "vantile/platform/system_facts.h"

namespace vantile {

/// Where a distribution tells of itself and of the machine's name.
struct DistributionFolders {
  std::string settings = "/etc";
  std::string vendor = "/usr/lib";  // what holds where the settings say nothing
};

/// Facts from the kernel's own texts, the distribution's files and the accounts, read anew at each
/// question.
class LinuxSystemFacts final : public SystemFacts {
 public:
  using FindAccount = std::function<std::optional<Account>()>;

  explicit LinuxSystemFacts(const LinuxRoots& roots = {}, DistributionFolders folders = {},
                            FindAccount findAccount = ownAccount);

  std::optional<std::string> computerName() override;
  std::optional<std::string> hostName() override;
  std::optional<std::string> userName() override;
  std::optional<std::string> fullUserName() override;
  std::optional<std::int64_t> operatingSystem() override { return std::nullopt; }
  std::optional<std::uint64_t> physicalMemory() override;
  std::optional<std::string> versionText() override;

 private:
  const std::string kernel_;
  const DistributionFolders folders_;
  const FindAccount findAccount_;
};

}  // namespace vantile
