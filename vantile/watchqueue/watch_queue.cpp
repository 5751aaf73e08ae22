#include "vantile/watchqueue/watch_queue.h"

#include <string_view>
#include <utility>

#include "vantile/foundation/log.h"
#include "vantile/utility/folder_walk.h"
#include "vantile/utility/general_utility.h"
#include "vantile/watchqueue/watch_queue_kernel.h"
#include "vantile/watchqueue/watch_queue_ports.h"

namespace vantile {
namespace {

constexpr std::uint32_t everyChange = 0x7F;

// Two wordings that hosts may know, each of its own operation.
constexpr std::string_view addPathFailed =
    "WatchQueue tried to add the path %@ to watchedPathEntries, but the VDKQueuePathEntry was nil. "
    "\nIt's possible that the host process has hit its max open file descriptors limit.";
constexpr std::string_view addPathNotifyingAboutFailed =
    "WatchQueue tried to add the path %@ to watchedPathEntries, but the WatchQueuePathEntry was "
    "nil. \nIt's possible that the host process has hit its max open file descriptors limit.";

void logLimit(FileEvents& events, int error) {
  if (const auto limit = events.limitBehind(error)) logLine("WatchQueue: " + *limit);
}

}  // namespace

std::shared_ptr<FSWatchQueue> FSWatchQueue::init() {
  const auto& ports = WatchQueuePorts::installed();
  int error = 0;
  auto events = ports.events->newQueue(error);
  if (!events) {
    logLine("WatchQueue: no queue of file events could be made (" + std::to_string(error) + ")");
    logLimit(*ports.events, error);
    return nullptr;
  }
  auto kernel = std::make_shared<Kernel>(std::move(events), ports.workspace);
  return std::shared_ptr<FSWatchQueue>(new FSWatchQueue(ports, std::move(kernel)));
}

FSWatchQueue::FSWatchQueue(const WatchQueuePorts& ports, std::shared_ptr<Kernel> kernel)
    : ports_(std::make_unique<const WatchQueuePorts>(ports)),
      kernel_(std::move(kernel)),
      _trashPath(GeneralUtility::userTrashPath()) {}

FSWatchQueue::~FSWatchQueue() {
  kernel_->_keepWatcherThreadRunning = false;
  kernel_->_coreQueueFD->interrupt();
  removeAllPaths();
}

void FSWatchQueue::addPath(const std::optional<std::string>& path) {
  add(path, everyChange, addPathFailed);
}

void FSWatchQueue::addPathNotifyingAbout(const std::optional<std::string>& path,
                                         std::uint32_t flags) {
  add(path, flags, addPathNotifyingAboutFailed);
}

void FSWatchQueue::add(const std::optional<std::string>& path, std::uint32_t flags,
                       std::string_view message) {
  if (!path) return;
  int error = 0;
  {
    const std::lock_guard lock(lock_);
    if (_watchedPathEntries.contains(*path) || put(*path, flags, error)) return;
  }
  const auto place = message.find("%@");
  logLine(std::string(message).replace(place, 2, *path));
  logLimit(*ports_->events, error);
}

std::shared_ptr<WatchQueuePathEntry> FSWatchQueue::addPathToQueueNotifyingAbout(
    const std::string& path, std::uint32_t flags) {
  int error = 0;
  return put(path, flags, error);
}

/// Watches the path for `flags` besides what it is watched for; for null `error` tells why not.
FSWatchQueue::Entry FSWatchQueue::put(const std::string& path, std::uint32_t flags, int& error) {
  const std::lock_guard lock(lock_);
  const auto present = _watchedPathEntries.find(path);
  const bool isNew = present == _watchedPathEntries.end();
  const auto already = isNew ? 0 : present->second->subscriptionFlags();
  if (!isNew && (already & flags) == flags) return present->second;
  flags |= already;
  const auto entry = isNew ? WatchQueuePathEntry::opened(path, flags, error) : present->second;
  if (!entry) return nullptr;
  entry->setSubscriptionFlags(flags);
  _watchedPathEntries.insert_or_assign(path, entry);
  if (isNew) {  // before its first event can come
    entry->generation_ = generation_;
    entry->tags_ = kernel_->tags;
    kernel_->tags->add(entry->tag_, entry);
  }
  error = kernel_->_coreQueueFD->add(entry->watchedFD(), flags, entry->tag_);
  if (error != 0 && isNew) {
    take(path, entry.get());
    return nullptr;
  }
  if (error != 0) entry->setSubscriptionFlags(already);  // it is watched as before
  startWatcherThread();
  return entry;
}

/// Takes the path's entry out of the table; where `entry` is given, only if it is that one.
void FSWatchQueue::take(const std::string& path, const WatchQueuePathEntry* entry) {
  const auto found = _watchedPathEntries.find(path);
  if (found == _watchedPathEntries.end() || (entry && found->second.get() != entry)) return;
  found->second->setRemoved();
  _watchedPathEntries.erase(found);
}

void FSWatchQueue::removePath(const std::optional<std::string>& path) {
  if (!path) return;
  const std::lock_guard lock(lock_);
  take(*path, nullptr);
}

void FSWatchQueue::removeAllPaths() {
  const std::lock_guard lock(lock_);
  for (const auto& [path, entry] : _watchedPathEntries) entry->setRemoved();
  _watchedPathEntries.clear();
  ++generation_;
}

std::uint32_t FSWatchQueue::numberOfWatchedPaths() const {
  const std::lock_guard lock(lock_);
  return static_cast<std::uint32_t>(_watchedPathEntries.size());
}

bool FSWatchQueue::isWatched(const std::string& path) const {
  const std::lock_guard lock(lock_);
  return _watchedPathEntries.contains(path);
}

std::optional<std::string> FSWatchQueue::filePathForFileDescrWithSearchFolderWithRecursive(
    std::int32_t descriptor, const std::string& folder, bool recursive) const {
  const auto wanted = ports_->events->identity(descriptor);
  if (!wanted) return std::nullopt;
  const auto isWanted = [this, &wanted](const WalkedEntry& entry) {
    if (entry.kind() != FileKind::symbolicLink) {
      const auto facts = entry.facts();
      return facts && facts->identity == *wanted;
    }
    const auto target = ports_->files->attributes(entry.path(), true);
    return target && target->facts.identity == *wanted;
  };
  std::optional<std::string> path;
  std::int32_t found = 0;
  walkFolder(*ports_->folders, folder.c_str(), &found, [&](const WalkedEntry& entry) {
    if (isWanted(entry)) {
      path = entry.path();
      found = 1;
    }
    return recursive ? Visit::enter : Visit::pass;
  });
  return path;
}

}  // namespace vantile
