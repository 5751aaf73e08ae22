#include "process_monitor.h"

#include <vantile/process/process_stats.h>

#include <utility>
#include <vector>

#include "dashboard/process_pane.h"
#include "running_monitor.h"

namespace vantile::host {
namespace {

Value recordOf(const ProcessInfo& process) {
  auto record = std::make_shared<Dictionary>();
  const auto setText = [&record](Key key, const std::optional<std::string>& text) {
    if (text) record->set(key, *text);
  };
  record->set("pid", process.pid());
  setText("appName", process.appName());
  setText("appPath", process.appPath());
  record->set("cpu", process.cpu());
  record->set("memory", process.memory());
  record->set("phyMemoryPages", process.phyMemoryPages());
  record->set("virtMemoryPages", process.virtMemoryPages());
  setText("stats", process.stats());
  return record;
}

std::optional<Value> recordsOf(const std::vector<std::shared_ptr<ProcessInfo>>* processes) {
  if (!processes) return std::nullopt;
  auto records = std::make_shared<Array>();
  for (const auto& process : *processes) records->push_back(recordOf(*process));
  return Value(std::move(records));
}

}  // namespace

std::unique_ptr<RunningMonitor> startProcess(const Sampling& sampling, ReportSink sink) {
  auto monitor = ProcessStats::init();
  if (!monitor) return nullptr;
  auto delegate = std::make_shared<ProcessStatsDelegate>();
  delegate->updateProcessStaus =
      [sink = std::move(sink)](const std::vector<std::shared_ptr<ProcessInfo>>* processes) {
        sink({"process", "updateProcessStaus", {recordsOf(processes)}});
      };
  return startSampled(std::move(monitor), std::move(delegate), sampling);
}

PaneGroup processPanes() {
  const auto figures = std::make_shared<ApplicationFigures>();
  PaneGroup group;
  group.panes.push_back(std::make_unique<ApplicationsPane>(figures));
  group.take = [figures](const Report& report) { figures->take(report); };
  return group;
}

}  // namespace vantile::host
