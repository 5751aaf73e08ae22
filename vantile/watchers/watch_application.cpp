#include "vantile/watchers/watch_application.h"

#include <algorithm>
#include <utility>

#include "vantile/foundation/guard.h"
#include "vantile/foundation/value.h"
#include "vantile/platform/file_events.h"
#include "vantile/utility/folder_functions.h"
#include "vantile/utility/general_utility.h"
#include "vantile/utility/paths.h"
#include "vantile/utility/strings.h"
#include "vantile/watchers/shared_watchers.h"
#include "vantile/watchers/watch_trash.h"
#include "vantile/watchers/watcher_ports.h"

namespace vantile {
namespace {

std::unordered_set<std::string> systemNames(const WatcherPorts& ports) {
  const auto path = ports.resources->path("SystemApplication", "plist");
  const auto list = path ? ports.lists->read(*path) : nullptr;
  std::unordered_set<std::string> names;
  if (!list) return names;
  for (const auto& entry : *list)
    if (const auto* const name = entry.value.as<std::string>())
      names.insert(ports.folding->lowerCased(*name));
  return names;
}

/// What a folder's path is a prefix of, whatever the case and diacritics of either.
class Below {
 public:
  Below(TextFolding& folding, const std::string& folder)
      : folding_(folding), folder_(folder), folded_(folding.folded(folder)) {}
  bool contains(const std::string& path) const {
    return path.starts_with(folder_) || folding_.folded(path).starts_with(folded_);
  }

