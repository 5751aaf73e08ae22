#include "vantile/memory/memory.h"

#include <algorithm>
#include <utility>

#include "vantile/foundation/queue.h"
#include "vantile/memory/cleaner.h"
#include "vantile/memory/memory_dictionaries.h"
#include "vantile/memory/memory_ports.h"
#include "vantile/memory/shared_memory_monitor.h"
#include "vantile/memory/swap_files.h"
#include "vantile/utility/general_utility.h"
#include "vantile/utility/strings.h"

namespace vantile {
namespace {

/// The growth of a counter since `last`, which becomes `now`. One that went backwards was reset:
/// its new value is its growth.
std::optional<std::uint64_t> takeGrowth(std::uint64_t& last, std::optional<std::uint64_t> now) {
  if (!now) return std::nullopt;
  const auto growth = *now >= last ? *now - last : *now;
  last = *now;
  return growth;
}

}  // namespace

SharedInstance<KVDMemory>& sharedMemoryMonitor() {
  static auto& instance = *new SharedInstance<KVDMemory>;
  return instance;
}

std::shared_ptr<KVDMemory> KVDMemory::singleton() {
  return sharedMemoryMonitor().get([] {
    MemoryPorts::installed().host->lookUpStatistics64();
    return init();
  });
}

std::shared_ptr<KVDMemory> KVDMemory::init() {
  const std::shared_ptr<KVDMemory> monitor(new KVDMemory(MemoryPorts::installed()));
  return monitor->begin() ? monitor : nullptr;
}

KVDMemory::KVDMemory(MemoryPorts ports)
    : ports_(std::make_unique<const MemoryPorts>(std::move(ports))),
      _physicalMemory(ports_->host->physicalMemory()),
      memoryinfo(std::make_unique<memory_info>()) {}

KVDMemory::~KVDMemory() = default;

bool KVDMemory::begin() {
  selfHost = ports_->host->host();
  if (selfHost == 0) return false;
  isTigerOrLater = GeneralUtility::OSIsTigerOrLater();
  isMavericksOrLater = GeneralUtility::OSIsMavericksOrLater();
  if (isMavericksOrLater && !ports_->host->hasStatistics64()) return false;
  setFreshInterval(1);
  return true;
}

void KVDMemory::updateInfo(const Timer*) {
  if (isMavericksOrLater) {
    memoryStats64();
  } else {
    memoryStats32();
  }
}

/// One sample: read, lock, account for what was paged since the last one, report.
template <class Read>
void KVDMemory::sample(Read read) {
  const auto finishedBefore = samples_.load();
  auto reading = read();
  if (!reading) return;  // a sample happens whole or not at all
  const SampleLock::Scope sampling(MemoryUsageLock);
  if (!sampling) return;
  // While this thread waited, another one sampled: what was read is older than what it reported,
  // and the counters would seem to run backwards.
  if (samples_.load() != finishedBefore) reading = read();
  if (!reading) return;
  const PageDeltas deltas = {takeGrowth(lastPageIn, reading->pageIns),
                             takeGrowth(lastPageOut, reading->pageOuts)};
  ++samples_;
  const auto listener = delegate();
  if (implements(listener, &MemoryDelegate::updateMemoryStatusWithVMStatusWithSwapDict)) {
    const auto memory = memoryDictionary(*reading, ports_->host->pageSize());
    const auto vm = vmDictionary(*reading, deltas);
    const auto swap = swapStats();
    tell(listener, &MemoryDelegate::updateMemoryStatusWithVMStatusWithSwapDict, memory, vm,
         swap.get());
  }
}

void KVDMemory::memoryStats64() {
  guarded("a memory sample",
          [this] { sample([this] { return ports_->host->statistics64(selfHost); }); });
}

void KVDMemory::memoryStats32() {
  guarded("a memory sample",
          [this] { sample([this] { return ports_->host->statistics32(selfHost); }); });
}

void KVDMemory::initializeSwapPath() {
  const std::lock_guard lock(swapLock_);
  auto location = findSwapLocation(*ports_);
  swapPath = std::move(location.folder);
  swapPrefix = std::move(location.prefix);
}

std::shared_ptr<Dictionary> KVDMemory::swapStats() {
  const std::lock_guard lock(swapLock_);
  if (swapPath) return nullptr;
  initializeSwapPath();
  const auto files = countSwapFiles(*ports_, {*swapPath, *swapPrefix});
  if (files.anyEntry) peakSwapFiles = std::max(peakSwapFiles, files.count);
  const auto usage = isTigerOrLater ? ports_->swap->usage() : std::nullopt;

  auto swap = std::make_shared<Dictionary>();
  swap->reserve(6);
  swap->set(keys::swap_path, *swapPath);
  swap->set(keys::swap_count, files.count);
  swap->set(keys::swap_countpeak, peakSwapFiles);
  swap->set(keys::swap_size, files.bytes);
  swap->set(keys::swap_used, usage ? usage->usedBytes : 0);
  swap->set(keys::swap_encrypted, usage && usage->encrypted);
  return swap;
}

void KVDMemory::freshMemoryInfo() {
  const std::lock_guard lock(memoryInfoLock_);
  get_memory_info(memoryinfo.get());
}

void KVDMemory::clearMemory(std::int32_t* stop) {
  auto version = GeneralUtility::osVersion();
  auto self = std::static_pointer_cast<KVDMemory>(shared_from_this());
  Queue::global().async([self = std::move(self), version = std::move(version), stop] {
    const std::lock_guard run(self->cleaningLock_);
    const bool smallBlocksOnly = version && isLessThanOrEqual(*version, "10.8");
    clear_memory(cleanmemorycomplete, smallBlocksOnly ? 1 : 0, stop);
  });
}

}  // namespace vantile

int cleanmemorycomplete(void) noexcept {
  vantile::guarded("the end of a cleaning run", [] {
    if (const auto monitor = vantile::KVDMemory::singleton())
      tell(monitor->delegate(), &vantile::MemoryDelegate::clearMemoryCompleted);
  });
  return 0;
}
