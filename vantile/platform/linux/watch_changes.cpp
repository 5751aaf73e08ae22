#include "vantile/platform/linux/watch_changes.h"

namespace vantile {
namespace {

// Two changes within one tick of the kernel's clock may carry the same time.
constexpr auto clockTick = std::chrono::milliseconds(20);

bool sameOwnerAndMode(const ItemFacts& a, const ItemFacts& b) {
  return a.mode == b.mode && a.owner == b.owner && a.group == b.group;
}

/// IN_ATTRIB stands for a change of attributes, for a name given or taken, and for the last name
/// taken from a file that is still open somewhere.
std::uint32_t attributeChanges(const ItemFacts& known, const std::optional<ItemFacts>& now,
                               bool elsewhere) {
  if (!now && (elsewhere || known.kind == FileKind::folder)) return attributesChanged;
  if (!now) return known.links > 1 ? linkCountChanged : fileDeleted;
  if (now->links == known.links) return attributesChanged;
  return linkCountChanged | (sameOwnerAndMode(known, *now) ? 0u : attributesChanged);
}

}  // namespace

std::uint32_t eventsFor(FileKind kind, std::uint32_t changes) {
  const auto wants = [changes](std::uint32_t bits) { return (changes & bits) != 0; };
  const bool folder = kind == FileKind::folder;
  std::uint32_t events = 0;
  if (wants(fileDeleted)) events |= IN_DELETE_SELF;
  if (wants(fileRenamed)) events |= IN_MOVE_SELF;
  if (wants(attributesChanged)) events |= IN_ATTRIB;
  if (folder && wants(fileWritten | linkCountChanged)) events |= entryEvents;
  if (!folder && wants(fileWritten | fileGrew)) events |= IN_MODIFY;
  if (!folder && wants(linkCountChanged | fileDeleted)) events |= IN_ATTRIB;
  if (events & IN_ATTRIB) events |= IN_MOVE_SELF;  // or a rename would look like a lost name
  // There must be some; unmounting is told of in any case.
  return events != 0 ? events : IN_DELETE_SELF;
}

std::uint32_t changesOf(std::uint32_t arrived, const ItemFacts& known,
                        const std::optional<ItemFacts>& now, bool elsewhere) {
  std::uint32_t changes = 0;
  if (arrived & IN_UNMOUNT) changes |= accessRevoked;
  if (arrived & (IN_MODIFY | entryEvents)) changes |= fileWritten;
  if ((arrived & IN_MODIFY) && now && now->bytes > known.bytes) changes |= fileGrew;
  if ((arrived & entryEvents) && now && now->links != known.links) changes |= linkCountChanged;
  // Of a file that is gone, IN_ATTRIB told that its name was taken.
  if (arrived & IN_DELETE_SELF) return changes | fileDeleted;
  if (arrived & IN_ATTRIB) changes |= attributeChanges(known, now, elsewhere);
  return changes;
}

std::uint32_t eventsBetween(const ItemFacts& known, const ItemFacts& now) {
  const bool written = now.modified != known.modified || now.bytes != known.bytes ||
                       now.modified + clockTick > known.lookedAt;
  std::uint32_t events = 0;
  if (written) events |= now.kind == FileKind::folder ? entryEvents : IN_MODIFY;
  if (now.links != known.links && now.kind != FileKind::folder) events |= IN_ATTRIB;
  if (!sameOwnerAndMode(known, now) || (!written && now.changed != known.changed))
    events |= IN_ATTRIB;
  return events;
}

}  // namespace vantile
