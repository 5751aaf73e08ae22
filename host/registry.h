#pragma once

#include <cstdint>
#include <functional>
#include <memory>
#include <string>
#include <string_view>
#include <variant>
#include <vector>

#include "dashboard/pane.h"
#include "report.h"

namespace vantile::host {

/// A monitor that was started; it stops reporting when this goes.
class RunningMonitor {
 public:
  virtual ~RunningMonitor() = default;
  /// Called after each round of the program's loop, in which the library may have been at work.
  virtual void afterRound() {}
};

/// When a monitor takes its samples.
struct Sampling {
  std::int32_t interval = 1;  ///< seconds
  bool atOnce = false;        ///< one more at the start
};

/// Both start a monitor on the main thread, where its reports come too; null when the system has
/// nothing for it to tell.
using StartSampling = std::function<std::unique_ptr<RunningMonitor>(const Sampling&, ReportSink)>;
using StartWatching = std::function<std::unique_ptr<RunningMonitor>(ReportSink)>;

/// A monitor that this program knows: one that takes samples, or a watcher, which waits for the
/// system to tell of a change.
struct MonitorEntry {
  std::string_view name;
  std::string_view sample;  ///< the operation that comes once a sample; empty: it tells of changes
  std::variant<StartSampling, StartWatching> start;

  bool isWatcher() const { return std::holds_alternative<StartWatching>(start); }
};

/// A part of the dashboard: the monitors that tell it something, and its panes.
struct DashboardPart {
  std::vector<std::string_view> monitors;
  std::function<PaneGroup()> panes;
};

const std::vector<MonitorEntry>& monitors();

/// All parts, in their order on the screen.
const std::vector<DashboardPart>& dashboardParts();

/// The monitor of that name, which must be known.
const MonitorEntry& monitorNamed(std::string_view name);

std::vector<std::string> sampledNames();
std::vector<std::string> watcherNames();

/// Starts it; a watcher has no use for `sampling`.
std::unique_ptr<RunningMonitor> startMonitor(const MonitorEntry& entry, const Sampling& sampling,
                                             ReportSink sink);

}  // namespace vantile::host
