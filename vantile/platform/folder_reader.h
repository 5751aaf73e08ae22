#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "vantile/foundation/api.h"

namespace vantile {

/// What kind of thing stands under a name, the name itself: a symbolic link is a link, whatever it
/// leads to.
enum class FileKind : std::uint8_t { regular, folder, symbolicLink, other };

/// One name in a folder. Names are bytes, without "." and "..".
struct FolderEntry {
  const char* name;  ///< ends in a NUL; stands in the batch that it came in
  FileKind kind;
};

/// Some of a folder's entries, and the memory that their names stand in.
struct FolderBatch {
  static constexpr std::size_t capacity = 65536;

  std::vector<FolderEntry> entries;
  std::unique_ptr<std::byte[]> memory = std::make_unique_for_overwrite<std::byte[]>(capacity);
};

/// How far the listing of a folder got.
enum class Listed : std::uint8_t { some, end, failed };

/// What tells one file from another, however it is called.
struct FileIdentity {
  std::uint64_t device = 0, inode = 0;
  friend bool operator==(const FileIdentity&, const FileIdentity&) = default;
};

/// Size and identity of a file.
struct FileFacts {
  FileKind kind = FileKind::other;
  std::uint64_t bytes = 0;  ///< of its contents
  std::uint64_t links = 0;  ///< names that it has
  FileIdentity identity;
};

/// A folder held open. Closes with its last owner.
class OpenFolder {
 public:
  virtual ~OpenFolder() = default;

  /// Puts the folder's next entries into `batch`, in the system's order, replacing what was there,
  /// until there are none. macOS: readdir. Linux: getdents64.
  virtual Listed list(FolderBatch& batch) = 0;

  /// The folder called `name` in this one, or null when it is gone, can't be opened, or is a
  /// symbolic link. Both: openat, O_NOFOLLOW.
  virtual std::unique_ptr<OpenFolder> child(const char* name) = 0;

  /// The folder that this one stands in, or null. Both: openat "..".
  virtual std::unique_ptr<OpenFolder> parent() = 0;

  /// This folder's own identity; nothing when the system refuses it. Both: fstat.
  virtual std::optional<FileIdentity> identity() = 0;

  /// Facts of the file called `name`, a symbolic link not followed, or nothing when it is gone.
  /// macOS: fstatat. Linux: statx.
  virtual std::optional<FileFacts> facts(const char* name) = 0;

  /// The first `most` bytes of the regular file called `name`, or nothing. Never waits on a pipe
  /// or device that goes by the name. Both: openat, O_NONBLOCK, read.
  virtual std::optional<std::string> text(const char* name, std::size_t most) = 0;
};

/// Opens folders. Any thread.
class FolderReader {
 public:
  virtual ~FolderReader() = default;
  /// The folder at `path`, a symbolic link at its end followed, or null. Both: open, O_DIRECTORY.
  virtual std::unique_ptr<OpenFolder> open(const char* path) = 0;
};

/// The machine's folders, shared by the process.
VANTILE_API std::shared_ptr<FolderReader> systemFolderReader();

}  // namespace vantile
