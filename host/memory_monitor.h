#pragma once

#include <memory>

#include "registry.h"

namespace vantile::host {

/// Reports what the shared KVDMemory tells its delegate.
std::unique_ptr<RunningMonitor> startMemory(const Sampling& sampling, ReportSink sink);

/// Bars, a history of the memory in use, paging and swap.
PaneGroup memoryPanes();

}  // namespace vantile::host