 private:
  TextFolding& folding_;
  const std::string& folder_;
  const std::string folded_;
};

}  // namespace

void setHostResourceFolder(std::optional<std::string> folder) {
  WatcherPorts::installed().resources->setFolder(std::move(folder));
}

SharedInstance<WatchApplication>& sharedApplicationWatch() {
  static auto& instance = *new SharedInstance<WatchApplication>;
  return instance;
}

std::shared_ptr<WatchApplication> WatchApplication::singleton() {
  return sharedApplicationWatch().get(init);
}

std::shared_ptr<WatchApplication> WatchApplication::init() {
  const std::shared_ptr<WatchApplication> watcher(new WatchApplication);
  watcher->listen(
      {.WatchQueueReceivedNotificationForPath =
           watcher->calling(&WatchApplication::WatchQueueReceivedNotificationForPath),
       .WatchQueueRenameForPath = watcher->calling(&WatchApplication::WatchQueueRenameForPath),
       .WatchQueueRemoveToTrashForPath =
           watcher->calling(&WatchApplication::WatchQueueRemoveToTrashForPath),
       .WatchQueueDeletedForPath = watcher->calling(&WatchApplication::WatchQueueDeletedForPath)});
  return watcher;
}

WatchApplication::WatchApplication()
    : _sysAppDic(systemNames(*ports_)), _appRootPath(GeneralUtility::applicationPath()) {}

WatchApplication::~WatchApplication() = default;

void WatchApplication::startWatch(std::int32_t* stop) {
  const std::lock_guard lock(work_);
  begin(stop);
  watch(_appRootPath, fileWritten);
  findApplications(_appRootPath);
  // What is there from the start is known, and not told.
  for (const auto& folder : _currFolders) _watchFolders.add(folder);
  _currFolders.clear();
  for (const auto& application : _currApps) _watchApps.add(application);
  _currApps.clear();
}

void WatchApplication::stopWatch() {
  end();  // before the lock: a traversal that holds it ends early
  const std::lock_guard lock(work_);
  unwatch(_appRootPath);
  _watchApps.clear();
  _watchFolders.clear();
}

void WatchApplication::findApplications(const std::string& folder) {
  trv_all_app(GeneralUtility::convertStringToCstring(folder), 1, applicationcallback, stopFlag());
}

bool WatchApplication::isSystemApplication(const std::string& path) const {
  if (_sysAppDic.empty()) return false;
  auto name = ports_->applications->displayName(path);
  if (isNilOrEmpty(name)) name = withoutPathExtension(lastPathComponent(path));
  return _sysAppDic.contains(ports_->folding->lowerCased(withoutPathExtension(*name)));
}

void WatchApplication::fillAppByPath(const std::string& path) {
  const std::lock_guard lock(work_);
  if (!isSystemApplication(path)) _currApps.add(path);
}

void WatchApplication::fillFolderByPath(const std::string& path) {
  const std::lock_guard lock(work_);
  _currFolders.add(path);
}

/// Compares what a traversal of the folder found with what is known below it. The applications that
/// are new.
std::vector<std::string> WatchApplication::takeApplications(const std::string& folder) {
  const Below below(*ports_->folding, folder);
  _watchApps.removeIf([&](const std::string& known) {
    return !_currApps.contains(known) && below.contains(known);
  });
  std::vector<std::string> added;
  for (const auto& application : _currApps)
    if (_watchApps.add(application)) added.push_back(application);
  _currApps.clear();
  return added;
}

/// The same for folders; here, if any folder below is known, all that were not found are forgotten,
/// wherever they are.
void WatchApplication::takeFolders(const std::string& folder) {
  const Below below(*ports_->folding, folder);
  const bool anyKnown =
      std::any_of(_watchFolders.begin(), _watchFolders.end(),
                  [&below](const std::string& known) { return below.contains(known); });
  if (anyKnown)
    _watchFolders.removeIf(
        [this](const std::string& known) { return !_currFolders.contains(known); });
  for (const auto& found : _currFolders) _watchFolders.add(found);
  _currFolders.clear();
}

void WatchApplication::WatchQueueReceivedNotificationForPath(FSWatchQueue& queue,
                                                             const std::string& notification,
                                                             const std::string& path) {
  std::vector<std::string> added;
  {
    const std::lock_guard lock(work_);
    if (ended()) return;
    if (!exists(path)) return queue.removePath(path);
    if (notification != WatchQueueWriteNotification) return;
    findApplications(path);
    added = takeApplications(path);
    takeFolders(path);
  }
  for (const auto& application : added) {
    if (ended()) return;  // by the delegate, or another thread
    tell(delegate(), &ApplicationsWatchDelegate::appAdded, application);
  }
}

bool WatchApplication::isApplication(const std::string& path) const {
  return ports_->applications->isApplicationExtension(pathExtension(path));
}

PathList& WatchApplication::listFor(const std::string& path) {
  return isApplication(path) ? _watchApps : _watchFolders;
}

void WatchApplication::WatchQueueRenameForPath(FSWatchQueue&, const std::string& newPath,
                                               const std::string& oldPath) {
  const std::lock_guard lock(work_);
  if (ended() || &newPath == &oldPath) return;
  auto& list = listFor(oldPath);
  list.remove(oldPath);
  list.add(newPath);
}

void WatchApplication::WatchQueueRemoveToTrashForPath(FSWatchQueue&, const std::string& newPath,
                                                      const std::string& oldPath) {
  {
    const std::lock_guard lock(work_);
    if (ended()) return;
    listFor(oldPath).remove(oldPath);
  }
  if (!isApplication(oldPath)) WatchTrash::singleton()->moveToTrash(newPath);
  if (!ended()) tell(delegate(), &ApplicationsWatchDelegate::movedToTrash, newPath);
}

void WatchApplication::WatchQueueDeletedForPath(FSWatchQueue&, const std::string& path) {
  const std::lock_guard lock(work_);
  if (!ended()) listFor(path).remove(path);
}

}  // namespace vantile

void applicationcallback(const char* path, std::int32_t kind) noexcept {
  if (!path) return;
  vantile::guarded("an application", [path, kind] {
    const auto watcher = vantile::WatchApplication::singleton();
    if (kind == vantile::applicationKind)
      watcher->fillAppByPath(path);
    else
      watcher->fillFolderByPath(path);
  });
}
