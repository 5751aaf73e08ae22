#include <vantile/memory/memory_keys.h>

#include <algorithm>

#include "dashboard/memory_panes.h"

namespace vantile::host {
namespace {

std::uint64_t count(const Dictionary& dictionary, Key key) {
  return dictionary.uint64(key).value_or(0);
}

}  // namespace

std::optional<double> MemoryFigures::Counter::advance(std::optional<std::uint64_t> now,
                                                      double seconds) {
  const auto before = std::exchange(last, now);
  if (!now || !before || *now < *before || seconds <= 0) return std::nullopt;
  return static_cast<double>(*now - *before) / seconds;
}

double MemoryFigures::share(std::uint64_t bytes) const {
  return total == 0 ? 0 : static_cast<double>(bytes) / static_cast<double>(total);
}

void MemoryFigures::take(const Report& report, Moment now) {
  if (report.operation != "updateMemoryStatusWithVMStatusWithSwapDict") return;
  if (const auto* memory = report.dictionary(0)) takeMemory(*memory);
  if (const auto* vm = report.dictionary(1)) takePaging(*vm, now);
  if (const auto* told = report.dictionary(2)) takeSwap(*told);
}

void MemoryFigures::takeMemory(const Dictionary& memory) {
  total = count(memory, keys::memory_total);
  free = count(memory, keys::memory_free);
  used = count(memory, keys::memory_used);
  active = count(memory, keys::memory_active);
  inactive = count(memory, keys::memory_inactive);
  wired = count(memory, keys::memory_wired);
  freePages = count(memory, keys::memory_freepage);
  compressed = count(memory, keys::memory_compressed);
  uncompressed = count(memory, keys::memory_uncompressed);
  usedShare.push(share(used));
}

void MemoryFigures::takePaging(const Dictionary& vm, Moment now) {
  const auto last = std::exchange(lastSample_, now);
  const double seconds = last ? std::chrono::duration<double>(now - *last).count() : 0;
  pageIns.sinceBoot = count(vm, keys::vm_pageins);
  pageOuts.sinceBoot = count(vm, keys::vm_pageouts);
  // The first sample's growth is the whole count since boot, which says nothing of a rate.
  if (seconds > 0) {
    pageIns.perSecond.push(static_cast<double>(count(vm, keys::vm_deltapageins)) / seconds);
    pageOuts.perSecond.push(static_cast<double>(count(vm, keys::vm_deltapageouts)) / seconds);
  }
  faultsPerSecond = faults_.advance(vm.uint64(keys::vm_faults), seconds);
  compressionsPerSecond = compressions_.advance(vm.uint64(keys::vm_compressions), seconds);
  decompressionsPerSecond = decompressions_.advance(vm.uint64(keys::vm_decompressions), seconds);
}

void MemoryFigures::takeSwap(const Dictionary& told) {
  const auto peakBefore = swap ? swap->peakFiles : 0;
  const auto* path = told.text(keys::swap_path);
  swap = Swap{.path = path ? *path : std::string(),
              .files = count(told, keys::swap_count),
              .peakFiles = std::max(peakBefore, count(told, keys::swap_countpeak)),
              .size = count(told, keys::swap_size),
              .used = count(told, keys::swap_used),
              .encrypted = told.boolean(keys::swap_encrypted).value_or(false)};
}

}  // namespace vantile::host
