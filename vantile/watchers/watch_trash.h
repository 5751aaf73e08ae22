#pragma once

#include <cstdint>
#include <functional>
#include <memory>
#include <string>
#include <vector>

#include "vantile/foundation/api.h"
#include "vantile/foundation/delegate_slot.h"
#include "vantile/watchers/folder_watcher.h"
#include "vantile/watchers/path_list.h"

extern "C" {

/// Takes in one application (kind 1) that `trv_sub_app` found, for the shared `WatchTrash`. Null
/// and other kinds are ignored.
VANTILE_API void appcallback(const char* path, std::int32_t kind) noexcept;
/// Reports one application (kind 1) inside a folder that was moved to the Trash, through the shared
/// `WatchTrash`, and logs its name. Null and other kinds are ignored.
VANTILE_API void folder_app_callback(const char* path, std::int32_t kind) noexcept;

}  // extern "C"

namespace vantile {

/// Told of the Trash. Each operation may be left empty. On the main thread; the first size on the
/// thread that calls `startWatch`.
struct TrashWatchDelegate {
  /// An application that was not there before is in the Trash, or inside a folder that was moved
  /// there from the applications folder.
  std::function<void(const std::string& path)> trashAddedApp;
  /// What is in the Trash has that many bytes (`get_folder_size`): once when the watch begins, then
  /// at each change in the Trash as long as it differs from that first size.
  std::function<void(std::uint64_t bytes)> trashUsedSizeChanged;
};

/// Watches the user's Trash.
///
/// macOS: .Trash in the home. Linux: the home Trash of the desktop, Trash/files in $XDG_DATA_HOME,
/// made when it is missing.
class VANTILE_API WatchTrash final : public FolderWatcher {
 public:
  /// The instance that the process shares, made at the first call; never destroyed. Any thread.
  static std::shared_ptr<WatchTrash> singleton();
  /// A new watcher. The traversals report to the shared one alone, so this one finds nothing by
  /// itself.
  static std::shared_ptr<WatchTrash> init();

  ~WatchTrash() override;

  /// Begins to watch and reports the present size. `*stop` is the caller's: 1 ends a traversal; it
  /// must live until the next `startWatch`. Null never stops. Any thread.
  void startWatch(std::int32_t* stop);
  /// Ends all watching and writes 1 into the caller's flag. Nothing is reported
  /// after it, but for a call that another thread has begun. Any thread, also from inside a call
  /// of the delegate.
  void stopWatch();

  /// Takes in an application that was found in the Trash.
  void fillAppByPath(const std::string& path);
  /// Reports an application inside a folder that was moved to the Trash, and watches it. Paths
  /// without the extension of an application are ignored.
  void notifyMovedApp(const std::string& path);
  /// Reports the applications inside a folder that was moved to the Trash. Also before
  /// `startWatch`.
  void moveToTrash(const std::string& folder);

  /// The applications that the latest traversal found.
  std::vector<std::string> currApps() const;

  void WatchQueueReceivedNotificationForPath(FSWatchQueue& queue, const std::string& notification,
                                             const std::string& path);
  void WatchQueueRenameForPath(FSWatchQueue& queue, const std::string& newPath,
                               const std::string& oldPath);

  std::shared_ptr<TrashWatchDelegate> delegate() const { return _delegate.get(); }
  void setDelegate(std::shared_ptr<TrashWatchDelegate> delegate) {
    _delegate.set(std::move(delegate));
  }

 private:
  WatchTrash();
  bool isApplication(const std::string& path) const;
  void findApplications();
  std::uint64_t measure() const;
  void reportSize();

  DelegateSlot<TrashWatchDelegate> _delegate;
  const std::string _trashPath;

  // Under `work_`:
  std::uint64_t _prevUsedSize = 0;
  PathList _watchApps;  // known to be in the Trash
  PathList _currApps;   // found by the latest traversal
};

}  // namespace vantile
