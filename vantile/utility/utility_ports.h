#pragma once

#include <memory>

#include "vantile/platform/applications.h"
#include "vantile/platform/file_attributes.h"
#include "vantile/platform/folder_reader.h"
#include "vantile/platform/standard_folders.h"
#include "vantile/platform/system_version.h"

namespace vantile {

/// What the utility layer asks of the operating system.
struct UtilityPorts {
  std::shared_ptr<StandardFolders> folders = systemStandardFolders();
  std::shared_ptr<SystemVersion> version = systemVersion();
  std::shared_ptr<FileSystem> files = systemFileSystem();
  std::shared_ptr<FolderReader> reader = systemFolderReader();
  std::shared_ptr<Applications> applications = systemApplications();

  /// The ports in use. They are replaced by tests alone, before anything else runs.
  static UtilityPorts& installed();
};

}  // namespace vantile
