#include "registry.h"

#include <algorithm>
#include <utility>

#include "battery_monitor.h"
#include "cpu_monitor.h"
#include "disk_monitor.h"
#include "memory_monitor.h"
#include "network_monitor.h"
#include "process_monitor.h"
#include "watchers.h"

namespace vantile::host {
namespace {

std::vector<std::string> namesOf(bool watchers) {
  std::vector<std::string> names;
  for (const auto& monitor : monitors()) {
    if (monitor.isWatcher() == watchers) names.emplace_back(monitor.name);
  }
  return names;
}

}  // namespace

const std::vector<MonitorEntry>& monitors() {
  static const std::vector<MonitorEntry> all{
      {"memory", "updateMemoryStatusWithVMStatusWithSwapDict", startMemory},
      {"cpu", "cpuUsedWithSystemWithUserWithIdle", startCpu},
      {"process", "updateProcessStaus", startProcess},
      {"network", "networkStatus", startNetwork},
      {"disk", "diskDetails", startDisk},
      {"battery", "", startBattery},
      {"downloads", "", startDownloads},
      {"applications", "", startApplications},
      {"trash", "", startTrash},
  };
  return all;
}

const std::vector<DashboardPart>& dashboardParts() {
  static const std::vector<DashboardPart> all{
      {{"cpu"}, cpuPanes},
      {{"memory"}, memoryPanes},
      {{"network"}, networkPanes},
      {{"disk"}, diskPanes},
      {{"battery"}, batteryPanes},
      {{"process"}, processPanes},
      {{"downloads", "applications", "trash"}, eventPanes},
  };
  return all;
}

const MonitorEntry& monitorNamed(std::string_view name) {
  return *std::ranges::find(monitors(), name, &MonitorEntry::name);
}

std::vector<std::string> sampledNames() {
  return namesOf(false);
}

std::vector<std::string> watcherNames() {
  return namesOf(true);
}

std::unique_ptr<RunningMonitor> startMonitor(const MonitorEntry& entry, const Sampling& sampling,
                                             ReportSink sink) {
  if (const auto* watch = std::get_if<StartWatching>(&entry.start))
    return (*watch)(std::move(sink));
  return std::get<StartSampling>(entry.start)(sampling, std::move(sink));
}

}  // namespace vantile::host
