#pragma once

#include <cstdint>
#include <functional>
#include <optional>
#include <string>

#include "vantile/platform/folder_reader.h"

namespace vantile {

/// An entry that a walk has come to. Valid during the visit.
class VANTILE_API WalkedEntry {
 public:
  WalkedEntry(OpenFolder& folder, const FolderEntry& entry, std::string& path)
      : folder_(folder), entry_(entry), path_(path), folderLength_(path.size()) {}
  ~WalkedEntry() { path_.resize(folderLength_); }
  WalkedEntry(const WalkedEntry&) = delete;
  WalkedEntry& operator=(const WalkedEntry&) = delete;

  const char* name() const { return entry_.name; }
  FileKind kind() const { return entry_.kind; }
  /// The walked folder's path as it was given, continued to the entry.
  const char* path() const;
  std::optional<FileFacts> facts() const { return folder_.facts(entry_.name); }
  std::optional<std::string> text(std::size_t most) const {
    return folder_.text(entry_.name, most);
  }

 private:
  OpenFolder& folder_;
  const FolderEntry& entry_;
  std::string& path_;  // of the folder, with a "/" at its end
  const std::size_t folderLength_;
};

/// What to do about an entry. Only folders are entered.
enum class Visit : std::uint8_t { enter, pass };

/// Calls `visit` for every entry below the folder at `path` that is not inside a folder passed by,
/// a folder before what is in it. Symbolic links are entries and never entered; one at the end of
/// `path` is followed. Entries come in the system's order. Ends early once `*stop` is not 0.
/// However deep the tree, it takes a bounded number of descriptors and no recursion, and a path is
/// never looked up again from its beginning. False when there was no folder to read.
VANTILE_API bool walkFolder(FolderReader& reader, const char* path, std::int32_t* stop,
                            const std::function<Visit(const WalkedEntry&)>& visit);

}  // namespace vantile
