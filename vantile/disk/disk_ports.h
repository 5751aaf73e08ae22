#pragma once

#include <functional>
#include <memory>

#include "vantile/platform/category_sizes.h"
#include "vantile/platform/standard_folders.h"
#include "vantile/platform/volumes.h"

namespace vantile {

/// What the disk subsystem asks of the operating system.
struct DiskPorts {
  std::shared_ptr<Volumes> volumes = systemVolumes();
  std::shared_ptr<StandardFolders> folders = systemStandardFolders();
  std::function<std::unique_ptr<VolumeCategories>()> makeCategories = makeVolumeCategories;

  /// The ports in use. They are replaced by tests alone, before anything else runs.
  static DiskPorts& installed();
};

}  // namespace vantile
