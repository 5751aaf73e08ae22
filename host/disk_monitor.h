#pragma once

#include <vantile/foundation/value.h>

#include <memory>

#include "registry.h"

namespace vantile::host {

/// Reports what the shared KVDDisk tells its delegate.
std::unique_ptr<RunningMonitor> startDisk(const Sampling& sampling, ReportSink sink);

/// The volumes and what fills them.
PaneGroup diskPanes();

/// The volumes at this moment, by a monitor of its own. What fills them was counted before, or is
/// not known: the library reads what it has kept on a thread, which is waited for a quarter of a
/// second at most.
Array volumesNow();

}  // namespace vantile::host
