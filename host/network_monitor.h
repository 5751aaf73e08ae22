#pragma once

#include <memory>

#include "registry.h"

namespace vantile::host {

/// Reports the last call of each sample, which tells of every service as the others did; where
/// there are no services, an empty array in its place.
std::unique_ptr<RunningMonitor> startNetwork(const Sampling& sampling, ReportSink sink);
PaneGroup networkPanes();

}  // namespace vantile::host
