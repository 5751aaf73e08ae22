#pragma once

#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <unordered_set>
#include <vector>

#include "vantile/foundation/api.h"
#include "vantile/foundation/delegate_slot.h"
#include "vantile/watchers/folder_watcher.h"
#include "vantile/watchers/path_list.h"

extern "C" {

/// Takes in one item that `trv_all_app` found, for the shared `WatchApplication`: of kind 1 an
/// application, of any other a folder. Null is ignored.
VANTILE_API void applicationcallback(const char* path, std::int32_t kind) noexcept;

}  // extern "C"

namespace vantile {

/// Told of applications that come and go. Each operation may be left empty. On the main thread.
struct ApplicationsWatchDelegate {
  /// An application that was not there before is in the applications folder.
  std::function<void(const std::string& path)> appAdded;
  /// A watched item was moved to the Trash, and is at `path` there. What is watched is the
  /// applications folder, and for writes alone: an application that goes from there to the Trash
  /// is told by `WatchTrash`.
  std::function<void(const std::string& path)> movedToTrash;
};

/// Sets the folder in which the library looks for resources of the host, before it asks for the
/// first one: now for SystemApplication.plist, when the first `WatchApplication` is made. Nothing
/// goes back to the system's own: on macOS the main bundle, on Linux share/PROGRAM beside the
/// folder of the host's executable. Any thread.
VANTILE_API void setHostResourceFolder(std::optional<std::string> folder);

/// Tells when an application is added to the applications folder. What is there when the watch
/// begins counts as known; applications of the system itself, which the host lists in its resource
/// "SystemApplication" of type "plist" (a dictionary whose values are their names), are never told.
///
/// macOS: /Applications and its bundles. Linux: /usr/share/applications and its desktop entries.
class VANTILE_API WatchApplication final : public FolderWatcher {
 public:
  /// The instance that the process shares, made at the first call; never destroyed. Any thread.
  static std::shared_ptr<WatchApplication> singleton();
  /// A new watcher. The traversals report to the shared one alone, so this one finds nothing by
  /// itself.
  static std::shared_ptr<WatchApplication> init();

  ~WatchApplication() override;

  /// Begins to watch. `*stop` is the caller's, 0 to begin with: 1 ends a traversal; it must live
  /// until the next `startWatch`. Null never stops. Any thread.
  void startWatch(std::int32_t* stop);
  /// Ends the watch, forgets what was known and writes 1 into the caller's flag. Nothing is
  /// reported after it, but for a call that another thread has begun. Any thread, also from inside
  /// a call of the delegate.
  void stopWatch();

  /// Takes in an application that was found, unless it is one of the system's.
  void fillAppByPath(const std::string& path);
  /// Takes in a folder that was found.
  void fillFolderByPath(const std::string& path);

  void WatchQueueReceivedNotificationForPath(FSWatchQueue& queue, const std::string& notification,
                                             const std::string& path);
  void WatchQueueRenameForPath(FSWatchQueue& queue, const std::string& newPath,
                               const std::string& oldPath);
  void WatchQueueRemoveToTrashForPath(FSWatchQueue& queue, const std::string& newPath,
                                      const std::string& oldPath);
  void WatchQueueDeletedForPath(FSWatchQueue& queue, const std::string& path);

  std::shared_ptr<ApplicationsWatchDelegate> delegate() const { return _delegate.get(); }
  void setDelegate(std::shared_ptr<ApplicationsWatchDelegate> delegate) {
    _delegate.set(std::move(delegate));
  }

 private:
  WatchApplication();
  bool isApplication(const std::string& path) const;
  PathList& listFor(const std::string& path);
  bool isSystemApplication(const std::string& path) const;
  void findApplications(const std::string& folder);
  std::vector<std::string> takeApplications(const std::string& folder);
  void takeFolders(const std::string& folder);

  DelegateSlot<ApplicationsWatchDelegate> _delegate;
  const std::unordered_set<std::string> _sysAppDic;  // the values of the host's list, in lower case
  const std::string _appRootPath;

  // Under `work_`:
  PathList _watchApps, _watchFolders;  // known to be there
  PathList _currApps, _currFolders;    // found by the latest traversal
};

}  // namespace vantile
