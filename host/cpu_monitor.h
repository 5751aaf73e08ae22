#pragma once

#include <memory>

#include "registry.h"

namespace vantile::host {

/// Reports what the shared CPUStatus tells its delegate.
std::unique_ptr<RunningMonitor> startCpu(const Sampling& sampling, ReportSink sink);

/// A bar a processor, and a history of the time used.
PaneGroup cpuPanes();

}  // namespace vantile::host
