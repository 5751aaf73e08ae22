#pragma once

#include <chrono>
#include <optional>
#include <string>

#include "vantile/platform/linux/statx.h"
#include "vantile/platform/linux/watch_changes.h"

namespace vantile {

/// What there is to know of `path` at the folder `at`, or of a descriptor; nothing when it is gone.
inline std::optional<ItemFacts> factsAt(int at, const char* path, int flags) {
  const auto status = statusOf(at, path, flags, STATX_BASIC_STATS);
  if (!status) return std::nullopt;
  return ItemFacts{.identity = identityOf(*status),
                   .kind = kindOf(status->stx_mode),
                   .bytes = status->stx_size,
                   .links = status->stx_nlink,
                   .mode = status->stx_mode,
                   .owner = status->stx_uid,
                   .group = status->stx_gid,
                   .modified = momentOf(status->stx_mtime.tv_sec, status->stx_mtime.tv_nsec),
                   .changed = momentOf(status->stx_ctime.tv_sec, status->stx_ctime.tv_nsec),
                   .lookedAt = std::chrono::system_clock::now()};
}

/// The facts of that very file, if it is what is at `path`.
inline std::optional<ItemFacts> factsOf(const FileIdentity& identity, const std::string& path) {
  auto facts = factsAt(AT_FDCWD, path.c_str(), 0);
  return facts && facts->identity == identity ? facts : std::nullopt;
}

/// The identity of the folder that `path` stands in, or nothing.
inline std::optional<FileIdentity> folderOf(const std::string& path) {
  const auto slash = path.rfind('/');
  if (slash == std::string::npos) return std::nullopt;
  const auto status = statusOf(AT_FDCWD, path.substr(0, slash + 1).c_str(), 0, STATX_INO);
  return status ? std::optional(identityOf(*status)) : std::nullopt;
}

}  // namespace vantile
