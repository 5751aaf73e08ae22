// What a watch queue does with an event: the watcher thread that waits for it, and the main thread
// that finds out what it means.

#include <array>
#include <chrono>
#include <exception>
#include <string>
#include <utility>

#include "vantile/foundation/log.h"
#include "vantile/foundation/notification_center.h"
#include "vantile/foundation/queue.h"
#include "vantile/utility/paths.h"
#include "vantile/watchqueue/watch_queue.h"
#include "vantile/watchqueue/watch_queue_kernel.h"
#include "vantile/watchqueue/watch_queue_ports.h"

const char* const WatchQueueRenameNotification = "WatchQueueFileRenamedNotification";
const char* const WatchQueueWriteNotification = "WatchQueueFileWrittenToNotification";
const char* const WatchQueueDeleteNotification = "WatchQueueFileDeletedNotification";
const char* const WatchQueueAttributeChangeNotification =
    "WatchQueueFileAttributesChangedNotification";
const char* const WatchQueueSizeIncreaseNotification = "WatchQueueFileSizeIncreasedNotification";
const char* const WatchQueueLinkCountChangeNotification = "WatchQueueLinkCountChangedNotification";
const char* const WatchQueueAccessRevocationNotification = "WatchQueueAccessWasRevokedNotification";

namespace vantile {
namespace {

constexpr auto waitAtMost = std::chrono::seconds(1);

struct NamedChange {
  FileChange bit;
  const char* name;
};

// In the order in which an event's changes are told.
const std::array<NamedChange, 7> namedChanges = {{
    {fileRenamed, WatchQueueRenameNotification},
    {fileWritten, WatchQueueWriteNotification},
    {fileDeleted, WatchQueueDeleteNotification},
    {attributesChanged, WatchQueueAttributeChangeNotification},
    {fileGrew, WatchQueueSizeIncreaseNotification},
    {linkCountChanged, WatchQueueLinkCountChangeNotification},
    {accessRevoked, WatchQueueAccessRevocationNotification},
}};

}  // namespace

void FSWatchQueue::startWatcherThread() {
  if (kernel_->_keepWatcherThreadRunning.exchange(true)) return;
  const bool started = ports_->threads->detach(
      "vantile-watch",
      [kernel = kernel_, queue = weak_from_this()] { watcherThread(*kernel, queue); });
  if (started) return;
  kernel_->_keepWatcherThreadRunning = false;  // the next path tries again
  logLine("WatchQueue: no thread could be started to wait for file events");
}

/// Waits for events and hands them to the main thread, one at a time. One that is not handed over
/// is taken up here, or no other of its item's would come.
void FSWatchQueue::watcherThread(Kernel& kernel, const std::weak_ptr<FSWatchQueue>& queue) {
  while (kernel._keepWatcherThreadRunning) {
    std::optional<FileEvent> event;
    try {
      event = kernel._coreQueueFD->wait(waitAtMost);
      if (event && handOver(*event, kernel, queue)) continue;
    } catch (const std::exception& error) {
      logLine(std::string("Error in WatchQueue watcherThread: ") + error.what());
    }
    if (event) kernel._coreQueueFD->delivered(event->tag);
  }
  if (const int error = kernel._coreQueueFD->close(); error != 0)
    logLine("WatchQueue watcherThread: Couldn't close main kqueue (" + std::to_string(error) + ")");
}

bool FSWatchQueue::handOver(const FileEvent& event, Kernel& kernel,
                            const std::weak_ptr<FSWatchQueue>& queue) {
  if (event.changes == 0) return false;
  auto entry = kernel.tags->find(event.tag);
  if (!entry || entry->keepBack(event.changes)) return false;
  auto path = entry->path();
  kernel.workspace->noteFileSystemChanged(path);
  auto self = queue.lock();
  if (!self) return false;
  Queue::main().async([self = std::move(self), entry = std::move(entry), path = std::move(path),
                       changes = event.changes] { self->handle(entry, path, changes); });
  return true;
}

/// Tells of an event, main thread. It is told to its end, whoever removes the path meanwhile.
void FSWatchQueue::handle(const Entry& entry, const std::string& path, std::uint32_t changes) {
  kernel_->_coreQueueFD->delivered(entry->tag_);
  for (const auto& [bit, name] : namedChanges) {
    if (!(changes & bit)) continue;
    if (bit == fileRenamed) {
      handleRename(entry, path);
    } else if (bit == fileDeleted) {
      handleDeletion(entry, path);
    } else {
      tell(delegate(), &FSWatchQueueDelegate::WatchQueueReceivedNotificationForPath, *this,
           std::string(name), path);
    }
    if (delegate() || alwaysPostNotifications()) post(name, path);
  }
}

/// Finds out what a rename was: a move to the Trash, a new name in the same folder, or neither.
void FSWatchQueue::handleRename(const Entry& entry, const std::string& path) {
  const auto watched = entry->watchedFD();
  if (const auto inTrash =
          filePathForFileDescrWithSearchFolderWithRecursive(watched, _trashPath, false)) {
    ports_->events->standsAt(watched, *inTrash);
    tell(delegate(), &FSWatchQueueDelegate::WatchQueueRemoveToTrashForPath, *this, *inTrash, path);
    return;
  }
  if (const auto renamed = filePathForFileDescrWithSearchFolderWithRecursive(
          watched, withoutLastPathComponent(path), false)) {
    tell(delegate(), &FSWatchQueueDelegate::WatchQueueRenameForPath, *this, *renamed, path);
    follow(entry, *renamed, path);
    return;
  }
  tell(delegate(), &FSWatchQueueDelegate::WatchQueueReceivedNotificationForPath, *this,
       std::string(WatchQueueRenameNotification), path);
}

/// Watches the entry's item under its new path. Should it have moved on while it was looked for,
/// the new path can't be opened, or is another file by now: then the entry itself, which still
/// hangs on the item, goes on under that path, and the next rename is followed from there.
void FSWatchQueue::follow(const Entry& entry, const std::string& newPath,
                          const std::string& oldPath) {
  const std::lock_guard lock(lock_);
  if (entry->generation_ != generation_) return;  // all paths were removed since
  int error = 0;
  const auto present = _watchedPathEntries.find(newPath);
  const auto now = present == _watchedPathEntries.end()
                       ? put(newPath, entry->subscriptionFlags(), error)
                       : present->second;
  const auto item = ports_->events->identity(entry->watchedFD());
  const bool isThere = now && item && ports_->events->identity(now->watchedFD()) == item;
  if (now != entry) {  // which was known until now: it may have moved on and told of it
    take(oldPath, entry.get());
    take(entry->path(), entry.get());
  }
  if (isThere) return;
  take(newPath, nullptr);
  entry->setPath(newPath);
  ports_->events->standsAt(entry->watchedFD(), newPath);
  _watchedPathEntries.insert_or_assign(newPath, entry);
  if (const auto changes = entry->setWatched(); changes != 0)
    Queue::main().async([self = shared_from_this(), entry, newPath, changes] {
      self->handle(entry, newPath, changes);
    });
}

void FSWatchQueue::handleDeletion(const Entry& entry, const std::string& path) {
  tell(delegate(), &FSWatchQueueDelegate::WatchQueueDeletedForPath, *this, path);
  const std::lock_guard lock(lock_);
  take(path, entry.get());  // only that one, as above
  take(entry->path(), entry.get());
}

void FSWatchQueue::post(const char* name, const std::string& path) {
  Dictionary userInfo;
  userInfo.set("path", Value(path));
  NotificationCenter::workspace().post({name, this, &userInfo});
  ports_->workspace->post(name, this, path);
}

}  // namespace vantile
