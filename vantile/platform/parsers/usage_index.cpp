#include "vantile/platform/parsers/usage_index.h"

#include <algorithm>
#include <utility>

#include "vantile/platform/parsers/packed_contents.h"

namespace vantile {
namespace {

/// What stands behind the name.
std::string_view contentsPart(std::string_view packed) {
  const auto end = packed.find('\0');
  return end == packed.npos ? std::string_view() : packed.substr(end + 1);
}

}  // namespace

std::string_view UsageIndex::name(Number folder) const {
  return folders_[folder].packed.c_str();
}

FolderContents UsageIndex::contents(Number folder) const {
  return contentsIn(contentsPart(packed(folder))).value_or(FolderContents());
}

std::string_view UsageIndex::files(Number folder) const {
  return filesIn(contentsPart(packed(folder)));
}

void UsageIndex::setContents(Number folder, std::uint64_t stamp, const FolderContents& contents) {
  Folder& changed = folders_[folder];
  drop(this->contents(folder));
  std::string packed(name(folder));
  packed.push_back('\0');
  appendPacked(packed, contents);
  packed.shrink_to_fit();
  changed.packed = std::move(packed);
  changed.stamp = stamp;
  // As it is kept: what is dropped one day has to be what was taken.
  take(this->contents(folder));
}

void UsageIndex::setFolders(Number folder, std::string_view names) {
  std::unordered_map<std::string_view, Number> before;
  for (auto at = first(folder), after = none; at != none; at = after) {
    after = next(at);
    if (!before.emplace(name(at), at).second) release(at);
  }
  auto last = none;
  folders_[folder].first = none;
  forEachName(names, [&](std::string_view each) {
    const auto known = before.extract(each);
    const auto number = known ? known.mapped() : make(each);
    (last == none ? folders_[folder].first : folders_[last].next) = number;
    last = number;
  });
  if (last != none) folders_[last].next = none;
  for (const auto& [gone, number] : before) release(number);
}

void UsageIndex::clear(Number folder) {
  if (stamp(folder) == 0 && first(folder) == none && contentsPart(packed(folder)).empty()) return;
  setFolders(folder, {});
  setContents(folder, 0, {});
}

UsageIndex::Number UsageIndex::addPacked(Number parent, Number previous, std::uint64_t stamp,
                                         std::string_view packed) {
  const auto folderName = packed.substr(0, packed.find('\0'));
  const auto contents = contentsIn(contentsPart(packed));
  const bool isRoot = parent == none;
  if (!contents || folderName.size() == packed.size() || isRoot == isEntryName(folderName))
    return none;
  const auto number = isRoot ? root : make(folderName);
  if (!isRoot) (previous == none ? folders_[parent].first : folders_[previous].next) = number;
  setContents(number, stamp, *contents);
  return number;
}

UsageIndex::Number UsageIndex::make(std::string_view name) {
  auto number = static_cast<Number>(folders_.size());
  if (free_.empty()) {
    folders_.emplace_back();
  } else {
    number = free_.back();
    free_.pop_back();
  }
  std::string packed;
  packed.reserve(name.size() + 1);
  folders_[number].packed = std::move(packed.append(name).append(1, '\0'));
  return number;
}

/// With all below, however deep.
void UsageIndex::release(Number folder) {
  std::vector<Number> going = {folder};
  while (!going.empty()) {
    const auto number = going.back();
    going.pop_back();
    for (auto at = first(number); at != none; at = next(at)) going.push_back(at);
    drop(contents(number));
    folders_[number] = Folder();
    free_.push_back(number);
  }
}

void UsageIndex::take(const FolderContents& contents) {
  for (std::size_t kind = 0; kind < usageKinds; ++kind) total_[kind] += contents.blocks[kind];
  for (const auto& file : contents.linked)
    change(file, [&file](Names& names) {
      names.blocks = file.blocks;
      ++names.known[static_cast<std::size_t>(file.kind)];
    });
}

void UsageIndex::drop(const FolderContents& contents) {
  for (std::size_t kind = 0; kind < usageKinds; ++kind) total_[kind] -= contents.blocks[kind];
  for (const auto& file : contents.linked)
    change(file, [&file](Names& names) { --names.known[static_cast<std::size_t>(file.kind)]; });
}

/// Changes what is known of a file of several names, and what it counts for.
template <class Change>
void UsageIndex::change(const LinkedFile& file, Change change) {
  Names& names = linked_[file.inode];
  const auto counted = [this, &names]() -> std::uint64_t* {
    for (std::size_t kind = 0; kind < usageKinds; ++kind)
      if (names.known[kind] > 0) return &total_[kind];
    return nullptr;
  };
  if (auto* const sum = counted()) *sum -= names.blocks;
  change(names);
  if (auto* const sum = counted()) {
    *sum += names.blocks;
  } else {
    linked_.erase(file.inode);
  }
}

}  // namespace vantile
