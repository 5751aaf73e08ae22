#include "vantile/platform/linux/inotify_queue.h"

#include <poll.h>
#include <sys/eventfd.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <utility>

#include "vantile/platform/linux/item_facts.h"
#include "vantile/platform/linux/watched_items.h"

namespace vantile {
namespace {

constexpr std::size_t bufferSize = 64 << 10;

}  // namespace

std::shared_ptr<InotifyQueue> InotifyQueue::make(std::shared_ptr<WatchedItems> items,
                                                 LinuxRoots roots, int& error) {
  Descriptor instance(::inotify_init1(IN_CLOEXEC | IN_NONBLOCK));
  if (!instance) {
    error = errno;
    return nullptr;
  }
  Descriptor wakeup(::eventfd(0, EFD_CLOEXEC | EFD_NONBLOCK));
  if (!wakeup) {
    error = errno;
    return nullptr;
  }
  return std::shared_ptr<InotifyQueue>(
      new InotifyQueue(std::move(items), std::move(roots), std::move(instance), std::move(wakeup)));
}

InotifyQueue::InotifyQueue(std::shared_ptr<WatchedItems> items, LinuxRoots roots,
                           Descriptor instance, Descriptor wakeup)
    : table_(std::move(items)),
      roots_(std::move(roots)),
      wakeup_(std::move(wakeup)),
      instance_(std::move(instance)),
      buffer_(bufferSize) {}

int InotifyQueue::add(int watched, std::uint32_t changes, std::uint64_t tag) {
  auto opened = table_->takeFor(shared_from_this(), watched);
  if (!opened) return EBADF;
  const std::lock_guard lock(mutex_);
  if (!instance_) return EBADF;
  if (!opened->pin) return widen(watched, changes);
  Item item{.tag = tag, .wanted = changes, .path = std::move(opened->path)};
  item.folder = folderOf(item.path);
  item.watch = watchInode(opened->pin, opened->kind, changes);
  if (item.watch < 0) return -item.watch;
  const auto facts = factsAt(opened->pin.get(), "", AT_EMPTY_PATH);
  if (!facts) {
    if (!watches_.contains(item.watch)) ::inotify_rm_watch(instance_.get(), item.watch);
    return EIO;
  }
  auto& watch = watches_.try_emplace(item.watch, Watch{.known = *facts}).first->second;
  watch.items.push_back(watched);
  tags_.insert_or_assign(tag, watched);
  auto& kept = items_.insert_or_assign(watched, std::move(item)).first->second;
  // What happened between the opening and the watch is in no event.
  if (facts->links == 0) {
    watch.gone = true;
    table_->setGone(watched);
    push(watched, kept, fileDeleted);
  } else if (!factsOf(opened->identity, kept.path)) {
    kept.away = true;
    push(watched, kept, fileRenamed);
  }
  if (kept.pending != 0) wake();
  return 0;
}

/// Watches the very inode that `pin` holds, for these changes besides those that it is watched for.
/// The watch, or the negative of the error number.
int InotifyQueue::watchInode(const Descriptor& pin, FileKind kind, std::uint32_t changes) {
  const auto link = roots_.proc + "/self/fd/" + std::to_string(pin.get());
  const int watch =
      ::inotify_add_watch(instance_.get(), link.c_str(), eventsFor(kind, changes) | IN_MASK_ADD);
  return watch < 0 ? -errno : watch;
}

/// Watches an item that is watched already for other changes.
int InotifyQueue::widen(int watched, std::uint32_t changes) {
  const auto found = items_.find(watched);
  if (found == items_.end() || found->second.watch < 0) return ENOENT;
  auto& item = found->second;
  const Descriptor pin(::open(item.path.c_str(), O_PATH | O_CLOEXEC));
  const auto facts = pin ? factsAt(pin.get(), "", AT_EMPTY_PATH) : std::nullopt;
  if (!facts || facts->identity != watches_.at(item.watch).known.identity) return ENOENT;
  const int watch = watchInode(pin, facts->kind, changes);
  if (watch < 0) return -watch;
  item.wanted = changes;
  return 0;
}

std::optional<FileEvent> InotifyQueue::wait(std::chrono::nanoseconds timeout) {
  const auto end = std::chrono::steady_clock::now() + timeout;
  while (true) {
    int instance = -1;
    {
      const std::lock_guard lock(mutex_);
      if (!instance_ || std::exchange(interrupted_, false)) return std::nullopt;
      instance = instance_.get();
      takeIn();
      if (auto event = nextReady()) return event;
    }
    const auto left = std::max(end - std::chrono::steady_clock::now(), std::chrono::nanoseconds(0));
    const auto seconds = std::chrono::floor<std::chrono::seconds>(left);
    const timespec limit = {.tv_sec = seconds.count(), .tv_nsec = (left - seconds).count()};
    std::array<pollfd, 2> waited = {{{instance, POLLIN, 0}, {wakeup_.get(), POLLIN, 0}}};
    const int ready = ::ppoll(waited.data(), waited.size(), &limit, nullptr);
    if (ready == 0) return std::nullopt;
    if (waited[1].revents != 0) clearWakeup();
  }
}

void InotifyQueue::delivered(std::uint64_t tag) {
  const std::lock_guard lock(mutex_);
  const auto found = tags_.find(tag);
  if (found == tags_.end()) return;
  auto& item = items_.at(found->second);
  item.taken = false;
  if (item.pending == 0) return;
  push(found->second, item, 0);
  wake();
}

void InotifyQueue::interrupt() {
  const std::lock_guard lock(mutex_);
  interrupted_ = true;
  wake();
}

void InotifyQueue::wake() {
  // A full counter has woken the thread already.
  [[maybe_unused]] const int result = ::eventfd_write(wakeup_.get(), 1);
}

void InotifyQueue::clearWakeup() {
  eventfd_t count = 0;
  [[maybe_unused]] const int result = ::eventfd_read(wakeup_.get(), &count);  // or it was clear
}

int InotifyQueue::close() {
  const std::lock_guard lock(mutex_);
  if (!instance_) return 0;
  return ::close(instance_.release()) == 0 ? 0 : errno;
}

void InotifyQueue::drop(int watched) {
  const std::lock_guard lock(mutex_);
  const auto item = items_.extract(watched);
  if (item.empty()) return;
  tags_.erase(item.mapped().tag);
  const auto found = watches_.find(item.mapped().watch);
  if (found == watches_.end()) return;
  std::erase(found->second.items, watched);
  if (!found->second.items.empty()) return;
  if (instance_) ::inotify_rm_watch(instance_.get(), found->first);
  watches_.erase(found);
}

void InotifyQueue::standsAt(int watched, const std::string& path) {
  const std::lock_guard lock(mutex_);
  const auto found = items_.find(watched);
  if (found == items_.end()) return;
  auto& item = found->second;
  item.path = path;
  item.folder = folderOf(path);
  item.away = false;
}

std::optional<FileEvent> InotifyQueue::nextReady() {
  while (!ready_.empty()) {
    const auto found = items_.find(ready_.front());
    ready_.pop_front();
    if (found == items_.end()) continue;  // no longer watched
    auto& item = found->second;
    item.inReady = false;
    item.taken = true;
    return FileEvent{item.tag, std::exchange(item.pending, 0)};
  }
  return std::nullopt;
}

/// Gives the item something more to tell. It is told once the event before was taken up.
void InotifyQueue::push(int watched, Item& item, std::uint32_t changes) {
  item.pending |= changes & item.wanted;
  if (item.pending == 0 || item.taken || item.inReady) return;
  item.inReady = true;
  ready_.push_back(watched);
}

}  // namespace vantile
