#pragma once

#include <fcntl.h>
#include <sys/stat.h>
#include <sys/sysmacros.h>

#include <optional>

#include "vantile/platform/folder_reader.h"
#include "vantile/platform/posix/files.h"

namespace vantile {

/// What statx says of `name` in the folder `at`, or nothing.
inline std::optional<struct statx> statusOf(int at, const char* name, int flags, unsigned mask) {
  struct statx status = {};
  if (::statx(at, name, flags | AT_NO_AUTOMOUNT, mask, &status) != 0) return std::nullopt;
  return status;
}

inline FileIdentity identityOf(const struct statx& status) {
  return {makedev(status.stx_dev_major, status.stx_dev_minor), status.stx_ino};
}

inline FileFacts factsOf(const struct statx& status) {
  return {kindOf(status.stx_mode), status.stx_size, status.stx_nlink, identityOf(status)};
}

}  // namespace vantile
