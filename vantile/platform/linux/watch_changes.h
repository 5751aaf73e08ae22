#pragma once

#include <sys/inotify.h>

#include <chrono>
#include <cstdint>
#include <optional>

#include "vantile/platform/file_events.h"

namespace vantile {

/// What a watched item was like when it was last looked at.
struct ItemFacts {
  using Moment = std::chrono::sys_time<std::chrono::nanoseconds>;

  FileIdentity identity;
  FileKind kind = FileKind::other;
  std::uint64_t bytes = 0, links = 0;
  std::uint32_t mode = 0, owner = 0, group = 0;
  Moment modified, changed;  ///< contents; contents or attributes
  Moment lookedAt;           ///< when these facts were taken
};

/// What came of a folder's entries: that, and nothing else of theirs, is the folder being written
/// to.
constexpr std::uint32_t entryEvents = IN_CREATE | IN_DELETE | IN_MOVED_FROM | IN_MOVED_TO;

/// The inotify events that are needed to tell an item's `changes` (bits of FileChange).
std::uint32_t eventsFor(FileKind kind, std::uint32_t changes);

/// The changes that the inotify events `arrived` of one item make, but for its having been renamed,
/// which is a matter of its path. `known` is what it was like before, `now` what it is like, if it
/// is at its path; otherwise `elsewhere` tells whether it, or a folder above, may have been
/// renamed.
std::uint32_t changesOf(std::uint32_t arrived, const ItemFacts& known,
                        const std::optional<ItemFacts>& now, bool elsewhere);

/// The inotify events that must have been lost when an item that was like `known` is like `now`.
std::uint32_t eventsBetween(const ItemFacts& known, const ItemFacts& now);

}  // namespace vantile
