#pragma once

#include <sys/stat.h>

#include <chrono>
#include <cstdint>

#include "vantile/platform/folder_reader.h"

namespace vantile {

inline FileKind kindOf(mode_t mode) {
  if (S_ISREG(mode)) return FileKind::regular;
  if (S_ISDIR(mode)) return FileKind::folder;
  if (S_ISLNK(mode)) return FileKind::symbolicLink;
  return FileKind::other;
}

inline FileIdentity identityOf(const struct stat& status) {
  // Device numbers are signed; what counts is that they keep apart.
  return {static_cast<std::uint32_t>(status.st_dev), status.st_ino};
}

inline FileFacts factsOf(const struct stat& status) {
  return {kindOf(status.st_mode), static_cast<std::uint64_t>(status.st_size), status.st_nlink,
          identityOf(status)};
}

/// A file's time. What nanoseconds in 64 bits can't hold, 292 years around 1970, gives the nearest
/// second that they can.
inline std::chrono::sys_time<std::chrono::nanoseconds> momentOf(const timespec& time) {
  using std::chrono::nanoseconds;
  using std::chrono::seconds;
  using Moment = std::chrono::sys_time<nanoseconds>;
  constexpr auto earliest = std::chrono::ceil<seconds>(Moment::min()).time_since_epoch();
  constexpr auto latest = std::chrono::floor<seconds>(Moment::max()).time_since_epoch();
  const seconds whole(time.tv_sec);
  if (whole < earliest) return Moment(earliest);
  if (whole >= latest) return Moment(latest);
  return Moment(whole + nanoseconds(time.tv_nsec));
}

}  // namespace vantile
