#include "vantile/watchers/folder_watcher.h"

#include <utility>

#include "vantile/watchers/watcher_ports.h"

namespace vantile {

FolderWatcher::FolderWatcher()
    : ports_(std::make_unique<const WatcherPorts>(WatcherPorts::installed())),
      watchQueue(FSWatchQueue::init()) {}

FolderWatcher::~FolderWatcher() = default;

void FolderWatcher::listen(FSWatchQueueDelegate listener) {
  if (watchQueue)
    watchQueue->setDelegate(std::make_shared<FSWatchQueueDelegate>(std::move(listener)));
}

void FolderWatcher::begin(std::int32_t* stop) {
  _isStop = stop;
  ended_ = false;
}

void FolderWatcher::end() {
  ended_ = true;
  ++ends_;
  std::int32_t* const flag = _isStop;
  if (flag) std::atomic_ref(*flag).store(1);
}

bool FolderWatcher::exists(const std::string& path) const {
  return ports_->files->attributes(path, true).has_value();
}

void FolderWatcher::watch(const std::string& path, std::uint32_t flags) {
  if (watchQueue) watchQueue->addPathNotifyingAbout(path, flags);
}

void FolderWatcher::unwatch(const std::string& path) {
  if (watchQueue) watchQueue->removePath(path);
}

void FolderWatcher::unwatchAll() {
  if (watchQueue) watchQueue->removeAllPaths();
}

}  // namespace vantile
