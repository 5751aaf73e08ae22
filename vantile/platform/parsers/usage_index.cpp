#include "vantile/platform/parsers/usage_index.h"

#include <algorithm>
#include <utility>

#include "vantile/platform/parsers/packed_contents.h"

namespace vantile {
namespace {

/// Of names that are read in one go.
constexpr std::uint64_t pieceSize = 65536;

}  // namespace

/// What stands behind a folder's name and the NUL.
struct UsageIndex::Contents : PackedContents {
  std::uint64_t namesAt = 0;  // in the list of all names
};

std::string_view UsageIndex::name(Number folder) const {
  const auto text = folders_[folder].packed.view();
  return text.substr(0, text.find('\0'));
}

UsageIndex::Contents UsageIndex::contents(Number folder) const {
  auto text = folders_[folder].packed.view();
  text.remove_prefix(text.find('\0') + 1);
  Contents contents;
  static_cast<PackedContents&>(contents) = takeContents(text).value_or(PackedContents());
  if (contents.namesSize > 0) contents.namesAt = takePacked(text).value_or(0);
  return contents;
}

void UsageIndex::put(Number folder, std::string_view name, const Contents& contents) {
  std::string packed;
  packed.append(name).push_back('\0');
  appendPacked(packed, static_cast<const PackedContents&>(contents));
  if (contents.namesSize > 0) appendPacked(packed, contents.namesAt);
  folders_[folder].packed = CompactText(packed);
}

FolderSums UsageIndex::sums(Number folder) const {
  return contents(folder).sums;
}

std::uint64_t UsageIndex::namesSize(Number folder) const {
  return contents(folder).namesSize;
}

bool UsageIndex::readNames(Number folder, std::uint64_t from, std::string& names) const {
  names.clear();
  const auto contents = this->contents(folder);
  if (from >= contents.namesSize) return false;
  names.resize(static_cast<std::size_t>(std::min(pieceSize, contents.namesSize - from)));
  const auto at = contents.namesAt + from;
  if (at >= keptSize_) {
    held_.copy(static_cast<std::size_t>(at - keptSize_), names.data(), names.size());
  } else if (!readKept_ || !readKept_(keptSize_ - at, names.data(), names.size())) {
    return false;
  }
  names.resize(names.rfind('\0') + 1);
  return !names.empty() && areEntryNames(names);
}

void UsageIndex::setContents(Number folder, std::uint64_t stamp, const FolderSums& sums,
                             NameList names) {
  drop(folder);
  dropNames(folder);
  if (dead_ > std::max<std::size_t>(pieceSize, held_.size() / 4)) gather();
  const Contents contents{{sums, names.size()}, keptSize_ + held_.size()};
  held_.take(std::move(names));
  put(folder, name(folder), contents);
  folders_[folder].stamp = stamp;
  take(folder);
  ++changes_;
}

void UsageIndex::setSums(Number folder, const FolderSums& sums) {
  drop(folder);
  auto contents = this->contents(folder);
  contents.sums = sums;
  put(folder, name(folder), contents);
  take(folder);
  ++changes_;
}

void UsageIndex::setStamp(Number folder, std::uint64_t stamp) {
  changes_ += folders_[folder].stamp != stamp;
  folders_[folder].stamp = stamp;
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
  if (stamp(folder) == 0 && first(folder) == none && contents(folder) == PackedContents()) return;
  setFolders(folder, {});
  setContents(folder, 0, {}, NameList());
}

std::string UsageIndex::packed(Number folder) const {
  std::string packed(name(folder));
  packed.push_back('\0');
  appendPacked(packed, static_cast<const PackedContents&>(contents(folder)));
  return packed;
}

UsageIndex::Number UsageIndex::addPacked(Number parent, Number previous, std::uint64_t stamp,
                                         std::string_view packed) {
  constexpr std::uint64_t mostNames = std::uint64_t{1} << 56;
  const auto end = packed.find('\0');
  const bool isRoot = parent == none;
  const auto name = packed.substr(0, end);
  if (end == packed.npos || isRoot == isEntryName(name)) return none;
  packed.remove_prefix(end + 1);
  const auto counted = takeContents(packed);
  if (!counted || !packed.empty() || counted->namesSize > mostNames - keptSize_) return none;
  const auto number = isRoot ? root : make(name);
  if (isRoot) {
    drop(root);
  } else {
    (previous == none ? folders_[parent].first : folders_[previous].next) = number;
  }
  put(number, name, {*counted, keptSize_});
  keptSize_ += counted->namesSize;
  folders_[number].stamp = stamp;
  take(number);
  return number;
}

void UsageIndex::setKept(ReadKept read) {
  std::uint64_t size = 0;
  forEachFolder([&](Number folder) {
    auto contents = this->contents(folder);
    if (contents.namesSize == 0) return true;
    const bool stands = contents.namesAt == size;
    contents.namesAt = size;
    size += contents.namesSize;
    if (!stands) put(folder, name(folder), contents);
    return true;
  });
  readKept_ = std::move(read);
  keptSize_ = size;
  held_ = NameList();
  dead_ = 0;
}

/// Leaves the folder without names.
void UsageIndex::dropNames(Number folder) {
  auto contents = this->contents(folder);
  if (contents.namesSize == 0) return;
  if (contents.namesAt >= keptSize_) dead_ += static_cast<std::size_t>(contents.namesSize);
  contents.namesSize = 0;
  put(folder, name(folder), contents);
}

/// Leaves the names in memory that a folder has.
void UsageIndex::gather() {
  NameList held;
  std::string names;
  forEachFolder([&](Number folder) {
    auto contents = this->contents(folder);
    if (contents.namesSize == 0 || contents.namesAt < keptSize_) return true;
    const auto at = static_cast<std::size_t>(contents.namesAt - keptSize_);
    const auto size = static_cast<std::size_t>(contents.namesSize);
    contents.namesAt = keptSize_ + held.size();
    for (std::size_t from = 0; from < size; from += names.size()) {
      names.resize(std::min<std::size_t>(pieceSize, size - from));
      held_.copy(at + from, names.data(), names.size());
      held.add(names);
    }
    put(folder, name(folder), contents);
    return true;
  });
  held_ = std::move(held);
  dead_ = 0;
}

UsageIndex::Number UsageIndex::make(std::string_view name) {
  auto number = static_cast<Number>(folders_.size());
  if (free_.empty()) {
    folders_.emplace_back();
  } else {
    number = free_.back();
    free_.pop_back();
  }
  put(number, name, {});
  ++changes_;
  return number;
}

/// With all below, however deep.
void UsageIndex::release(Number folder) {
  std::vector<Number> going = {folder};
  while (!going.empty()) {
    const auto number = going.back();
    going.pop_back();
    for (auto at = first(number); at != none; at = next(at)) going.push_back(at);
    drop(number);
    dropNames(number);
    Folder gone;
    std::swap(folders_[number], gone);  // with its memory
    free_.push_back(number);
    ++changes_;
  }
}

/// Counts what is in the folder, as it is packed: what is dropped one day has to be what was taken.
void UsageIndex::take(Number folder) {
  const auto sums = this->sums(folder);
  for (std::size_t kind = 0; kind < usageKinds; ++kind) total_[kind] += sums.blocks[kind];
  for (const auto& file : sums.linked)
    change(file, [&file](Names& names) {
      names.blocks = file.blocks;
      ++names.known[static_cast<std::size_t>(file.kind)];
    });
}

void UsageIndex::drop(Number folder) {
  const auto sums = this->sums(folder);
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
