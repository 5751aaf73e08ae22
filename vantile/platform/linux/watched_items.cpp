#include "vantile/platform/linux/watched_items.h"

#include <cerrno>
#include <limits>
#include <utility>

#include "vantile/platform/file_events.h"
#include "vantile/platform/linux/inotify_queue.h"
#include "vantile/platform/linux/statx.h"

namespace vantile {

int WatchedItems::open(const std::string& path) {
  OpenedItem opened;
  opened.pin = Descriptor(::open(path.c_str(), O_PATH | O_CLOEXEC));
  if (!opened.pin) return -errno;
  const auto status = statusOf(opened.pin.get(), "", AT_EMPTY_PATH, STATX_TYPE | STATX_INO);
  if (!status) return -EIO;
  opened.identity = identityOf(*status);
  opened.kind = kindOf(status->stx_mode);
  opened.path = path;
  const std::lock_guard lock(mutex_);
  constexpr int most = std::numeric_limits<int>::max() - FileEvents::firstToken;
  int token = 0;
  do {  // numbers come round again after 2^30; those still in use are passed over
    token = FileEvents::firstToken + next_;
    next_ = next_ == most ? 0 : next_ + 1;
  } while (items_.contains(token));
  items_.emplace(token, Item{.opened = std::move(opened), .queue = {}});
  return token;
}

std::shared_ptr<InotifyQueue> WatchedItems::close(int token) {
  const std::lock_guard lock(mutex_);
  const auto item = items_.extract(token);
  return item.empty() ? nullptr : item.mapped().queue.lock();
}

std::optional<FileIdentity> WatchedItems::identity(int token) const {
  const std::lock_guard lock(mutex_);
  const auto found = items_.find(token);
  if (found == items_.end() || found->second.gone) return std::nullopt;
  return found->second.opened.identity;
}

void WatchedItems::setGone(int token) {
  const std::lock_guard lock(mutex_);
  const auto found = items_.find(token);
  if (found != items_.end()) found->second.gone = true;
}

std::optional<OpenedItem> WatchedItems::takeFor(const std::shared_ptr<InotifyQueue>& queue,
                                                int token) {
  const std::lock_guard lock(mutex_);
  const auto found = items_.find(token);
  if (found == items_.end()) return std::nullopt;
  auto& opened = found->second.opened;
  found->second.queue = queue;
  return OpenedItem{std::move(opened.pin), opened.identity, opened.kind,
                    std::exchange(opened.path, {})};
}

std::shared_ptr<InotifyQueue> WatchedItems::queueOf(int token) const {
  const std::lock_guard lock(mutex_);
  const auto found = items_.find(token);
  return found == items_.end() ? nullptr : found->second.queue.lock();
}

std::size_t WatchedItems::size() const {
  const std::lock_guard lock(mutex_);
  return items_.size();
}

}  // namespace vantile
