#include "vantile/platform/linux/watch_changes.h"

#include <gtest/gtest.h>

namespace vantile {
namespace {

using namespace std::chrono_literals;

/// A file of ten bytes and one name, last changed long before it was looked at.
ItemFacts file() {
  ItemFacts facts;
  facts.identity = {1, 2};
  facts.kind = FileKind::regular;
  facts.bytes = 10;
  facts.links = 1;
  facts.mode = 0100644;
  facts.modified = facts.changed = ItemFacts::Moment(100s);
  facts.lookedAt = ItemFacts::Moment(200s);
  return facts;
}

ItemFacts folder() {
  auto facts = file();
  facts.kind = FileKind::folder;
  facts.links = 2;
  return facts;
}

template <class Change>
ItemFacts with(ItemFacts facts, Change change) {
  change(facts);
  return facts;
}

TEST(WatchChanges, AFileIsAskedForNoMoreEventsThanItsChangesTake) {
  EXPECT_EQ(eventsFor(FileKind::regular, fileWritten), IN_MODIFY);
  EXPECT_EQ(eventsFor(FileKind::regular, fileGrew), IN_MODIFY);
  EXPECT_EQ(eventsFor(FileKind::regular, fileRenamed), IN_MOVE_SELF);
  // The last name of a file that is open elsewhere goes with IN_ATTRIB.
  EXPECT_EQ(eventsFor(FileKind::regular, fileDeleted), IN_DELETE_SELF | IN_ATTRIB | IN_MOVE_SELF);
  EXPECT_EQ(eventsFor(FileKind::regular, linkCountChanged), IN_ATTRIB | IN_MOVE_SELF);
  EXPECT_EQ(eventsFor(FileKind::regular, attributesChanged), IN_ATTRIB | IN_MOVE_SELF);
}

TEST(WatchChanges, AFolderIsAskedForWhatBecomesOfItsEntries) {
  EXPECT_EQ(eventsFor(FileKind::folder, fileWritten), entryEvents);
  EXPECT_EQ(eventsFor(FileKind::folder, linkCountChanged), entryEvents);
  EXPECT_EQ(eventsFor(FileKind::folder, fileDeleted), IN_DELETE_SELF);
}

TEST(WatchChanges, AWatchForUnmountingAloneStillHasAnEvent) {
  EXPECT_NE(eventsFor(FileKind::regular, accessRevoked), 0u);
}

TEST(WatchChanges, AFileThatWasWrittenToGrewIfItIsLonger) {
  const auto longer = with(file(), [](auto& facts) { facts.bytes = 11; });
  const auto shorter = with(file(), [](auto& facts) { facts.bytes = 9; });
  EXPECT_EQ(changesOf(IN_MODIFY, file(), longer, false), fileWritten | fileGrew);
  EXPECT_EQ(changesOf(IN_MODIFY, file(), file(), false), fileWritten);
  EXPECT_EQ(changesOf(IN_MODIFY, file(), shorter, false), fileWritten);
  EXPECT_EQ(changesOf(IN_MODIFY, file(), std::nullopt, true), fileWritten);
}

TEST(WatchChanges, AFolderWhoseEntryCameOrWentWasWrittenTo) {
  for (const unsigned event :
       {IN_CREATE + 0u, IN_DELETE + 0u, IN_MOVED_FROM + 0u, IN_MOVED_TO + 0u})
    EXPECT_EQ(changesOf(event, folder(), folder(), false), fileWritten);
  const auto fuller = with(folder(), [](auto& facts) { facts.links = 3; });
  EXPECT_EQ(changesOf(IN_CREATE, folder(), fuller, false), fileWritten | linkCountChanged);
}

TEST(WatchChanges, AttributesAndLinkCountsAreToldApart) {
  const auto linked = with(file(), [](auto& facts) { facts.links = 2; });
  const auto both = with(linked, [](auto& facts) { facts.mode = 0100600; });
  EXPECT_EQ(changesOf(IN_ATTRIB, file(), file(), false), attributesChanged);
  EXPECT_EQ(changesOf(IN_ATTRIB, file(), linked, false), linkCountChanged);
  EXPECT_EQ(changesOf(IN_ATTRIB, linked, file(), false), linkCountChanged);
  EXPECT_EQ(changesOf(IN_ATTRIB, file(), both, false), linkCountChanged | attributesChanged);
  for (const auto change : {&ItemFacts::owner, &ItemFacts::group}) {
    const auto given = with(linked, [change](auto& facts) { facts.*change = 7; });
    EXPECT_EQ(changesOf(IN_ATTRIB, file(), given, false), linkCountChanged | attributesChanged);
  }
}

TEST(WatchChanges, TheLastNameOfAFileIsItsDeletionThoughItIsOpenElsewhere) {
  EXPECT_EQ(changesOf(IN_ATTRIB, file(), std::nullopt, false), fileDeleted);
  const auto twice = with(file(), [](auto& facts) { facts.links = 2; });
  EXPECT_EQ(changesOf(IN_ATTRIB, twice, std::nullopt, false), linkCountChanged);
}

TEST(WatchChanges, OfAFileThatIsElsewhereAttributesAreAllThatCanBeTold) {
  EXPECT_EQ(changesOf(IN_ATTRIB, file(), std::nullopt, true), attributesChanged);
}

TEST(WatchChanges, AFolderHasNoSecondNameToLose) {
  EXPECT_EQ(changesOf(IN_ATTRIB, folder(), std::nullopt, false), attributesChanged);
}

TEST(WatchChanges, ADeletionTakesTheLastNameWithIt) {
  EXPECT_EQ(changesOf(IN_ATTRIB | IN_DELETE_SELF, file(), std::nullopt, false), fileDeleted);
  EXPECT_EQ(changesOf(IN_ATTRIB | IN_DELETE_SELF, file(), std::nullopt, true), fileDeleted);
  EXPECT_EQ(changesOf(IN_MODIFY | IN_DELETE_SELF, file(), std::nullopt, false),
            fileWritten | fileDeleted);
}

TEST(WatchChanges, UnmountingRevokesAccess) {
  EXPECT_EQ(changesOf(IN_UNMOUNT | IN_IGNORED, file(), std::nullopt, false), accessRevoked);
}

TEST(WatchChanges, WhatLooksTheSameHasLostNoEvents) {
  EXPECT_EQ(eventsBetween(file(), file()), 0u);
  EXPECT_EQ(eventsBetween(folder(), folder()), 0u);
}

TEST(WatchChanges, WhatWasModifiedSinceHasLostThat) {
  const auto later = [](auto& facts) { facts.modified = facts.changed = ItemFacts::Moment(150s); };
  EXPECT_EQ(eventsBetween(file(), with(file(), later)), IN_MODIFY);
  EXPECT_EQ(eventsBetween(folder(), with(folder(), later)), entryEvents);
  EXPECT_EQ(eventsBetween(file(), with(file(), [](auto& facts) { facts.bytes = 1; })), IN_MODIFY);
}

TEST(WatchChanges, WhatWasLookedAtInTheTickOfItsChangeMayHaveChangedAgain) {
  const auto fresh =
      with(file(), [](auto& facts) { facts.lookedAt = ItemFacts::Moment(100s) + 1ms; });
  EXPECT_EQ(eventsBetween(fresh, fresh), IN_MODIFY);
  const auto old = with(file(), [](auto& facts) { facts.lookedAt = ItemFacts::Moment(101s); });
  EXPECT_EQ(eventsBetween(old, old), 0u);
}

TEST(WatchChanges, OtherAttributesOrNamesHaveLostThat) {
  EXPECT_EQ(eventsBetween(file(), with(file(), [](auto& facts) { facts.mode = 0100600; })),
            IN_ATTRIB);
  EXPECT_EQ(eventsBetween(file(), with(file(), [](auto& facts) { facts.links = 2; })), IN_ATTRIB);
  EXPECT_EQ(eventsBetween(
                file(), with(file(), [](auto& facts) { facts.changed = ItemFacts::Moment(101s); })),
            IN_ATTRIB);
  // The links of a folder are its folders.
  EXPECT_EQ(eventsBetween(folder(), with(folder(), [](auto& facts) { facts.links = 3; })), 0u);
}

}  // namespace
}  // namespace vantile
