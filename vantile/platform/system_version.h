#pragma once

#include <memory>
#include <optional>
#include <string>

#include "vantile/foundation/api.h"

namespace vantile {

/// The version that the library's questions for an OS release are answered by. Any thread.
class SystemVersion {
 public:
  virtual ~SystemVersion() = default;
  /// A dotted version, or nothing when the system does not tell. The questions ask which services
  /// the platform offers, in releases of macOS.
  /// macOS: sysctl kern.osproductversion. Linux: "10.9", the interface level that this platform
  /// layer provides; the release number of a kernel or distribution would say nothing here.
  virtual std::optional<std::string> version() = 0;
};

/// The running system's version, shared by the process.
VANTILE_API std::shared_ptr<SystemVersion> systemVersion();

}  // namespace vantile
