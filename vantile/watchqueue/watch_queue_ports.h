#pragma once

#include <memory>

#include "vantile/platform/file_attributes.h"
#include "vantile/platform/file_events.h"
#include "vantile/platform/folder_reader.h"
#include "vantile/platform/threads.h"
#include "vantile/platform/workspace.h"

namespace vantile {

/// What the watch queue asks of the operating system.
struct WatchQueuePorts {
  std::shared_ptr<FileEvents> events = systemFileEvents();
  std::shared_ptr<Threads> threads = systemThreads();
  std::shared_ptr<Workspace> workspace = systemWorkspace();
  std::shared_ptr<FolderReader> folders = systemFolderReader();
  std::shared_ptr<FileSystem> files = systemFileSystem();

  /// The ports in use. They are replaced by tests alone, before anything else runs.
  static WatchQueuePorts& installed();
};

}  // namespace vantile
