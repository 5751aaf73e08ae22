#pragma once

#include <compare>
#include <cstdint>
#include <optional>
#include <string>

namespace vantile {

/// By what a file is seen to have changed, or to have been replaced.
struct FileStamp {
  std::uint64_t device = 0, inode = 0, size = 0;
  std::int64_t seconds = 0, nanoseconds = 0;  ///< when it was modified, since 1970
  friend bool operator==(const FileStamp&, const FileStamp&) = default;
};

/// The stamp of the regular file at `path`, links followed, or nothing.
std::optional<FileStamp> stampOf(const std::string& path);
/// The same of one that is open.
std::optional<FileStamp> stampOf(int file);

/// The present second since 1970, as the system's clock has it.
std::int64_t presentSecond();

/// Whether no further change can get the same time: file systems count it in steps of up to two
/// seconds. A time to come was set by somebody, changes set the present one.
bool isSettled(std::int64_t modified, std::int64_t now = presentSecond());

}  // namespace vantile
