#pragma once

#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "vantile/foundation/api.h"

namespace vantile {

/// Where a browser keeps where it saves downloads, in macOS's terms.
struct BrowserPreference {
  std::string path;      ///< of its property list, in the user's preferences folder
  std::string_view key;  ///< in that list
};

/// What a browser's preferences say.
struct DownloadSetting {
  /// Where it saves downloads, as it is stored: it may begin with "~/". Nothing when the browser
  /// leaves it to the system.
  std::optional<std::string> folder;
};

/// The browsers that the system knows, as far as they save downloads. Any thread.
class Browsers {
 public:
  virtual ~Browsers() = default;

  /// What a browser's preferences say now, or nothing when it has none.
  /// macOS: the property list at the path.
  /// Linux: by the list's name. com.google.Chrome.plist: Google Chrome's or Chromium's Preferences,
  /// whichever was changed last, download.default_directory. org.mozilla.firefox.plist: prefs.js of
  /// the profile that installs.ini names, browser.download.folderList and .dir.
  /// com.operasoftware.Opera.plist: Opera's Preferences. com.apple.Safari.plist: none. A file is
  /// read again only when its inode, size or time changed; one caught half-written says what it
  /// said before.
  virtual std::optional<DownloadSetting> setting(const BrowserPreference& preference) = 0;

  /// The folders whose changes may change what `setting` says, besides the user's preferences
  /// folder, whether they exist or not. It may differ from call to call.
  /// macOS: none. Linux: those that hold the files above or lead to them.
  virtual std::vector<std::string> preferenceFolders() = 0;

  /// Whether Safari keeps a folder with its download history. macOS: yes. Linux: no.
  virtual bool hasSafariFolder() = 0;

  /// Whether a download may be renamed while it goes on, and has an unfinished one's extension
  /// under its new name, too. macOS: no. Linux: yes, Firefox renames its item once before the last
  /// time.
  virtual bool renamesUnfinished() = 0;
};

/// The user's browsers, shared by the process.
VANTILE_API std::shared_ptr<Browsers> systemBrowsers();

}  // namespace vantile
