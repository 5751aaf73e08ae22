#pragma once

#include <memory>
#include <string>

#include "vantile/foundation/api.h"

namespace vantile {

/// Where a platform keeps what. Each answer is an absolute path without a "/" at its end, the
/// conventional one also where no folder stands there. Any thread.
class StandardFolders {
 public:
  virtual ~StandardFolders() = default;

  /// The user's home. Both: the account's, from getpwuid_r; an account without one: $HOME, then
  /// "/".
  virtual std::string home() = 0;
  /// Where downloads go. macOS: Downloads in the home. Linux: XDG_DOWNLOAD_DIR of the user's
  /// user-dirs.dirs, else Downloads in the home.
  virtual std::string downloads() = 0;
  /// What applications keep for the user. macOS: Library in the home. Linux: $XDG_DATA_HOME, else
  /// .local/share in the home.
  virtual std::string library() = 0;
  /// Settings of the user's applications. macOS: Library/Preferences in the home. Linux:
  /// $XDG_CONFIG_HOME, else .config in the home.
  virtual std::string preferences() = 0;
  /// The machine's applications. macOS: /Applications. Linux: /usr/share/applications.
  virtual std::string applications() = 0;
  /// What the user threw away. macOS: .Trash in the home. Linux: Trash/files in `library`.
  virtual std::string trash() = 0;
  /// Makes the Trash where it is missing. macOS: nothing to do, the system makes it. Linux: the
  /// folder and those that lead to it, for the user alone (mode 0700).
  virtual void makeTrash() = 0;
};

/// The user's and the machine's folders, shared by the process.
VANTILE_API std::shared_ptr<StandardFolders> systemStandardFolders();

}  // namespace vantile
