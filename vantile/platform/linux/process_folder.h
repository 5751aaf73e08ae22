#pragma once

#include <fcntl.h>
#include <sys/types.h>
#include <unistd.h>

#include <cerrno>
#include <cstddef>
#include <optional>
#include <span>
#include <string>
#include <string_view>

#include "vantile/platform/posix/descriptor.h"

namespace vantile {

/// How much of a process's "stat" is read; the kernel writes some 400 bytes at most.
inline constexpr std::size_t allOfPidStat = 2048;

/// What one read of the file from its beginning gives, the whole of it where the kernel puts it
/// together at once; empty for a file without contents, nothing where it can't be read: the process
/// is gone, or another user's.
inline std::optional<std::string_view> readAgain(int file, std::span<char> buffer) {
  ssize_t count = 0;
  do {
    count = ::pread(file, buffer.data(), buffer.size(), 0);
  } while (count < 0 && errno == EINTR);
  if (count < 0) return std::nullopt;
  return std::string_view(buffer.data(), static_cast<std::size_t>(count));
}

/// The same of a file that is opened for it.
inline std::optional<std::string_view> readOnce(int folder, const char* name,
                                                std::span<char> buffer) {
  const Descriptor file(::openat(folder, name, O_RDONLY | O_CLOEXEC | O_NONBLOCK | O_NOCTTY));
  return file ? readAgain(file.get(), buffer) : std::nullopt;
}

/// /proc itself, or the folder of a process in it: as long as it is open, it stands for that same
/// process and no other of its number.
inline Descriptor openProcessFolder(int at, const char* name) {
  return Descriptor(::openat(at, name, O_PATH | O_DIRECTORY | O_CLOEXEC));
}

}  // namespace vantile
