#pragma once

#include <chrono>
#include <cstdint>
#include <memory>
#include <optional>
#include <string>

#include "vantile/foundation/api.h"
#include "vantile/platform/folder_reader.h"

namespace vantile {

/// What can happen to a watched file or folder, as bits that are summed: kqueue's NOTE_* values.
/// A folder is written to when an entry of it comes, goes or is renamed, not when an entry's own
/// contents change.
enum FileChange : std::uint32_t {
  fileDeleted = 0x01,  ///< its last name went
  fileWritten = 0x02,
  fileGrew = 0x04,  ///< regular files alone
  attributesChanged = 0x08,
  linkCountChanged = 0x10,  ///< a name was given to it or taken, but for the last
  fileRenamed = 0x20,       ///< it left its path for another one
  accessRevoked = 0x40,     ///< its volume was unmounted
};

/// Something happened to one watched item.
struct FileEvent {
  std::uint64_t tag = 0;      ///< given when the item was added
  std::uint32_t changes = 0;  ///< bits of FileChange, of those subscribed to
};

/// A queue of the kernel's file events. `wait` and `close` are for one thread, the rest for any.
/// Changes of one item are merged until they are waited for. A watch ends when its item is closed.
class FileEventQueue {
 public:
  virtual ~FileEventQueue() = default;

  /// Watches the opened item `watched` for `changes`, or, where this queue watches it already, for
  /// these instead. Events carry `tag`. 0, or the system's error number; then nothing is watched.
  /// macOS: kevent EV_ADD | EV_ENABLE | EV_CLEAR, whose result is not looked at. Linux: a watch on
  /// the very inode that was opened; ENOSPC when the user has no more watches.
  virtual int add(int watched, std::uint32_t changes, std::uint64_t tag) = 0;

  /// The next event; nothing when none came in `timeout`, or on an interrupt. It may also come
  /// back early with nothing.
  /// macOS: kevent, one event. Linux: all that inotify has is taken in, the first item's given.
  virtual std::optional<FileEvent> wait(std::chrono::nanoseconds timeout) = 0;

  /// Tells that the latest event with this tag was taken up.
  /// macOS: nothing to do. Linux: until then no other event with the tag is given; what happens
  /// meanwhile is merged, so that a burst is a few events however slowly they are taken up.
  virtual void delivered(std::uint64_t tag) = 0;

  /// Ends a wait in progress, or else the next one, at once.
  /// macOS: EVFILT_USER. Linux: an eventfd.
  virtual void interrupt() = 0;

  /// Closes the queue, and with it all its watches. 0, or the system's error number.
  virtual int close() = 0;
};

/// The kernel's file events. Any thread.
///
/// An item that is to be watched is opened first and stands for itself from then on, whatever it is
/// called. macOS: a descriptor, O_EVTONLY. Linux: a number from 2^30 up that is no descriptor, for
/// the item's device and inode: a descriptor held on an item would keep its removal from being
/// reported and its volume busy. One is held from `open` until the item is added, no longer.
class FileEvents {
 public:
  /// Where the numbers begin that stand for items without being descriptors.
  static constexpr int firstToken = 1 << 30;

  virtual ~FileEvents() = default;

  /// A new queue, or null; then `error` is the system's error number.
  /// macOS: kqueue. Linux: inotify_init1.
  virtual std::shared_ptr<FileEventQueue> newQueue(int& error) = 0;

  /// Opens what is at `path` to be watched, a symbolic link followed; the negative of the system's
  /// error number when it can't be. macOS: open, O_EVTONLY. Linux: open, O_PATH.
  virtual int open(const std::string& path) = 0;

  /// Closes an item, or a descriptor; its watches end. What is neither is ignored.
  virtual void close(int watched) = 0;

  /// Tells where an item is now, which its queue may look at to tell apart what happened to it.
  /// macOS: nothing to do. Linux: link counts, sizes and renames are read from the path.
  virtual void standsAt(int watched, const std::string& path) = 0;

  /// The file that an item or a descriptor stands for; nothing for what is neither.
  /// macOS: fstat. Linux: of an item, what fstat said when it was opened; nothing once it was told
  /// as deleted, since another file may get its inode then.
  virtual std::optional<FileIdentity> identity(int watched) = 0;

  /// The name and present value of the limit behind an error number, "fs.inotify.max_user_watches
  /// is 65536"; nothing when the error is not a limit's.
  virtual std::optional<std::string> limitBehind(int error) = 0;
};

/// The machine's file events, shared by the process.
VANTILE_API std::shared_ptr<FileEvents> systemFileEvents();

}  // namespace vantile
