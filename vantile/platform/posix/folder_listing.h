#pragma once

#include <dirent.h>

#include <memory>

namespace vantile {

struct CloseFolder {
  void operator()(DIR* folder) const { ::closedir(folder); }
};

/// A folder while it is listed; null for one that can't be.
using FolderListing = std::unique_ptr<DIR, CloseFolder>;

}  // namespace vantile
