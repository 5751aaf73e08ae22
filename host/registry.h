#pragma once

#include <cstdint>
#include <functional>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "dashboard/pane.h"
#include "report.h"

namespace vantile::host {

/// A monitor that was started; it stops reporting when this goes.
class RunningMonitor {
 public:
  virtual ~RunningMonitor() = default;
  /// Takes one sample at once, beside those of the interval.
  virtual void sampleNow() = 0;
};

/// A monitor that this program knows.
struct MonitorEntry {
  std::string_view name;
  bool ticks;  ///< reports once an interval, rather than when something changes
  /// Starts it on the main thread's run loop; null when the system has no figures for it.
  std::function<std::unique_ptr<RunningMonitor>(std::int32_t interval, ReportSink sink)> start;
  /// Makes its part of the dashboard.
  std::function<PaneGroup()> panes;
};

/// All of them, in the order of the dashboard.
const std::vector<MonitorEntry>& monitors();

/// The one of that name, which must be known.
const MonitorEntry& monitorNamed(std::string_view name);

std::vector<std::string> monitorNames();

}  // namespace vantile::host
