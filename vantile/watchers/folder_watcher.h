#pragma once

#include <atomic>
#include <cstdint>
#include <memory>
#include <mutex>
#include <string>

#include "vantile/foundation/api.h"
#include "vantile/watchqueue/watch_queue.h"

namespace vantile {

struct WatcherPorts;

/// What the watchers of folders have in common: a queue of their own, the caller's stop flag, and
/// one lock. Events come on the main thread, `startWatch` and `stopWatch` on any: the lock holds
/// their work apart, and is not held while a delegate is called.
class VANTILE_API FolderWatcher : public std::enable_shared_from_this<FolderWatcher> {
 public:
  virtual ~FolderWatcher();
  FolderWatcher(const FolderWatcher&) = delete;
  FolderWatcher& operator=(const FolderWatcher&) = delete;

 protected:
  FolderWatcher();

  /// Makes `listener` the queue's delegate.
  void listen(FSWatchQueueDelegate listener);
  /// An operation of this watcher as one of that delegate. It holds the watcher weakly.
  template <class Watcher, class... Arguments>
  auto calling(void (Watcher::*operation)(FSWatchQueue&, const Arguments&...)) {
    return [operation, weak = weak_from_this()](FSWatchQueue& queue, const Arguments&... what) {
      if (const auto self = weak.lock()) (static_cast<Watcher&>(*self).*operation)(queue, what...);
    };
  }

  /// Keeps the caller's flag and takes events up again.
  void begin(std::int32_t* stop);
  /// Writes 1 into the caller's flag, which ends a traversal in progress, and lets the events that
  /// are still on their way go by.
  void end();
  bool ended() const { return ended_; }
  /// How often it has ended: work that waits belongs to the watch that it was begun in.
  std::uint32_t ends() const { return ends_; }
  std::int32_t* stopFlag() const { return _isStop; }

  bool exists(const std::string& path) const;
  /// Watches a path for the changes `flags`. Without a queue, nothing is watched.
  void watch(const std::string& path, std::uint32_t flags);
  void unwatch(const std::string& path);
  void unwatchAll();

  const std::unique_ptr<const WatcherPorts> ports_;
  const std::shared_ptr<FSWatchQueue> watchQueue;
  mutable std::recursive_mutex work_;

 private:
  std::atomic<std::int32_t*> _isStop = nullptr;
  std::atomic<bool> ended_ = false;
  std::atomic<std::uint32_t> ends_ = 0;
};

}  // namespace vantile
