#pragma once

#include <memory>
#include <optional>
#include <string>
#include <string_view>

#include "vantile/foundation/api.h"

namespace vantile {

/// Files and translations that the host application brings along. Any thread.
class HostResources {
 public:
  virtual ~HostResources() = default;

  /// The path of the resource `name` of that type, "SystemApplication" and "plist"; nothing when
  /// the host has none.
  /// macOS: in the folder that was set, else in the main bundle (CFBundleCopyResourceURL). Linux:
  /// the file name.type in the folder that was set, else in share/PROGRAM beside the folder of the
  /// host's executable.
  virtual std::optional<std::string> path(std::string_view name, std::string_view type) = 0;

  /// The host's translation of the text `key`, or the key itself where there is none.
  /// macOS: of the main bundle's table "Localizable" (CFBundleCopyLocalizedString), whichever
  /// folder was set. Linux: of the file LANGUAGE.lproj/Localizable.strings in the same folder as
  /// the resources, UTF-8, for the user's languages in their order (LANGUAGE, LC_ALL, LC_MESSAGES,
  /// LANG), such as "de_AT" and then "de".
  virtual std::string localizedString(std::string_view key) = 0;

  /// Sets the folder to look in; nothing goes back to the system's own.
  virtual void setFolder(std::optional<std::string> folder) = 0;
};

/// The resources of the process's host, shared by it.
VANTILE_API std::shared_ptr<HostResources> systemHostResources();

}  // namespace vantile
