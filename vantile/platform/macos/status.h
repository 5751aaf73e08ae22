#pragma once

#include <sys/stat.h>

#include <cstdint>

#include "vantile/platform/folder_reader.h"
#include "vantile/platform/posix/files.h"

namespace vantile {

inline FileIdentity identityOf(const struct stat& status) {
  // Device numbers are signed; what counts is that they keep apart.
  return {static_cast<std::uint32_t>(status.st_dev), status.st_ino};
}

inline FileFacts factsOf(const struct stat& status) {
  return {kindOf(status.st_mode), static_cast<std::uint64_t>(status.st_size), status.st_nlink,
          identityOf(status)};
}

}  // namespace vantile
