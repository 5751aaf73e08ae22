#pragma once

#include <cstddef>
#include <cstdint>
#include <deque>
#include <functional>
#include <limits>
#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

#include "vantile/platform/parsers/compact_text.h"
#include "vantile/platform/parsers/name_kinds.h"
#include "vantile/platform/parsers/name_list.h"

namespace vantile {

/// A counted file that goes by more than one name.
struct LinkedFile {
  std::uint64_t inode = 0;
  std::uint64_t blocks = 0;
  UsageKind kind = UsageKind::applications;
  friend bool operator==(const LinkedFile&, const LinkedFile&) = default;
};

/// What was counted in a folder itself. Blocks are of 512 bytes, on the disk.
struct FolderSums {
  UsageSums blocks = {};           ///< of the files that have one name
  std::vector<LinkedFile> linked;  ///< a file once for each of its names here
  friend bool operator==(const FolderSums&, const FolderSums&) = default;
};

/// The folders of a volume and what was counted in them, packed: 32 bytes a folder, its name where
/// that is long, a few bytes a sum. Names of counted files stand in memory only until they are kept
/// elsewhere. A file of several names counts once, by the kind of its names that goes before the
/// others. Not synchronised.
class UsageIndex {
 public:
  using Number = std::uint32_t;
  static constexpr Number none = std::numeric_limits<Number>::max();
  static constexpr Number root = 0;

  UsageIndex() { folders_.emplace_back(); }

  /// What is counted in all, in blocks of 512 bytes.
  UsageSums blocks() const { return total_; }
  /// Folders there are, the root included.
  std::size_t size() const { return folders_.size() - free_.size(); }

  /// Valid until the folder is changed.
  std::string_view name(Number folder) const;
  FolderSums sums(Number folder) const;
  /// Of the list of its counted files' names, each with its NUL, in bytes.
  std::uint64_t namesSize(Number folder) const;
  /// Puts whole names of that list into `names`, from byte `from` on, up to 64 KiB of them. False
  /// where there are none, or they can't be read.
  bool readNames(Number folder, std::uint64_t from, std::string& names) const;
  /// By what it is seen to have changed, as of when it was listed; 0 where it is to be listed.
  std::uint64_t stamp(Number folder) const { return folders_[folder].stamp; }
  Number first(Number folder) const { return folders_[folder].first; }
  /// The next one in the folder around it.
  Number next(Number folder) const { return folders_[folder].next; }

  void setContents(Number folder, std::uint64_t stamp, const FolderSums& sums, NameList names);
  /// What the files of those names come to now.
  void setSums(Number folder, const FolderSums& sums);
  void setStamp(Number folder, std::uint64_t stamp);
  /// Makes the names in `names` the folders in `folder`. Those that were there stay as they are.
  void setFolders(Number folder, std::string_view names);
  /// Forgets what is in a folder, and that it was listed.
  void clear(Number folder);

  /// Hands on all folders, each before what is in it, until one is refused.
  template <class Take>
  void forEachFolder(Take take) const;

  /// A folder as it is kept: name, NUL, what was counted but for the names.
  std::string packed(Number folder) const;
  /// Adds a folder as it was kept behind `previous`, or where that is none as the first one in
  /// `parent`; `none` where it can't be read. The root replaces itself. Its names are kept behind
  /// those of the folders added before.
  Number addPacked(Number parent, Number previous, std::uint64_t stamp, std::string_view packed);

  /// Copies `size` bytes that begin so far before the end of what is kept; false where they can't
  /// be read.
  using ReadKept = std::function<bool(std::uint64_t fromEnd, char* to, std::size_t size)>;
  /// The names of all folders are kept now, in the order of `forEachFolder`, and leave the memory.
  void setKept(ReadKept read);
  /// How often something was changed that is kept.
  std::uint64_t changes() const { return changes_; }
  /// Of the names that are kept, in bytes.
  std::uint64_t keptSize() const { return keptSize_; }
  /// Of those that are in memory.
  std::size_t heldSize() const { return held_.size(); }

 private:
  struct Folder {
    std::uint64_t stamp = 0;
    Number first = none, next = none;
    CompactText packed = CompactText(std::string_view("\0", 1));
  };
  /// A file of several names: how many of each kind are known.
  struct Names {
    std::uint64_t blocks = 0;
    std::array<std::uint32_t, usageKinds> known = {};
  };

  struct Contents;

  Contents contents(Number folder) const;
  void put(Number folder, std::string_view name, const Contents& contents);
  Number make(std::string_view name);
  void release(Number folder);
  void take(Number folder);
  void drop(Number folder);
  void dropNames(Number folder);
  void gather();
  template <class Change>
  void change(const LinkedFile& file, Change change);

  std::deque<Folder> folders_;
  std::vector<Number> free_;
  std::unordered_map<std::uint64_t, Names> linked_;
  UsageSums total_ = {};
  std::uint64_t changes_ = 0;
  // One list of names: what is kept of it, and behind that what is in memory.
  ReadKept readKept_;
  std::uint64_t keptSize_ = 0;
  NameList held_;
  std::size_t dead_ = 0;  // bytes of those in memory that no folder has any more
};

template <class Take>
void UsageIndex::forEachFolder(Take take) const {
  std::vector<Number> ahead = {root};
  while (!ahead.empty()) {
    const auto folder = ahead.back();
    ahead.pop_back();
    if (!take(folder)) return;
    if (folder != root && next(folder) != none) ahead.push_back(next(folder));
    if (first(folder) != none) ahead.push_back(first(folder));
  }
}

}  // namespace vantile
