#pragma once

#include <cstdint>
#include <memory>
#include <mutex>
#include <string>

#include "vantile/foundation/api.h"

namespace vantile {

class EntryTags;
class FileEvents;

/// A path that a queue watches, and what stands for the file or folder that was there when the
/// entry was made. The watch hangs on that: when the entry goes, the watch goes. Any thread.
class VANTILE_API WatchQueuePathEntry {
 public:
  /// Opens what is at `path` to be watched for the changes `subscriptionFlags` (the bits of
  /// watch_queue.h), a symbolic link followed; null when it can't be opened.
  static std::shared_ptr<WatchQueuePathEntry> initWithPathAndSubscriptionFlags(
      std::string path, std::uint32_t subscriptionFlags);

  ~WatchQueuePathEntry();
  WatchQueuePathEntry(const WatchQueuePathEntry&) = delete;
  WatchQueuePathEntry& operator=(const WatchQueuePathEntry&) = delete;

  /// The absolute path under which the queue keeps the entry.
  std::string path() const;
  void setPath(std::string path);

  /// What the watch hangs on; -1 for nothing. macOS: a descriptor that takes no part in keeping the
  /// volume busy. Linux: a number from 2^30 up that stands for the item's device and inode, and is
  /// no descriptor.
  std::int32_t watchedFD() const;
  /// Replaces it; the entry closes what it holds at its end.
  void setWatchedFD(std::int32_t watched);

  /// The changes that the entry is registered for.
  std::uint32_t subscriptionFlags() const;
  void setSubscriptionFlags(std::uint32_t flags);

 private:
  friend class FSWatchQueue;

  WatchQueuePathEntry(std::string path, std::int32_t watched, std::uint32_t flags);
  /// As `initWith...`; for null `error` is the system's error number.
  static std::shared_ptr<WatchQueuePathEntry> opened(std::string path, std::uint32_t flags,
                                                     int& error);

  /// What happens to an entry that was removed, and lives on with an event on its way, is kept
  /// back: it is told only should the entry be followed to another path. Whether `changes` are.
  bool keepBack(std::uint32_t changes);
  void setRemoved();
  /// Takes the entry in again; what was kept back meanwhile.
  std::uint32_t setWatched();

  const std::shared_ptr<FileEvents> events_;
  const std::uint64_t tag_;        // by which the kernel's events name the entry
  std::weak_ptr<EntryTags> tags_;  // of the queue that the entry is in
  std::uint64_t generation_ = 0;   // of that queue when it was taken in; under the queue's lock
  mutable std::mutex mutex_;
  std::string _path;
  std::int32_t _watchedFD;
  std::uint32_t _subscriptionFlags;
  bool removed_ = false;
  std::uint32_t keptBack_ = 0;
};

}  // namespace vantile
