#pragma once

#include <memory>

#include "registry.h"

namespace vantile::host {

/// Reports what a ProcessStats tells its delegate.
std::unique_ptr<RunningMonitor> startProcess(const Sampling& sampling, ReportSink sink);

/// The running applications as a table.
PaneGroup processPanes();

}  // namespace vantile::host
