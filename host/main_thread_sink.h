#pragma once

#include <memory>

#include "report.h"

namespace vantile::host {

/// A sink that takes reports on any thread and hands them on to `*sink` on the main thread, at once
/// where they come there. It does not keep `*sink` alive: once that is gone, reports go nowhere,
/// also those that are on their way. To be made on the main thread.
ReportSink onMainThread(const std::shared_ptr<const ReportSink>& sink);

}  // namespace vantile::host
