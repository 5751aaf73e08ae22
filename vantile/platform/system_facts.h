#pragma once

#include <cstdint>
#include <memory>
#include <optional>
#include <string>

#include "vantile/foundation/api.h"

namespace vantile {

/// What the machine, its user and its system are called, and how much memory it has. Each is
/// nothing where the system does not tell. Texts are as the system has them. Any thread.
class SystemFacts {
 public:
  virtual ~SystemFacts() = default;

  /// What the user calls the computer. macOS: SCDynamicStoreCopyComputerName.
  /// Linux: PRETTY_HOSTNAME of /etc/machine-info, else the host name.
  virtual std::optional<std::string> computerName() = 0;

  /// macOS: NSHost's localizedName. Linux: the kernel's host name.
  virtual std::optional<std::string> hostName() = 0;

  /// The login name. macOS: NSUserName. Linux: of the account of the real user id.
  virtual std::optional<std::string> userName() = 0;

  /// macOS: NSFullUserName. Linux: the first field of that account's GECOS text, else the login
  /// name.
  virtual std::optional<std::string> fullUserName() = 0;

  /// macOS: NSProcessInfo's operatingSystem, a constant for the kind of system. Linux has none.
  virtual std::optional<std::int64_t> operatingSystem() = 0;

  /// Bytes. macOS: NSProcessInfo's physicalMemory. Linux: totalram of sysinfo(2).
  virtual std::optional<std::uint64_t> physicalMemory() = 0;

  /// The system's own name and version in one text. macOS: nothing, since there the version
  /// follows from the kernel's release. Linux: what os-release tells of the distribution, else the
  /// kernel's name and release.
  virtual std::optional<std::string> versionText() = 0;
};

/// The running system's facts, shared by the process.
VANTILE_API std::shared_ptr<SystemFacts> systemFacts();

}  // namespace vantile
