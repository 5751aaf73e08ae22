#pragma once

#include <cstdint>
#include <memory>
#include <mutex>
#include <unordered_map>

namespace vantile {

class WatchQueuePathEntry;

/// The entries of a queue by the tags that the kernel's events carry, for as long as an entry
/// lives: one that was removed lives on while an event of it is on its way, and may yet be
/// followed. Any thread.
class EntryTags {
 public:
  void add(std::uint64_t tag, const std::shared_ptr<WatchQueuePathEntry>& entry) {
    const std::lock_guard lock(mutex_);
    entries_.insert_or_assign(tag, entry);
  }
  void remove(std::uint64_t tag) {
    const std::lock_guard lock(mutex_);
    entries_.erase(tag);
  }
  /// Null when the entry is gone by the time that its event comes.
  std::shared_ptr<WatchQueuePathEntry> find(std::uint64_t tag) const {
    const std::lock_guard lock(mutex_);
    const auto found = entries_.find(tag);
    return found == entries_.end() ? nullptr : found->second.lock();
  }

 private:
  mutable std::mutex mutex_;
  std::unordered_map<std::uint64_t, std::weak_ptr<WatchQueuePathEntry>> entries_;
};

}  // namespace vantile
