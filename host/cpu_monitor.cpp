#include "cpu_monitor.h"

#include <vantile/sensors/cpu.h>

#include <charconv>
#include <cstdint>
#include <utility>

#include "dashboard/cpu_panes.h"
#include "running_monitor.h"

namespace vantile::host {
namespace {

/// The number with the digits that a float has: widened as it is, it would show more.
Value shortest(float number) {
  char text[32];
  const auto end = std::to_chars(text, text + sizeof text, number).ptr;
  double wide = 0;
  std::from_chars(text, end, wide);
  return wide;
}

std::shared_ptr<CPUDelegate> delegateFor(const ReportSink& sink) {
  auto delegate = std::make_shared<CPUDelegate>();
  delegate->cpuUsedWithCoreWithSystemWithUserWithIdle = [sink](std::uint32_t core, float system,
                                                               float user, float idle) {
    sink({"cpu",
          "cpuUsedWithCoreWithSystemWithUserWithIdle",
          {core, shortest(system), shortest(user), shortest(idle)}});
  };
  delegate->cpuUsedWithSystemWithUserWithIdle = [sink](float system, float user, float idle) {
    sink({"cpu",
          "cpuUsedWithSystemWithUserWithIdle",
          {shortest(system), shortest(user), shortest(idle)}});
  };
  delegate->processorWithTaskCountWithThreadCount = [sink](std::int32_t tasks,
                                                           std::int32_t threads) {
    sink({"cpu", "processorWithTaskCountWithThreadCount", {tasks, threads}});
  };
  delegate->loadAverageWith1mWith5mWith15m = [sink](float one, float five, float fifteen) {
    sink({"cpu",
          "loadAverageWith1mWith5mWith15m",
          {shortest(one), shortest(five), shortest(fifteen)}});
  };
  delegate->cpuWithTemperature = [sink](double celsius) {
    sink({"cpu", "cpuWithTemperature", {celsius}});
  };
  return delegate;
}

}  // namespace

std::unique_ptr<RunningMonitor> startCpu(const Sampling& sampling, ReportSink sink) {
  auto monitor = CPUStatus::singleton();
  if (!monitor) return nullptr;
  return startSampled(std::move(monitor), delegateFor(sink), sampling);
}

PaneGroup cpuPanes() {
  const auto monitor = CPUStatus::singleton();
  const auto figures = std::make_shared<CpuFigures>(monitor ? monitor->cpuSpeed() : std::nullopt);
  PaneGroup group;
  group.panes.push_back(std::make_unique<CpuPane>(figures));
  group.panes.push_back(std::make_unique<CpuHistoryPane>(figures));
  group.take = [figures](const Report& report) { figures->take(report); };
  return group;
}

}  // namespace vantile::host
