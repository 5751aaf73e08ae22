#pragma once

#include <memory>

#include "registry.h"

namespace vantile::host {

/// Each reports what the library's shared watcher of that kind tells its delegate.
std::unique_ptr<RunningMonitor> startDownloads(ReportSink sink);
std::unique_ptr<RunningMonitor> startApplications(ReportSink sink);
std::unique_ptr<RunningMonitor> startTrash(ReportSink sink);

/// What all three told, as one list.
PaneGroup eventPanes();

}  // namespace vantile::host
