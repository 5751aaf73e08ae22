#include "vantile/watchers/watch_trash.h"

#include <utility>

#include "vantile/foundation/guard.h"
#include "vantile/foundation/log.h"
#include "vantile/platform/file_events.h"
#include "vantile/utility/folder_functions.h"
#include "vantile/utility/general_utility.h"
#include "vantile/utility/paths.h"
#include "vantile/watchers/shared_watchers.h"
#include "vantile/watchers/watcher_ports.h"

namespace vantile {
namespace {

constexpr std::uint32_t ofMovedApplications = fileDeleted | fileRenamed;

}  // namespace

SharedInstance<WatchTrash>& sharedTrashWatch() {
  static auto& instance = *new SharedInstance<WatchTrash>;
  return instance;
}

std::shared_ptr<WatchTrash> WatchTrash::singleton() {
  return sharedTrashWatch().get(init);
}

std::shared_ptr<WatchTrash> WatchTrash::init() {
  const std::shared_ptr<WatchTrash> watcher(new WatchTrash);
  watcher->listen(
      {.WatchQueueReceivedNotificationForPath =
           watcher->calling(&WatchTrash::WatchQueueReceivedNotificationForPath),
       .WatchQueueRenameForPath = watcher->calling(&WatchTrash::WatchQueueRenameForPath)});
  return watcher;
}

WatchTrash::WatchTrash() : _trashPath(GeneralUtility::userTrashPath()) {}

WatchTrash::~WatchTrash() = default;

void WatchTrash::startWatch(std::int32_t* stop) {
  {
    const std::lock_guard lock(work_);
    begin(stop);
    _currApps.clear();
    ports_->folders->makeTrash();
    watch(_trashPath, fileWritten);
    findApplications();
    for (const auto& application : _currApps)
      if (exists(application)) _watchApps.add(application);
    _currApps.clear();
  }
  const auto bytes = measure();
  {
    const std::lock_guard lock(work_);
    _prevUsedSize = bytes;
  }
  if (!ended()) tell(delegate(), &TrashWatchDelegate::trashUsedSizeChanged, bytes);
}

void WatchTrash::stopWatch() {
  end();  // before the lock: a traversal that holds it ends early
  const std::lock_guard lock(work_);
  unwatchAll();
}

void WatchTrash::fillAppByPath(const std::string& path) {
  const std::lock_guard lock(work_);
  _currApps.add(path);
}

std::vector<std::string> WatchTrash::currApps() const {
  const std::lock_guard lock(work_);
  return _currApps.paths();
}

bool WatchTrash::isApplication(const std::string& path) const {
  const auto extension = pathExtension(path);
  return !extension.empty() && ports_->applications->isApplicationExtension(extension);
}

void WatchTrash::findApplications() {
  trv_sub_app(GeneralUtility::convertStringToCstring(_trashPath), appcallback, stopFlag());
}

std::uint64_t WatchTrash::measure() const {
  return get_folder_size(GeneralUtility::convertStringToCstring(_trashPath));
}

void WatchTrash::notifyMovedApp(const std::string& path) {
  if (!isApplication(path)) return;
  {
    const std::lock_guard lock(work_);
    if (ended()) return;
    watch(path, ofMovedApplications);
    _watchApps.add(path);
  }
  tell(delegate(), &TrashWatchDelegate::trashAddedApp, path);
}

void WatchTrash::moveToTrash(const std::string& folder) {
  trv_all_app(GeneralUtility::convertStringToCstring(folder), 1, folder_app_callback, stopFlag());
}

void WatchTrash::WatchQueueReceivedNotificationForPath(FSWatchQueue&,
                                                       const std::string& notification,
                                                       const std::string& path) {
  std::vector<std::string> added;
  {
    const std::lock_guard lock(work_);
    if (ended()) return;
    if (notification == WatchQueueDeleteNotification) {
      _watchApps.remove(path);
      return;
    }
    if (notification != WatchQueueWriteNotification) return;
    _currApps.clear();
    findApplications();
    _watchApps.removeIf([this](const std::string& known) {
      return !_currApps.contains(known) && isApplication(known);
    });
    for (const auto& application : _currApps)
      if (isApplication(application) && _watchApps.add(application)) added.push_back(application);
  }
  for (const auto& application : added) {
    if (ended()) return;  // by the delegate, or another thread
    tell(delegate(), &TrashWatchDelegate::trashAddedApp, application);
  }
  reportSize();
}

/// Reports the size where it is not what it was when the watch began: that one stays the measure.
void WatchTrash::reportSize() {
  const auto bytes = measure();
  {
    const std::lock_guard lock(work_);
    if (ended() || bytes == _prevUsedSize) return;
  }
  tell(delegate(), &TrashWatchDelegate::trashUsedSizeChanged, bytes);
}

void WatchTrash::WatchQueueRenameForPath(FSWatchQueue&, const std::string& newPath,
                                         const std::string& oldPath) {
  const std::lock_guard lock(work_);
  if (ended() || &newPath == &oldPath || !isApplication(oldPath)) return;
  _watchApps.remove(oldPath);
  _watchApps.add(newPath);
}

}  // namespace vantile

void appcallback(const char* path, std::int32_t kind) noexcept {
  if (!path || kind != vantile::applicationKind) return;
  vantile::guarded("an application in the Trash",
                   [path] { vantile::WatchTrash::singleton()->fillAppByPath(path); });
}

void folder_app_callback(const char* path, std::int32_t kind) noexcept {
  if (!path || kind != vantile::applicationKind) return;
  vantile::guarded("an application moved to the Trash", [path] {
    vantile::WatchTrash::singleton()->notifyMovedApp(path);
    vantile::logLine("Path add is " + vantile::lastPathComponent(path));
  });
}
