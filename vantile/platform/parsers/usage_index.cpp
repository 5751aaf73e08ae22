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

std::string withEnd(std::string_view name) {
  std::string packed;
  packed.reserve(name.size() + 1);
  packed.append(name).push_back('\0');
  return packed;
}

/// Behind what was written.
char* write(std::string_view text, char* to) {
  return to + text.copy(to, text.size());
}

}  // namespace

void NameList::append(std::string_view name) {
  constexpr std::size_t pieceSize = 65536;
  if (pieces_.empty() || pieces_.back().size() + name.size() >= pieceSize) {
    const bool areMany = !pieces_.empty();
    pieces_.emplace_back();
    if (areMany) pieces_.back().reserve(pieceSize);
  }
  pieces_.back().append(name).push_back('\0');
  size_ += name.size() + 1;
}

void NameList::add(std::string piece) {
  size_ += piece.size();
  pieces_.push_back(std::move(piece));
}

void NameList::moveTo(char* text) {
  for (auto& piece : pieces_) text = write(std::exchange(piece, std::string()), text);
  clear();
}

void NameList::clear() {
  pieces_.clear();
  size_ = 0;
}

std::string_view UsageIndex::name(Number folder) const {
  const auto text = packed(folder);
  return text.substr(0, text.find('\0'));
}

FolderContents UsageIndex::contents(Number folder) const {
  return contentsIn(contentsPart(packed(folder))).value_or(FolderContents());
}

FolderSums UsageIndex::sums(Number folder) const {
  return sumsIn(contentsPart(packed(folder)));
}

std::string_view UsageIndex::files(Number folder) const {
  return filesIn(contentsPart(packed(folder)));
}

void UsageIndex::setContents(Number folder, std::uint64_t stamp, const FolderContents& contents) {
  setContents(folder, stamp, contents, NameList(contents.files));
}

void UsageIndex::setContents(Number folder, std::uint64_t stamp, const FolderSums& sums,
                             NameList files) {
  Folder& changed = folders_[folder];
  drop(this->sums(folder));
  auto begin = withEnd(name(folder));
  if (files.size() > 0 || sums != FolderSums()) appendPacked(begin, sums);
  changed.packed = CompactText();  // first: there may be many names
  changed.packed = CompactText(begin.size() + files.size());
  files.moveTo(write(begin, changed.packed.data()));
  changed.stamp = stamp;
  // As it is kept: what is dropped one day has to be what was taken.
  take(this->sums(folder));
}

void UsageIndex::setSums(Number folder, const FolderSums& sums) {
  drop(this->sums(folder));
  std::string numbers;
  appendPacked(numbers, sums);
  const auto begin = withEnd(name(folder));
  const auto names = files(folder);
  CompactText packed(begin.size() + numbers.size() + names.size());
  write(names, write(numbers, write(begin, packed.data())));
  folders_[folder].packed = std::move(packed);
  take(this->sums(folder));
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
    const auto number = known ? known.mapped() : make(CompactText(withEnd(each)));
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
  const auto end = packed.find('\0');
  const bool isRoot = parent == none;
  if (end == packed.npos || isRoot == isEntryName(packed.substr(0, end)) ||
      !isPackedContents(contentsPart(packed)))
    return none;
  if (isRoot) {
    drop(this->sums(root));
    folders_[root].packed = CompactText(packed);
  }
  const auto number = isRoot ? root : make(CompactText(packed));
  if (!isRoot) (previous == none ? folders_[parent].first : folders_[previous].next) = number;
  folders_[number].stamp = stamp;
  take(sums(number));
  return number;
}

UsageIndex::Number UsageIndex::make(CompactText packed) {
  auto number = static_cast<Number>(folders_.size());
  if (free_.empty()) {
    folders_.emplace_back();
  } else {
    number = free_.back();
    free_.pop_back();
  }
  folders_[number].packed = std::move(packed);
  return number;
}

/// With all below, however deep.
void UsageIndex::release(Number folder) {
  std::vector<Number> going = {folder};
  while (!going.empty()) {
    const auto number = going.back();
    going.pop_back();
    for (auto at = first(number); at != none; at = next(at)) going.push_back(at);
    drop(sums(number));
    Folder gone;
    std::swap(folders_[number], gone);  // with its memory
    free_.push_back(number);
  }
}

void UsageIndex::take(const FolderSums& sums) {
  for (std::size_t kind = 0; kind < usageKinds; ++kind) total_[kind] += sums.blocks[kind];
  for (const auto& file : sums.linked)
    change(file, [&file](Names& names) {
      names.blocks = file.blocks;
      ++names.known[static_cast<std::size_t>(file.kind)];
    });
}

void UsageIndex::drop(const FolderSums& sums) {
  for (std::size_t kind = 0; kind < usageKinds; ++kind) total_[kind] -= sums.blocks[kind];
  for (const auto& file : sums.linked)
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
