#pragma once

#include <atomic>
#include <memory>
#include <utility>

#include "vantile/platform/file_events.h"
#include "vantile/platform/workspace.h"
#include "vantile/watchqueue/entry_tags.h"
#include "vantile/watchqueue/watch_queue.h"

namespace vantile {

/// What a queue and its watcher thread share; the thread outlives the queue by a moment. Any
/// thread.
struct FSWatchQueue::Kernel {
  Kernel(std::shared_ptr<FileEventQueue> events, std::shared_ptr<Workspace> desktop)
      : _coreQueueFD(std::move(events)), workspace(std::move(desktop)) {}

  const std::shared_ptr<FileEventQueue> _coreQueueFD;
  const std::shared_ptr<Workspace> workspace;
  const std::shared_ptr<EntryTags> tags = std::make_shared<EntryTags>();
  std::atomic<bool> _keepWatcherThreadRunning = false;
};

}  // namespace vantile
