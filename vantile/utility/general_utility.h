#pragma once

#include <memory>
#include <optional>
#include <string>

#include "vantile/foundation/api.h"
#include "vantile/foundation/value.h"

namespace vantile {

/// Attributes of files, under the names that macOS gives them.
namespace keys {
inline constexpr Key NSFileType{"NSFileType"};  ///< text: "NSFileTypeRegular" and the like
inline constexpr Key NSFileSize{"NSFileSize"};  ///< unsigned 64-bit: bytes
inline constexpr Key NSFileModificationDate{"NSFileModificationDate"};  ///< date
inline constexpr Key NSFileCreationDate{"NSFileCreationDate"};  ///< date, where the system keeps it
inline constexpr Key NSFileReferenceCount{"NSFileReferenceCount"};      ///< unsigned 64-bit: names
inline constexpr Key NSFileSystemNumber{"NSFileSystemNumber"};          ///< unsigned 64-bit: device
inline constexpr Key NSFileSystemFileNumber{"NSFileSystemFileNumber"};  ///< unsigned 64-bit: inode
inline constexpr Key NSFilePosixPermissions{"NSFilePosixPermissions"};  ///< unsigned 32-bit
inline constexpr Key NSFileOwnerAccountID{"NSFileOwnerAccountID"};      ///< unsigned 32-bit
inline constexpr Key NSFileGroupOwnerAccountID{"NSFileGroupOwnerAccountID"};  ///< unsigned 32-bit
}  // namespace keys

/// The standard folders of the user and the machine, and the release of the running system.
/// Folders are absolute paths without a "/" at the end, the conventional ones also where no folder
/// stands there. Any thread; nothing throws but for want of memory.
class VANTILE_API GeneralUtility {
 public:
  GeneralUtility() = delete;

  /// Whether the running system is macOS 10.4, or 10.9, or later. These two and `osVersion` ask
  /// which services the platform offers: on Linux they are answered by the interface level that the
  /// platform layer provides, 10.9, not by a kernel's or a distribution's number. False when the
  /// version can't be told.
  static bool OSIsTigerOrLater();
  static bool OSIsMavericksOrLater();
  /// The version as dotted text, or nil when the system does not tell.
  /// macOS: sysctl kern.osproductversion. Linux: "10.9", as above.
  static std::optional<std::string> osVersion();

  /// macOS: the account's home. Linux: the same.
  static std::string userHomePath();
  /// macOS: Downloads in the home. Linux: the user's XDG_DOWNLOAD_DIR, else Downloads in the home.
  static std::string userDownlodsPath();
  /// macOS: Library in the home. Linux: $XDG_DATA_HOME, else .local/share in the home.
  static std::string userLibrary();
  /// macOS: Library/Preferences in the home. Linux: $XDG_CONFIG_HOME, else .config in the home.
  static std::string userPreferencesPath();
  /// macOS: /Applications. Linux: /usr/share/applications.
  static std::string applicationPath();
  /// macOS: .Trash in the home. Linux: Trash/files in `userLibrary`.
  static std::string userTrashPath();

  /// What the file system tells of the file at `path`, a symbolic link not followed; null when it
  /// can't be read.
  static std::shared_ptr<Dictionary> commonAttributesOfFile(const std::string& path);

  /// `text` as a C string, its bytes unchanged; null for nil. It stays valid for the calling
  /// thread's next fifteen calls and is never to be freed.
  static const char* convertStringToCstring(std::optional<std::string> text);
};

}  // namespace vantile
