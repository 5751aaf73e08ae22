#pragma once

#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <string_view>

#include "vantile/foundation/api.h"
#include "vantile/platform/folder_reader.h"

namespace vantile {

/// What an application looks like in a folder. Any thread.
class Applications {
 public:
  /// Gives the beginning of the entry's contents when asked, or nothing.
  using Contents = std::function<std::optional<std::string>()>;

  virtual ~Applications() = default;

  /// Whether the folder entry `name` is an application.
  /// macOS: a folder whose extension is "app".
  /// Linux: that; a regular file with the extension "desktop" whose entry is neither hidden nor
  /// marked as not to be displayed nor of another type than Application; a regular file with the
  /// extension "AppImage", in whatever case.
  virtual bool isApplication(std::string_view name, FileKind kind, const Contents& contents) = 0;

  /// Whether that is the extension of applications, without its ".".
  /// macOS: "app". Linux: that, "desktop", and "AppImage" in whatever case.
  virtual bool isApplicationExtension(std::string_view extension) = 0;

  /// The name of the application or folder at `path` that users see, its extension with it; nothing
  /// when there is none to be told.
  /// macOS: kCFURLLocalizedNameKey, with or without the extension, as the user set it. Linux: of a
  /// desktop entry its name in the user's language and ".desktop"; of all else the last path
  /// component.
  virtual std::optional<std::string> displayName(const std::string& path) = 0;
};

/// The platform's kinds of application, shared by the process.
VANTILE_API std::shared_ptr<Applications> systemApplications();

}  // namespace vantile
