// Where downloads go: the browsers' preferences, and the folders and unfinished downloads that are
// watched because of them.

#include "vantile/watchers/watch_download.h"

#include <algorithm>
#include <utility>

#include "vantile/foundation/guard.h"
#include "vantile/platform/file_events.h"
#include "vantile/utility/folder_functions.h"
#include "vantile/utility/general_utility.h"
#include "vantile/utility/paths.h"
#include "vantile/utility/strings.h"
#include "vantile/watchers/browser_table.h"
#include "vantile/watchers/shared_watchers.h"
#include "vantile/watchers/watcher_ports.h"

namespace vantile {
namespace {

constexpr std::uint32_t ofPreferences = fileWritten;
constexpr std::uint32_t ofDownloadFolders = fileDeleted | fileWritten | fileRenamed;
constexpr std::uint32_t ofUnfinishedDownloads = fileDeleted | fileRenamed;

std::shared_ptr<const Date> modificationDate(const std::string& path) {
  const auto attributes = GeneralUtility::commonAttributesOfFile(path);
  const auto* const value = attributes ? attributes->find("NSFileModificationDate") : nullptr;
  const auto* const date = value ? value->as<std::shared_ptr<const Date>>() : nullptr;
  return date ? *date : nullptr;
}

}  // namespace

SharedInstance<WatchDownload>& sharedDownloadWatch() {
  static auto& instance = *new SharedInstance<WatchDownload>;
  return instance;
}

std::shared_ptr<WatchDownload> WatchDownload::singleton() {
  return sharedDownloadWatch().get(init);
}

std::shared_ptr<WatchDownload> WatchDownload::init() {
  const std::shared_ptr<WatchDownload> watcher(new WatchDownload);
  watcher->listenToQueue();
  return watcher;
}

WatchDownload::WatchDownload()
    : _preferencesFolderPath(GeneralUtility::userPreferencesPath()),
      safariFolder(appendingPathComponent(GeneralUtility::userLibrary(), "Safari")),
      safariDlsPlist(appendingPathComponent(safariFolder, "Downloads.plist")) {}

WatchDownload::~WatchDownload() = default;

void WatchDownload::startWatch(std::int32_t* stop) {
  const std::lock_guard lock(work_);
  begin(stop);
  profileMonitor();
  if (_downloadFolderChanged) {
    if (!_browserDownloadPaths.empty()) {
      for (const auto& folder : _prevDownloadFolder) leave(folder);
      _prevDownloadFolder.clear();
    }
    _currDownload.clear();
    for (const auto& folder : wantedFolders()) {
      watchDownloadFolder(folder);
      findUnfinished(folder);
    }
    watchFound();
    _downloadFolderChanged = false;
  }
  watchLandmarks();
  if (ports_->browsers->hasSafariFolder()) watch(safariFolder, ofPreferences);
  const std::lock_guard history(historyLock_);
  modifyDate = modificationDate(safariDlsPlist);
}

void WatchDownload::stopWatch() {
  end();  // before the lock: a traversal that holds it ends early
  const std::lock_guard lock(work_);
  unwatchAll();
  landmarks_.clear();
}

/// Where a browser saves, by its preferences; nothing when it has none.
std::optional<std::string> WatchDownload::folderOf(const BrowserEntry& browser) const {
  const auto setting = ports_->browsers->setting(
      {appendingPathComponent(_preferencesFolderPath, browser.preferences), browser.preferenceKey});
  if (!setting) return std::nullopt;
  if (!setting->folder) return GeneralUtility::userDownlodsPath();
  if (!startWithString(*setting->folder, "~/")) return setting->folder;
  return GeneralUtility::userHomePath() + setting->folder->substr(1);
}

void WatchDownload::profileMonitor() {
  const std::lock_guard lock(work_);
  _downloadFolderChanged = false;
  for (const auto& browser : browserTable) {
    const auto folder = folderOf(browser);
    const auto current = _browserDownloadPaths.find(browser.key);
    const bool known = current != _browserDownloadPaths.end();
    if (folder && (!known || current->second.empty() || current->second != *folder)) {
      _browserDownloadPaths.insert_or_assign(std::string(browser.key), *folder);
      _downloadFolderChanged = true;
    } else if (!folder && known) {
      _browserDownloadPaths.erase(current);
      // That Chrome's folder is not wanted any more is noticed with another browser's change.
      if (browser.key != "Chrome") _downloadFolderChanged = true;
    }
  }
}

/// The folders that browsers save into, each once.
PathList WatchDownload::wantedFolders() const {
  PathList folders;
  for (const auto& [browser, folder] : _browserDownloadPaths) folders.add(folder);
  return folders;
}

bool WatchDownload::isSafariFolder(const std::string& folder) const {
  return folder == safariFolder && ports_->browsers->hasSafariFolder();
}

void WatchDownload::watchDownloadFolder(const std::string& folder) {
  if (landmarks_.contains(folder)) unwatch(folder);  // it was watched for less
  watch(folder, ofDownloadFolders);
  _prevDownloadFolder.add(folder);
}

/// Ends the watch of a download folder. Where it is a landmark, too, it is watched as that again.
void WatchDownload::leave(const std::string& folder) {
  unwatch(folder);
  landmarks_.remove(folder);
}

void WatchDownload::fillDownloadPath(const std::string& path) {
  const std::lock_guard lock(work_);
  _currDownload.add(path);
}

void WatchDownload::findUnfinished(const std::string& folder) {
  trv_sub_download(GeneralUtility::convertStringToCstring(folder), downloadcallback, stopFlag());
}

/// Watches the unfinished downloads that traversals found and that are not listed yet. One that
/// can't be watched, or has gone by now, is not listed: it is tried again when it is found again.
void WatchDownload::watchFound() {
  for (const auto& path : _currDownload) {
    if (_watchDownload.contains(path)) continue;
    watch(path, ofUnfinishedDownloads);
    if (!watchQueue || watchQueue->isWatched(path)) _watchDownload.add(path);
  }
  _currDownload.clear();
}

/// Something changed where the browsers keep their preferences.
void WatchDownload::followPreferences() {
  profileMonitor();
  if (!_downloadFolderChanged) return;
  const auto wanted = wantedFolders();
  _prevDownloadFolder.removeIf([this, &wanted](const std::string& folder) {
    if (wanted.contains(folder)) return false;
    leave(folder);
    return true;
  });
  // What is unfinished in a new folder is found at the next change in it.
  for (const auto& folder : wanted)
    if (!_prevDownloadFolder.contains(folder)) watchDownloadFolder(folder);
  _downloadFolderChanged = false;
}

std::string WatchDownload::nearestExisting(std::string folder) const {
  while (folder.size() > 1 && !exists(folder)) folder = withoutLastPathComponent(folder);
  return folder;
}

/// Watches the folders in which preferences, or a download folder that is missing, may appear; for
/// those that are not there, the nearest one above.
void WatchDownload::watchLandmarks() {
  // What appears between the look and the watch is in no event: so it looks again until nothing
  // did.
  for (int look = 0; look < 8; ++look) {
    watchReturnedFolders();
    if (!moveLandmarks()) return;
  }
}

/// Watches the landmarks as the disk is now. Whether any of them is new.
bool WatchDownload::moveLandmarks() {
  PathList wanted;
  wanted.add(nearestExisting(_preferencesFolderPath));
  for (const auto& folder : ports_->browsers->preferenceFolders())
    wanted.add(nearestExisting(folder));
  for (const auto& folder : missing_) wanted.add(nearestExisting(folder));
  landmarks_.removeIf([this, &wanted](const std::string& folder) {
    if (wanted.contains(folder)) return false;
    const bool otherwise = _prevDownloadFolder.contains(folder) || isSafariFolder(folder);
    if (!otherwise) unwatch(folder);
    return true;
  });
  bool anyNew = false;
  for (const auto& folder : wanted) {
    if (!exists(folder)) continue;  // nothing does above a path that is not absolute
    if (!landmarks_.add(folder)) continue;
    watch(folder, ofPreferences);
    anyNew = true;
  }
  return anyNew;
}

/// Watches the download folders that have come, or come back, and notes those that are missing.
void WatchDownload::watchReturnedFolders() {
  for (const auto& folder : wantedFolders()) {
    if (!exists(folder)) {
      missing_.add(folder);
    } else if (missing_.remove(folder)) {
      unwatch(folder);  // what was there before
      watchDownloadFolder(folder);
      findUnfinished(folder);
    }
  }
  missing_.removeIf(
      [wanted = wantedFolders()](const std::string& folder) { return !wanted.contains(folder); });
  watchFound();
}

void WatchDownload::listenToQueue() {
  listen({.WatchQueueReceivedNotificationForPath =
              calling(&WatchDownload::WatchQueueReceivedNotificationForPath),
          .WatchQueueRenameForPath = calling(&WatchDownload::WatchQueueRenameForPath),
          .WatchQueueRemoveToTrashForPath = calling(&WatchDownload::WatchQueueRemoveToTrashForPath),
          .WatchQueueDeletedForPath = calling(&WatchDownload::WatchQueueDeletedForPath)});
}

/// Forgets a download folder that is not at its path any more. Whether it was one.
bool WatchDownload::dropDownloadFolder(const std::string& folder) {
  if (!_prevDownloadFolder.remove(folder)) return false;
  leave(folder);
  missing_.add(folder);  // another may have taken its path by now
  watchLandmarks();
  return true;
}

/// Forgets an unfinished download. Whether it was one. Another may have taken its path by now, and
/// no change of the folder may come after this to find it by.
bool WatchDownload::dropUnfinished(const std::string& path) {
  if (!_watchDownload.remove(path)) return false;
  unwatch(path);
  if (exists(path)) {
    _currDownload.add(path);
    watchFound();
  }
  return true;
}

void WatchDownload::WatchQueueReceivedNotificationForPath(FSWatchQueue& queue,
                                                          const std::string& notification,
                                                          const std::string& path) {
  const std::lock_guard lock(work_);
  if (ended()) return;
  if (!exists(path)) {
    queue.removePath(path);
    landmarks_.remove(path);
    watchLandmarks();
    return;
  }
  if (notification == WatchQueueRenameNotification && _watchDownload.contains(path)) {
    unwatch(path);  // it went elsewhere, and another one has taken its path
    watch(path, ofUnfinishedDownloads);
  }
  if (notification != WatchQueueWriteNotification) return;
  if (landmarks_.contains(path)) {
    followPreferences();
    watchLandmarks();
    if (path == _preferencesFolderPath) return;
    if (!_prevDownloadFolder.contains(path) && !isSafariFolder(path)) return;
  }
  if (isSafariFolder(path)) return setModifyDate(modificationDate(safariDlsPlist));
  findUnfinished(path);
  watchFound();
}

void WatchDownload::WatchQueueRenameForPath(FSWatchQueue&, const std::string& newPath,
                                            const std::string& oldPath) {
  {
    const std::lock_guard lock(work_);
    if (ended() || dropDownloadFolder(oldPath) || !dropUnfinished(oldPath)) return;
    if (ports_->browsers->renamesUnfinished() &&
        codeOfExtension(pathExtension(newPath)) != unknownBrowserCode) {
      _watchDownload.add(newPath);  // the queue goes on watching it there
      return;
    }
  }
  notifyDownloadCompletedWithBrowserType(newPath, codeOfExtension(pathExtension(oldPath)));
}

void WatchDownload::WatchQueueRemoveToTrashForPath(FSWatchQueue&, const std::string&,
                                                   const std::string& oldPath) {
  const std::lock_guard lock(work_);
  if (ended() || dropDownloadFolder(oldPath)) return;
  dropUnfinished(oldPath);
}

void WatchDownload::WatchQueueDeletedForPath(FSWatchQueue&, const std::string& path) {
  {
    const std::lock_guard lock(work_);
    if (ended() || dropDownloadFolder(path) || !dropUnfinished(path)) return;
  }
  notifyDownloadCompletedWithBrowserType(withoutPathExtension(path),
                                         codeOfExtension(pathExtension(path)));
}

}  // namespace vantile

void downloadcallback(const char* path) noexcept {
  if (!path) return;
  vantile::guarded("an unfinished download",
                   [path] { vantile::WatchDownload::singleton()->fillDownloadPath(path); });
}
