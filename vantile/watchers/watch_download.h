#pragma once

#include <cstdint>
#include <functional>
#include <map>
#include <memory>
#include <mutex>
#include <optional>
#include <string>
#include <vector>

#include "vantile/foundation/api.h"
#include "vantile/foundation/delegate_slot.h"
#include "vantile/foundation/value.h"
#include "vantile/watchers/folder_watcher.h"
#include "vantile/watchers/path_list.h"

extern "C" {

/// Takes in one unfinished download that `trv_sub_download` found, for the shared `WatchDownload`.
/// Null is ignored.
VANTILE_API void downloadcallback(const char* path) noexcept;

}  // extern "C"

namespace vantile {

struct BrowserEntry;

/// Told of finished downloads. The operation may be left empty.
struct DownloadWatchDelegate {
  /// A download finished and is at `path`; for Safari's it may be nil when nothing was found there.
  /// On the main thread, but for downloads that are found in Safari's history: those on a
  /// background thread.
  std::function<void(const std::optional<std::string>& path)> downloadFileCompleted;
};

/// Tells when a web browser finished a download. It learns from the browsers' preferences where
/// they save, watches those folders and the unfinished downloads in them, and goes by the browser's
/// own last step: it renames the unfinished item, or removes it.
///
/// An archive is reported two seconds after it was finished, as what the browser made of it by
/// then.
///
/// macOS: Safari, Chrome, Firefox and Opera, from their property lists in Library/Preferences.
/// Linux: Chrome or Chromium, Firefox and Opera, from their own files; see docs/watching.md.
class VANTILE_API WatchDownload : public FolderWatcher {
 public:
  /// The instance that the process shares, made at the first call; never destroyed. Any thread.
  static std::shared_ptr<WatchDownload> singleton();
  /// A new watcher. The traversals report to the shared one alone, so this one finds nothing by
  /// itself.
  static std::shared_ptr<WatchDownload> init();

  ~WatchDownload() override;

  /// Reads the browsers' preferences and begins to watch. A start after a stop watches the download
  /// folders again only if the preferences have named another one since, and then all of them but
  /// for the unfinished downloads that were known before: those belong to the watch that was ended.
  /// `*stop` is the caller's, 0 to begin with: 1 ends a traversal; it must live until the next
  /// `startWatch`. Null never stops. Any thread.
  void startWatch(std::int32_t* stop);
  /// Ends all watching and writes 1 into the caller's flag, which a further start wants to be 0
  /// again. Nothing is reported after it, but for a call that another thread has begun. Any thread,
  /// also from inside a call of the delegate.
  void stopWatch();

  /// Reads the browsers' preferences anew.
  void profileMonitor();
  /// Takes in an unfinished download that was found.
  void fillDownloadPath(const std::string& path);

  /// Reports the download that a browser finished at `path`. `browser` is its code, four
  /// characters: 'sabw' Safari, 'chbw' Chrome, 'fibw' Firefox, 'opbw' Opera, 'unbw' another.
  virtual void notifyDownloadCompletedWithBrowserType(const std::string& path,
                                                      std::uint32_t browser);
  /// Takes the date at which Safari's download history changed, and looks up there what could not
  /// be found before. Taken only where the date known so far is nil or at a lower address.
  void setModifyDate(std::shared_ptr<const Date> date);
  /// The newest of the numbered copies of Safari's item at `path`; nil when nothing is there.
  std::optional<std::string> getLatelyPathForSafariDl(const std::string& path) const;

  void WatchQueueReceivedNotificationForPath(FSWatchQueue& queue, const std::string& notification,
                                             const std::string& path);
  void WatchQueueRenameForPath(FSWatchQueue& queue, const std::string& newPath,
                               const std::string& oldPath);
  void WatchQueueRemoveToTrashForPath(FSWatchQueue& queue, const std::string& newPath,
                                      const std::string& oldPath);
  void WatchQueueDeletedForPath(FSWatchQueue& queue, const std::string& path);

  std::shared_ptr<DownloadWatchDelegate> delegate() const { return _delegate.get(); }
  void setDelegate(std::shared_ptr<DownloadWatchDelegate> delegate) {
    _delegate.set(std::move(delegate));
  }

 protected:
  WatchDownload();
  void listenToQueue();

 private:
  std::shared_ptr<WatchDownload> self() {
    return std::static_pointer_cast<WatchDownload>(shared_from_this());
  }
  std::optional<std::string> folderOf(const BrowserEntry& browser) const;
  PathList wantedFolders() const;
  bool isSafariFolder(const std::string& folder) const;
  void watchDownloadFolder(const std::string& folder);
  void leave(const std::string& folder);
  bool dropDownloadFolder(const std::string& folder);
  void findUnfinished(const std::string& folder);
  void watchFound();
  void followPreferences();
  void watchLandmarks();
  bool moveLandmarks();
  void watchReturnedFolders();
  std::string nearestExisting(std::string folder) const;
  bool dropUnfinished(const std::string& path);

  void report(const std::optional<std::string>& path);
  void reportSafari(const std::string& path);
  void reportLater(const std::string& archive);
  void checkArchive(const std::string& path);
  void lookUpHistory();

  DelegateSlot<DownloadWatchDelegate> _delegate;
  const std::string _preferencesFolderPath;
  const std::string safariFolder;
  const std::string safariDlsPlist;

  // Under `work_`:
  bool _downloadFolderChanged = false;
  PathList _watchDownload;       // unfinished downloads that are watched
  PathList _currDownload;        // those that a traversal found
  PathList _prevDownloadFolder;  // download folders that are watched
  std::map<std::string, std::string, std::less<>> _browserDownloadPaths;
  PathList landmarks_;  // watched for what may appear in them: preferences, a download folder
  PathList missing_;    // download folders that are not there

  std::mutex historyLock_;  // over the two below
  std::shared_ptr<const Date> modifyDate;
  std::vector<std::string> safariDlsCache;  // archives that wait for their final name
};

}  // namespace vantile
