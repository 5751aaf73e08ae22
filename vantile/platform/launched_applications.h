#pragma once

#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "vantile/foundation/api.h"

namespace vantile {

/// An application that runs. What the desktop does not tell of it is absent; a process identifier
/// that it does not tell is 0.
struct LaunchedApplication {
  std::optional<std::string> name, path;
  std::int32_t pid = 0;
  friend bool operator==(const LaunchedApplication&, const LaunchedApplication&) = default;
};

/// The applications that the user runs. Any thread.
class LaunchedApplications {
 public:
  virtual ~LaunchedApplications() = default;

  /// Those that run now, in the desktop's order, or nothing when it does not tell.
  /// macOS: NSWorkspace launchedApplications: "NSApplicationName", "NSApplicationPath",
  /// "NSApplicationProcessIdentifier".
  /// Linux: one for each application among this user's processes, known by its systemd scope, the
  /// environment that it was launched with, or an executable that is an installed desktop entry's:
  /// the pid of its first process, the entry's name in the user's language, and the entry's path.
  /// Throws a std::exception when the desktop refuses with one of its own.
  virtual std::optional<std::vector<LaunchedApplication>> list() = 0;

  /// Lets go of what is kept open for the next `list`, which may be long in coming.
  /// macOS: nothing. Linux: the descriptors of applications' processes.
  virtual void rest() {}
};

/// The user's desktop's, shared by the process.
VANTILE_API std::shared_ptr<LaunchedApplications> systemLaunchedApplications();

}  // namespace vantile
