#pragma once

#include <chrono>
#include <cstddef>
#include <cstdint>
#include <deque>
#include <memory>
#include <mutex>
#include <optional>
#include <string>
#include <unordered_map>
#include <vector>

#include "vantile/platform/file_events.h"
#include "vantile/platform/linux/roots.h"
#include "vantile/platform/linux/watch_changes.h"
#include "vantile/platform/posix/descriptor.h"

namespace vantile {

class WatchedItems;

/// A queue of file events on one inotify instance.
///
/// inotify watches inodes; a queue watches items, several of which may be one inode under different
/// names. So each inode has one watch with the events that any of its items needs, and each item
/// keeps the changes that it has not told of yet.
class InotifyQueue final : public FileEventQueue,
                           public std::enable_shared_from_this<InotifyQueue> {
 public:
  /// Null when there is no instance left; `error` tells.
  static std::shared_ptr<InotifyQueue> make(std::shared_ptr<WatchedItems> items, LinuxRoots roots,
                                            int& error);

  int add(int watched, std::uint32_t changes, std::uint64_t tag) override;
  std::optional<FileEvent> wait(std::chrono::nanoseconds timeout) override;
  void delivered(std::uint64_t tag) override;
  void interrupt() override;
  int close() override;

  /// Ends the watch of an item.
  void drop(int watched);
  void standsAt(int watched, const std::string& path);

 private:
  struct Item {
    std::uint64_t tag = 0;
    std::uint32_t wanted = 0;   // changes
    std::uint32_t pending = 0;  // changes that were not told yet
    bool inReady = false;
    bool taken = false;  // an event was given and not yet taken up
    int watch = -1;
    bool away = false;  // it has left its path, and that was told
    std::string path = {};
    std::optional<FileIdentity> folder = {};  // that its path leads through
  };
  struct Watch {
    ItemFacts known;
    std::vector<int> items = {};
    std::uint32_t arrived = 0;  // events of this round
    bool gone = false;          // its deletion was told
  };

  InotifyQueue(std::shared_ptr<WatchedItems> items, LinuxRoots roots, Descriptor instance,
               Descriptor wakeup);

  int watchInode(const Descriptor& pin, FileKind kind, std::uint32_t changes);
  int widen(int watched, std::uint32_t changes);
  void takeIn();
  void takeApart(std::size_t size);
  void arrive(int watch, std::uint32_t events);
  void lookAtAllAgain();
  std::uint32_t lostEvents(const Watch& watch) const;
  void tellOf(int watch);
  void forget(int watch);
  void push(int watched, Item& item, std::uint32_t changes);
  std::optional<FileEvent> nextReady();
  void wake();
  void clearWakeup();

  const std::shared_ptr<WatchedItems> table_;
  const LinuxRoots roots_;
  const Descriptor wakeup_;

  std::mutex mutex_;  // over all below
  Descriptor instance_;
  bool interrupted_ = false;
  bool overflowed_ = false;
  std::unordered_map<int, Item> items_;  // by the number that stands for it
  std::unordered_map<std::uint64_t, int> tags_;
  std::unordered_map<int, Watch> watches_;  // by inotify's number
  std::vector<int> touched_;                // watches with events of this round
  std::deque<int> ready_;                   // items that have something to tell
  std::vector<char> buffer_;                // what is read of inotify at once
};

}  // namespace vantile
