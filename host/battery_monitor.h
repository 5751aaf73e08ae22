#pragma once

#include <memory>

#include "registry.h"

namespace vantile::host {

/// Reports what a KVDBatteryInfo tells its delegate, and after each update, as the operation
/// "updateCurrentStatus", its properties and "sources", what each of its power sources was told to
/// be. It updates at the start, when the system tells of a change and once a minute, since few
/// drivers tell of a charge that falls.
std::unique_ptr<RunningMonitor> startBattery(const Sampling& sampling, ReportSink sink);

/// The charge of each battery as a bar, what becomes of it, and the readings.
PaneGroup batteryPanes();

}  // namespace vantile::host
