#include "disk_monitor.h"

#include <vantile/disk/disk.h>
#include <vantile/disk/disk_keys.h>

#include <algorithm>
#include <chrono>
#include <thread>
#include <utility>

#include "dashboard/disk_pane.h"
#include "running_monitor.h"

namespace vantile::host {
namespace {

// Together with those before it, a quarter of a second.
constexpr std::chrono::milliseconds longestPause(128);

/// Whether it is known of all volumes what fills them.
bool areCounted(const Array& volumes) {
  return std::ranges::all_of(volumes, [](const Value& volume) {
    const auto* const held = volume.as<std::shared_ptr<Dictionary>>();
    return held && *held && (*held)->contains(keys::disk_movies);
  });
}

}  // namespace

std::unique_ptr<RunningMonitor> startDisk(const Sampling& sampling, ReportSink sink) {
  auto monitor = KVDDisk::singleton();
  if (!monitor) return nullptr;
  auto delegate = std::make_shared<DiskDelegate>();
  delegate->diskDetails = [sink = std::move(sink)](const Array& volumes) {
    sink({"disk", "diskDetails", {Value(std::make_shared<Array>(volumes))}});
  };
  return startSampled(std::move(monitor), std::move(delegate), sampling);
}

PaneGroup diskPanes() {
  const auto figures = std::make_shared<DiskFigures>();
  PaneGroup group;
  group.panes.push_back(std::make_unique<DiskPane>(figures));
  group.take = [figures](const Report& report) { figures->take(report); };
  return group;
}

Array volumesNow() {
  Array told;
  const auto monitor = KVDDisk::init();
  auto delegate = std::make_shared<DiskDelegate>();
  delegate->diskDetails = [&told](const Array& volumes) { told = volumes; };
  monitor->setDelegate(std::move(delegate));
  auto pause = std::chrono::milliseconds(1);
  for (monitor->updateInfo(); !areCounted(told) && pause <= longestPause; pause *= 2) {
    std::this_thread::sleep_for(pause);
    monitor->updateInfo();
  }
  monitor->setDelegate(nullptr);
  return told;
}

}  // namespace vantile::host
