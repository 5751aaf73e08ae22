#pragma once

#include <cstddef>
#include <cstdint>
#include <deque>
#include <limits>
#include <string>
#include <string_view>
#include <unordered_map>
#include <utility>
#include <vector>

#include "vantile/platform/parsers/compact_text.h"
#include "vantile/platform/parsers/name_kinds.h"

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

struct FolderContents : FolderSums {
  std::string files;  ///< names of all that were counted, each with its NUL
  friend bool operator==(const FolderContents&, const FolderContents&) = default;
};

/// Calls `take` with each of the names in a list, each of which ends in a NUL.
template <class Take>
void forEachName(std::string_view names, Take take) {
  while (!names.empty()) {
    const auto name = names.substr(0, names.find('\0'));
    take(name);
    names.remove_prefix(name.size() < names.size() ? name.size() + 1 : name.size());
  }
}

/// Names, each with its NUL, of however many files: a text that doubled each time that it is full
/// would take three times their length.
class NameList {
 public:
  NameList() = default;
  explicit NameList(std::string names) { add(std::move(names)); }

  void append(std::string_view name);
  /// In bytes.
  std::size_t size() const { return size_; }
  /// Writes all to `text`, which has room for them, and leaves none.
  void moveTo(char* text);
  void clear();

 private:
  void add(std::string piece);

  std::vector<std::string> pieces_;
  std::size_t size_ = 0;
};

/// The folders of a volume and what was counted in them, packed: 32 bytes a folder and its name,
/// names of counted files, a few bytes a sum. A file of several names counts once, by the kind of
/// its names that goes before the others. Not synchronised.
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

  // A folder's own. Texts are valid until it is changed.
  std::string_view name(Number folder) const;
  FolderContents contents(Number folder) const;
  /// The same without the names.
  FolderSums sums(Number folder) const;
  /// Names of its counted files, each with its NUL.
  std::string_view files(Number folder) const;
  /// By what it is seen to have changed, as of when it was listed; 0 where it is to be listed.
  std::uint64_t stamp(Number folder) const { return folders_[folder].stamp; }
  Number first(Number folder) const { return folders_[folder].first; }
  /// The next one in the folder around it.
  Number next(Number folder) const { return folders_[folder].next; }

  void setContents(Number folder, std::uint64_t stamp, const FolderContents& contents);
  /// The same of names that it takes, so that they are there once.
  void setContents(Number folder, std::uint64_t stamp, const FolderSums& sums, NameList files);
  /// What the files of those names come to now.
  void setSums(Number folder, const FolderSums& sums);
  void setStamp(Number folder, std::uint64_t stamp) { folders_[folder].stamp = stamp; }
  /// Makes the names in `names` the folders in `folder`. Those that were there stay as they are.
  void setFolders(Number folder, std::string_view names);
  /// Forgets what is in a folder, and that it was listed.
  void clear(Number folder);

  /// A folder as it is kept: name, NUL, contents.
  std::string_view packed(Number folder) const { return folders_[folder].packed.view(); }
  /// Adds a folder as it was kept behind `previous`, or where that is none as the first one in
  /// `parent`; `none` where it can't be read. The root replaces itself.
  Number addPacked(Number parent, Number previous, std::uint64_t stamp, std::string_view packed);

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

  Number make(CompactText packed);
  void release(Number folder);
  void take(const FolderSums& sums);
  void drop(const FolderSums& sums);
  template <class Change>
  void change(const LinkedFile& file, Change change);

  std::deque<Folder> folders_;
  std::vector<Number> free_;
  std::unordered_map<std::uint64_t, Names> linked_;
  UsageSums total_ = {};
};

}  // namespace vantile
