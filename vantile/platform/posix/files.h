#pragma once

#include <fcntl.h>
#include <sys/stat.h>

#include <chrono>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

#include "vantile/platform/folder_reader.h"

namespace vantile {

/// How a folder is opened to be read: without waiting for whatever else goes by its name.
constexpr int folderFlags = O_RDONLY | O_DIRECTORY | O_CLOEXEC | O_NONBLOCK;

inline FileKind kindOf(unsigned mode) {
  if (S_ISREG(mode)) return FileKind::regular;
  if (S_ISDIR(mode)) return FileKind::folder;
  if (S_ISLNK(mode)) return FileKind::symbolicLink;
  return FileKind::other;
}

/// A file's time, in seconds and nanoseconds since 1970. What nanoseconds in 64 bits can't hold,
/// 292 years around then, gives the nearest second that they can.
std::chrono::sys_time<std::chrono::nanoseconds> momentOf(std::int64_t seconds,
                                                         std::int64_t nanoseconds);

/// The first `most` bytes of the regular file at `path`, links followed, or nothing. Never waits
/// for what is no file: a pipe, say. The kernel's files, which tell no size, are read whole, too.
std::optional<std::string> contentsOf(const std::string& path, std::size_t most = 16u << 20);
/// As `contentsOf`, of what is called `name` in the folder; a link is no file there.
std::optional<std::string> beginningOf(int folder, const char* name, std::size_t most,
                                       int flags = O_NOFOLLOW);

/// The path of the regular file name.type in the folder, links followed, or nothing. Without a type
/// it is the name alone.
std::optional<std::string> fileIn(std::string folder, std::string_view name, std::string_view type);

}  // namespace vantile
