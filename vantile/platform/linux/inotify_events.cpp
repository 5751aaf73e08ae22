// How a queue takes in what inotify tells, and makes up for what it lost.

#include <sys/inotify.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>
#include <string>
#include <unordered_set>
#include <utility>

#include "vantile/foundation/log.h"
#include "vantile/platform/linux/inotify_queue.h"
#include "vantile/platform/linux/item_facts.h"
#include "vantile/platform/linux/watched_items.h"
#include "vantile/platform/parsers/inotify_watches.h"
#include "vantile/platform/parsers/text.h"
#include "vantile/platform/posix/files.h"

namespace vantile {
namespace {

constexpr int mostReads = 64;  // before what came in is told
constexpr std::size_t longestWatchList = 256u << 20;

/// Keeps those facts of `now` that an event told of. Others may have changed by something whose
/// event is lost, and are to be found different then.
void learn(ItemFacts& known, const ItemFacts& now, std::uint32_t arrived) {
  if (arrived & (IN_MODIFY | entryEvents)) {
    known.bytes = now.bytes;
    known.modified = now.modified;
    known.lookedAt = now.lookedAt;
  }
  if (arrived & (IN_ATTRIB | entryEvents)) known.links = now.links;
  if (arrived & IN_ATTRIB) {
    known.mode = now.mode;
    known.owner = now.owner;
    known.group = now.group;
    known.changed = now.changed;
  }
}

}  // namespace

/// Takes in what inotify has, without waiting.
void InotifyQueue::takeIn() {
  for (int reads = 0; reads < mostReads; ++reads) {
    const auto size = ::read(instance_.get(), buffer_.data(), buffer_.size());
    if (size < 0 && errno == EINTR) continue;
    if (size <= 0) break;
    takeApart(static_cast<std::size_t>(size));
  }
  if (std::exchange(overflowed_, false)) lookAtAllAgain();
  for (const int watch : std::exchange(touched_, {})) tellOf(watch);
}

void InotifyQueue::takeApart(std::size_t size) {
  inotify_event event = {};
  for (std::size_t next = 0; next + sizeof event <= size; next += sizeof event + event.len) {
    std::memcpy(&event, buffer_.data() + next, sizeof event);
    if (event.mask & IN_Q_OVERFLOW) overflowed_ = true;
    // An event with a name is an entry's: its coming and going is the folder's, no more.
    arrive(event.wd, event.len > 0 ? event.mask & entryEvents : event.mask);
  }
}

void InotifyQueue::arrive(int watch, std::uint32_t events) {
  const auto found = watches_.find(watch);
  if (found == watches_.end() || events == 0) return;  // ended by us; this is what was on its way
  if (found->second.arrived == 0) touched_.push_back(watch);
  found->second.arrived |= events;
}

/// inotify lost events: compares each watched item with what was known of it, so that what was
/// missed is told all the same.
void InotifyQueue::lookAtAllAgain() {
  const auto list =
      contentsOf(roots_.proc + "/self/fdinfo/" + std::to_string(instance_.get()), longestWatchList);
  const auto alive = parseInotifyWatches(list.value_or(""));
  for (const auto& [watch, state] : watches_) {
    const bool ended = list && !alive.contains(watch);
    arrive(watch, ended ? IN_DELETE_SELF | IN_IGNORED : lostEvents(state));
  }
  const auto limit = contentsOf(roots_.sysctl + "/fs/inotify/max_queued_events").value_or("?");
  auto rest = std::string_view(limit);
  logLine(
      "WatchQueue: file events came faster than they were read and some were lost "
      "(fs.inotify.max_queued_events is " +
      std::string(takeLine(rest)) + "); all " + std::to_string(items_.size()) +
      " watched paths were looked at again");
}

std::uint32_t InotifyQueue::lostEvents(const Watch& watch) const {
  std::uint32_t events = 0;
  for (const int watched : watch.items) {
    const auto& item = items_.at(watched);
    const auto now = factsOf(watch.known.identity, item.path);
    if (now) events |= eventsBetween(watch.known, *now);
    if (!now && !item.away) events |= IN_MOVE_SELF;
  }
  return events;
}

/// Tells the watch's items what the events of this round mean.
void InotifyQueue::tellOf(int number) {
  const auto found = watches_.find(number);
  if (found == watches_.end()) return;
  Watch& watch = found->second;
  const auto arrived = std::exchange(watch.arrived, 0);
  std::optional<ItemFacts> now;
  bool elsewhere = true;
  for (const int watched : watch.items) {
    auto& item = items_.at(watched);
    const auto facts = factsOf(watch.known.identity, item.path);
    item.away = !facts && (item.away || (arrived & IN_MOVE_SELF));
    if (facts) now = facts;
    if (item.away && (arrived & IN_MOVE_SELF)) push(watched, item, fileRenamed);
    // A path that still leads through its folder, and not to the item, has lost its name.
    if (!facts && !item.away && folderOf(item.path) == item.folder) elsewhere = false;
  }
  auto changes = changesOf(arrived, watch.known, now, elsewhere);
  if ((changes & fileDeleted) && std::exchange(watch.gone, true)) changes &= ~fileDeleted;
  if (now)
    learn(watch.known, *now, arrived);
  else if (changes & linkCountChanged)
    --watch.known.links;
  for (const int watched : watch.items) {
    if (changes & fileDeleted) table_->setGone(watched);
    push(watched, items_.at(watched), changes);
  }
  if (arrived & IN_IGNORED) forget(number);
}

/// The inode is gone, or its volume is: inotify has ended the watch.
void InotifyQueue::forget(int number) {
  const auto watch = watches_.extract(number);
  for (const int watched : watch.mapped().items) {
    table_->setGone(watched);
    items_.at(watched).watch = -1;
  }
}

}  // namespace vantile
