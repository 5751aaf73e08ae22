#pragma once

#include <memory>

#include "vantile/platform/applications.h"
#include "vantile/platform/browsers.h"
#include "vantile/platform/file_attributes.h"
#include "vantile/platform/host_resources.h"
#include "vantile/platform/property_lists.h"
#include "vantile/platform/standard_folders.h"
#include "vantile/platform/text_folding.h"

namespace vantile {

/// What the watchers ask of the operating system.
struct WatcherPorts {
  std::shared_ptr<FileSystem> files = systemFileSystem();
  std::shared_ptr<StandardFolders> folders = systemStandardFolders();
  std::shared_ptr<Applications> applications = systemApplications();
  std::shared_ptr<Browsers> browsers = systemBrowsers();
  std::shared_ptr<PropertyLists> lists = systemPropertyLists();
  std::shared_ptr<HostResources> resources = systemHostResources();
  std::shared_ptr<TextFolding> folding = systemTextFolding();

  /// The ports in use. They are replaced by tests alone, before anything else runs.
  static WatcherPorts& installed();
};

}  // namespace vantile
