#include "vantile/watchqueue/path_entry.h"

#include <atomic>
#include <utility>

#include "vantile/watchqueue/entry_tags.h"
#include "vantile/watchqueue/watch_queue_ports.h"

namespace vantile {
namespace {

std::atomic<std::uint64_t> latestTag = 0;

}  // namespace

WatchQueuePathEntry::WatchQueuePathEntry(std::string path, std::int32_t watched,
                                         std::uint32_t flags)
    : events_(WatchQueuePorts::installed().events),
      tag_(++latestTag),
      _path(std::move(path)),
      _watchedFD(watched),
      _subscriptionFlags(flags) {}

WatchQueuePathEntry::~WatchQueuePathEntry() {
  if (const auto tags = tags_.lock()) tags->remove(tag_);
  if (_watchedFD >= 0) events_->close(std::exchange(_watchedFD, -1));
}

std::shared_ptr<WatchQueuePathEntry> WatchQueuePathEntry::opened(std::string path,
                                                                 std::uint32_t flags, int& error) {
  const int watched = WatchQueuePorts::installed().events->open(path);
  if (watched < 0) {
    error = -watched;
    return nullptr;
  }
  return std::shared_ptr<WatchQueuePathEntry>(
      new WatchQueuePathEntry(std::move(path), watched, flags));
}

std::shared_ptr<WatchQueuePathEntry> WatchQueuePathEntry::initWithPathAndSubscriptionFlags(
    std::string path, std::uint32_t subscriptionFlags) {
  int error = 0;
  return opened(std::move(path), subscriptionFlags, error);
}

std::string WatchQueuePathEntry::path() const {
  const std::lock_guard lock(mutex_);
  return _path;
}

void WatchQueuePathEntry::setPath(std::string path) {
  const std::lock_guard lock(mutex_);
  _path = std::move(path);
}

std::int32_t WatchQueuePathEntry::watchedFD() const {
  const std::lock_guard lock(mutex_);
  return _watchedFD;
}

void WatchQueuePathEntry::setWatchedFD(std::int32_t watched) {
  const std::lock_guard lock(mutex_);
  _watchedFD = watched;
}

bool WatchQueuePathEntry::keepBack(std::uint32_t changes) {
  const std::lock_guard lock(mutex_);
  if (removed_) keptBack_ |= changes;
  return removed_;
}

void WatchQueuePathEntry::setRemoved() {
  const std::lock_guard lock(mutex_);
  removed_ = true;
}

std::uint32_t WatchQueuePathEntry::setWatched() {
  const std::lock_guard lock(mutex_);
  removed_ = false;
  return std::exchange(keptBack_, 0);
}

std::uint32_t WatchQueuePathEntry::subscriptionFlags() const {
  const std::lock_guard lock(mutex_);
  return _subscriptionFlags;
}

void WatchQueuePathEntry::setSubscriptionFlags(std::uint32_t flags) {
  const std::lock_guard lock(mutex_);
  _subscriptionFlags = flags;
}

}  // namespace vantile
