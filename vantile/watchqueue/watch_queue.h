#pragma once

#include <atomic>
#include <cstdint>
#include <functional>
#include <memory>
#include <mutex>
#include <optional>
#include <string>
#include <string_view>
#include <unordered_map>

#include "vantile/foundation/api.h"
#include "vantile/foundation/delegate_slot.h"
#include "vantile/watchqueue/path_entry.h"

extern "C" {

/// The names of what can happen to a watched path, and of the notifications that tell of it. Behind
/// each the bit that subscribes to it. An event that carries several is told in this order.
extern VANTILE_API const char* const WatchQueueRenameNotification;            // 0x20
extern VANTILE_API const char* const WatchQueueWriteNotification;             // 0x02
extern VANTILE_API const char* const WatchQueueDeleteNotification;            // 0x01
extern VANTILE_API const char* const WatchQueueAttributeChangeNotification;   // 0x08
extern VANTILE_API const char* const WatchQueueSizeIncreaseNotification;      // 0x04
extern VANTILE_API const char* const WatchQueueLinkCountChangeNotification;   // 0x10
extern VANTILE_API const char* const WatchQueueAccessRevocationNotification;  // 0x40

}  // extern "C"

namespace vantile {

class FSWatchQueue;
struct FileEvent;
struct WatchQueuePorts;

/// Told of what happened to the watched paths. Each operation may be left empty. All calls come on
/// the main thread, one at a time; paths are the callee's to read during the call. Where an item
/// went, another may stand under the same path by then: a delegate that wants to watch that one
/// removes the path and adds it again, also from inside the call.
struct FSWatchQueueDelegate {
  /// Any change but a deletion, by its name from the list above; of renames only those to a place
  /// that was not found.
  std::function<void(FSWatchQueue& queue, const std::string& notification, const std::string& path)>
      WatchQueueReceivedNotificationForPath = {};
  /// A watched item was renamed within its folder. The watch follows it to `newPath`.
  std::function<void(FSWatchQueue& queue, const std::string& newPath, const std::string& oldPath)>
      WatchQueueRenameForPath = {};
  /// A watched item was moved into the user's Trash itself. It stays watched under `oldPath`.
  std::function<void(FSWatchQueue& queue, const std::string& newPath, const std::string& oldPath)>
      WatchQueueRemoveToTrashForPath = {};
  /// A watched item was deleted. It is watched no longer.
  std::function<void(FSWatchQueue& queue, const std::string& path)> WatchQueueDeletedForPath = {};
};

/// Watches files and folders, each by itself, and tells what happened to them: to its delegate, and
/// as notifications on `NotificationCenter::workspace()` whose object is the queue and whose user
/// info holds the watched path under "path". A watch follows its item, whatever it is called.
///
/// A folder is written to when an entry of it comes, goes or is renamed. Events wait for the main
/// run loop to be served; those of one item that come meanwhile are merged on Linux.
///
/// macOS: kqueue. Linux: inotify, one instance a queue. A folder that a process still stands in or
/// holds open when it is removed is told as deleted when that process lets go of it. Of a file with
/// several names, the loss of one is a change of its link count.
///
/// Any thread. The last reference may go at any time, also inside a delegate's call.
class VANTILE_API FSWatchQueue final : public std::enable_shared_from_this<FSWatchQueue> {
 public:
  /// A queue that watches nothing yet; null when the system has no event queue left, which is
  /// logged with the limit that was hit.
  static std::shared_ptr<FSWatchQueue> init();

  ~FSWatchQueue();
  FSWatchQueue(const FSWatchQueue&) = delete;
  FSWatchQueue& operator=(const FSWatchQueue&) = delete;

  /// Watches a path for every change. A path that is watched stays as it is; one that can't be
  /// opened is logged. Does nothing for nil.
  void addPath(const std::optional<std::string>& path);
  /// Watches a path for the changes whose bits are set in `flags`; as `addPath` otherwise.
  void addPathNotifyingAbout(const std::optional<std::string>& path, std::uint32_t flags);
  /// Watches a path for those changes besides the ones it is watched for already, and gives its
  /// entry; null, without a line in the log, when it can't be opened or watched. On Linux an item
  /// that has left its path can't be watched for more: it stays watched as it was.
  std::shared_ptr<WatchQueuePathEntry> addPathToQueueNotifyingAbout(const std::string& path,
                                                                    std::uint32_t flags);

  /// Ends the watch of a path. An event that was on its way to the main thread still arrives.
  void removePath(const std::optional<std::string>& path);
  /// Ends all watches.
  void removeAllPaths();
  std::uint32_t numberOfWatchedPaths() const;
  bool isWatched(const std::string& path) const;

  std::shared_ptr<FSWatchQueueDelegate> delegate() const { return _delegate.get(); }
  void setDelegate(std::shared_ptr<FSWatchQueueDelegate> delegate) {
    _delegate.set(std::move(delegate));
  }

  /// Whether notifications are posted without a delegate, too. No at first.
  bool alwaysPostNotifications() const { return _alwaysPostNotifications; }
  void setAlwaysPostNotifications(bool always) { _alwaysPostNotifications = always; }

  /// The path of the entry in the folder, or below it where `recursive`, that is the very file that
  /// an entry's `watchedFD` or an open descriptor stands for; the first one where several are. An
  /// entry that is a symbolic link counts as what it leads to.
  std::optional<std::string> filePathForFileDescrWithSearchFolderWithRecursive(
      std::int32_t descriptor, const std::string& folder, bool recursive) const;

 private:
  using Entry = std::shared_ptr<WatchQueuePathEntry>;
  struct Kernel;

  FSWatchQueue(const WatchQueuePorts& ports, std::shared_ptr<Kernel> kernel);
  Entry put(const std::string& path, std::uint32_t flags, int& error);
  void add(const std::optional<std::string>& path, std::uint32_t flags, std::string_view message);
  void take(const std::string& path, const WatchQueuePathEntry* entry);
  void startWatcherThread();
  static void watcherThread(Kernel& kernel, const std::weak_ptr<FSWatchQueue>& queue);
  static bool handOver(const FileEvent& event, Kernel& kernel,
                       const std::weak_ptr<FSWatchQueue>& queue);

  void handle(const Entry& entry, const std::string& path, std::uint32_t changes);
  void handleRename(const Entry& entry, const std::string& path);
  void follow(const Entry& entry, const std::string& newPath, const std::string& oldPath);
  void handleDeletion(const Entry& entry, const std::string& path);
  void post(const char* name, const std::string& path);

  const std::unique_ptr<const WatchQueuePorts> ports_;
  const std::shared_ptr<Kernel> kernel_;
  const std::string _trashPath;
  DelegateSlot<FSWatchQueueDelegate> _delegate;
  std::atomic<bool> _alwaysPostNotifications = false;

  mutable std::recursive_mutex lock_;  // over the table
  std::unordered_map<std::string, Entry> _watchedPathEntries;
  std::uint64_t generation_ = 0;  // of the entries: how often all paths were removed before
};

}  // namespace vantile
