#include "memory_monitor.h"

#include <vantile/foundation/run_loop.h>
#include <vantile/memory/memory.h>

#include <chrono>
#include <utility>

#include "dashboard/memory_panes.h"
#include "running_monitor.h"

namespace vantile::host {
namespace {

constexpr std::chrono::seconds swapLookInterval{10};

// A monitor gives the swap dictionary once in its life, and the running one gave it with its first
// sample. A dashboard that wants to keep up therefore asks a fresh one. On Linux that is cheap: it
// reads a few short files of the kernel's and starts no program, timer or thread.
void lookAtSwap(MemoryFigures& figures) {
  const auto monitor = KVDMemory::init();
  if (!monitor) return;
  if (const auto swap = monitor->swapStats()) figures.takeSwap(*swap);
}

}  // namespace

std::unique_ptr<RunningMonitor> startMemory(const Sampling& sampling, ReportSink sink) {
  auto monitor = KVDMemory::singleton();
  if (!monitor) return nullptr;
  auto delegate = std::make_shared<MemoryDelegate>();
  delegate->updateMemoryStatusWithVMStatusWithSwapDict =
      [sink = std::move(sink)](const Dictionary& memory, const Dictionary& vm,
                               const Dictionary* swap) {
        sink({"memory",
              "updateMemoryStatusWithVMStatusWithSwapDict",
              {argument(&memory), argument(&vm), argument(swap)}});
      };
  return startSampled(std::move(monitor), std::move(delegate), sampling);
}

PaneGroup memoryPanes() {
  const auto figures = std::make_shared<MemoryFigures>();
  const auto swapLook = std::make_shared<Timer>(
      RunLoop::current().every(swapLookInterval, [figures] { lookAtSwap(*figures); }));
  PaneGroup group;
  group.panes.push_back(std::make_unique<MemoryPane>(figures));
  group.panes.push_back(std::make_unique<MemoryHistoryPane>(figures));
  group.panes.push_back(std::make_unique<PagingPane>(figures));
  group.panes.push_back(std::make_unique<SwapPane>(figures));
  group.take = [figures, swapLook](const Report& report) {
    figures->take(report, std::chrono::steady_clock::now());
  };
  return group;
}

}  // namespace vantile::host
