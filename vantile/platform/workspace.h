#pragma once

#include <memory>
#include <string>

#include "vantile/foundation/api.h"

namespace vantile {

/// The desktop, as far as it wants to be told of files. Any thread.
class Workspace {
 public:
  virtual ~Workspace() = default;

  /// Tells the desktop that the file or folder at `path` changed.
  /// macOS: NSWorkspace noteFileSystemChanged:. Linux: nothing, its file managers watch for
  /// themselves. Throws a std::exception when the desktop refuses with one of its own.
  virtual void noteFileSystemChanged(const std::string& path) = 0;

  /// Posts a notification to the desktop's own observers, its user info `path` under "path".
  /// macOS: NSWorkspace notificationCenter postNotificationName:object:userInfo:, the object an
  /// NSValue that holds the pointer. Linux: nothing, there is no such centre.
  virtual void post(const std::string& name, const void* object, const std::string& path) = 0;
};

/// The user's desktop, shared by the process.
VANTILE_API std::shared_ptr<Workspace> systemWorkspace();

}  // namespace vantile
