#pragma once

#include <dirent.h>

#include <string>

#include "vantile/platform/posix/folder_listing.h"

namespace vantile {

/// Calls `take` with each `dirent` of the folder at `path`, in the kernel's order; false where the
/// folder can't be listed.
template <class Take>
bool forEachEntry(const std::string& path, Take take) {
  const FolderListing listing(::opendir(path.c_str()));
  while (const dirent* const entry = listing ? ::readdir(listing.get()) : nullptr) take(*entry);
  return listing != nullptr;
}

}  // namespace vantile
