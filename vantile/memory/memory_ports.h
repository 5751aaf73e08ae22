#pragma once

#include <memory>

#include "vantile/platform/child_tasks.h"
#include "vantile/platform/file_attributes.h"
#include "vantile/platform/folder_reader.h"
#include "vantile/platform/host_memory.h"
#include "vantile/platform/interval_alarm.h"
#include "vantile/platform/pressure_memory.h"
#include "vantile/platform/swap_areas.h"

namespace vantile {

/// What the memory subsystem asks of the operating system.
struct MemoryPorts {
  std::shared_ptr<HostMemory> host = systemHostMemory();
  std::shared_ptr<SwapAreas> swap = systemSwapAreas();
  std::shared_ptr<ChildTasks> tasks = systemChildTasks();
  std::shared_ptr<FolderReader> folders = systemFolderReader();
  std::shared_ptr<FileSystem> files = systemFileSystem();
  std::shared_ptr<PressureMemory> pressure = systemPressureMemory();
  std::shared_ptr<IntervalAlarm> alarm = systemIntervalAlarm();

  /// The ports in use. They are replaced by tests alone, before anything else runs.
  static MemoryPorts& installed();
};

}  // namespace vantile
