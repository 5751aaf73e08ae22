#pragma once

#include <cstddef>
#include <memory>
#include <mutex>
#include <optional>
#include <string>
#include <unordered_map>

#include "vantile/platform/folder_reader.h"
#include "vantile/platform/posix/descriptor.h"

namespace vantile {

class InotifyQueue;

/// An item that was opened to be watched: what its queue takes over when it is added.
struct OpenedItem {
  Descriptor pin;  ///< O_PATH, holds the inode until it is watched
  FileIdentity identity;
  FileKind kind = FileKind::other;
  std::string path;
};

/// The numbers that stand for watched items. Any thread.
class WatchedItems {
 public:
  /// Opens what is at `path`; the negative of the error number when it can't be.
  int open(const std::string& path);
  /// Forgets the number; the queue that watches the item, if one does.
  std::shared_ptr<InotifyQueue> close(int token);

  /// Nothing once the item is gone.
  std::optional<FileIdentity> identity(int token) const;
  void setGone(int token);
  /// Gives out what was opened, once, for `queue` to watch; without a pin when it was given out
  /// before.
  std::optional<OpenedItem> takeFor(const std::shared_ptr<InotifyQueue>& queue, int token);
  std::shared_ptr<InotifyQueue> queueOf(int token) const;
  std::size_t size() const;

 private:
  struct Item {
    OpenedItem opened;
    std::weak_ptr<InotifyQueue> queue;
    bool gone = false;
  };

  mutable std::mutex mutex_;
  std::unordered_map<int, Item> items_;
  int next_ = 0;  // from firstToken
};

}  // namespace vantile
