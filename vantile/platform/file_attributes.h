#pragma once

#include <chrono>
#include <cstdint>
#include <memory>
#include <optional>
#include <string>

#include "vantile/foundation/api.h"
#include "vantile/platform/folder_reader.h"

namespace vantile {

/// What a file system tells of one file.
struct FileAttributes {
  FileFacts facts;
  std::uint32_t permissions = 0;  ///< the low twelve mode bits
  std::uint32_t owner = 0, group = 0;
  std::chrono::sys_time<std::chrono::nanoseconds> modified;
  std::optional<std::chrono::sys_time<std::chrono::nanoseconds>> created;
};

/// Attributes of files by path. Any thread.
class FileSystem {
 public:
  virtual ~FileSystem() = default;

  /// The attributes of the file at `path`, or nothing when there is none or it can't be reached.
  /// A symbolic link at the end of the path is followed where `followLink`, else described itself.
  /// macOS: stat, lstat. Linux: statx.
  virtual std::optional<FileAttributes> attributes(const std::string& path, bool followLink) = 0;
};

/// The machine's files, shared by the process.
VANTILE_API std::shared_ptr<FileSystem> systemFileSystem();

}  // namespace vantile
