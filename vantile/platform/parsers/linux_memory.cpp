#include "vantile/platform/parsers/linux_memory.h"

#include <algorithm>
#include <limits>

namespace vantile {
namespace {

constexpr std::uint64_t sectorSize = 512;

std::uint64_t growth(std::uint64_t last, std::uint64_t now) {
  return now >= last ? now - last : now;
}

std::uint64_t lessAtMost(std::uint64_t whole, std::uint64_t part) {
  return whole - std::min(whole, part);
}

std::uint32_t clamped(std::uint64_t count) {
  constexpr std::uint64_t largest = std::numeric_limits<std::uint32_t>::max();
  return static_cast<std::uint32_t>(std::min(count, largest));
}

std::optional<std::uint32_t> wrapped(std::optional<std::uint64_t> counter) {
  return counter ? std::optional(static_cast<std::uint32_t>(*counter)) : std::nullopt;
}

}  // namespace

void ZramSum::add(const std::string& device, const ZramMemory& memory,
                  const BlockTraffic& traffic) {
  BlockTraffic& last = last_[device];
  totals_.traffic.readSectors += growth(last.readSectors, traffic.readSectors);
  totals_.traffic.writtenSectors += growth(last.writtenSectors, traffic.writtenSectors);
  last = traffic;
  totals_.memory.heldBytes += memory.heldBytes;
  totals_.memory.occupiedBytes += memory.occupiedBytes;
}

std::uint64_t PagingCounter::pages(std::uint64_t kibibytes, std::uint64_t zramSectors,
                                   std::uint64_t pageSize) {
  if (kibibytes < lastKibibytes_) lastPages_ = 0;
  lastKibibytes_ = kibibytes;
  const auto sectors = lessAtMost(kibibytes * (1024 / sectorSize), zramSectors);
  lastPages_ = std::max(lastPages_, sectors / (pageSize / sectorSize));
  return lastPages_;
}

std::optional<VirtualMemoryReading> LinuxMemory::reading(const Meminfo& info,
                                                         const Vmstat& counters,
                                                         const ZramTotals& zram,
                                                         std::uint64_t pageSize) {
  if (!info.memTotal || !info.memFree || !info.active || !info.inactive) return std::nullopt;
  const auto pageKibibytes = pageSize / 1024;
  const auto pages = [pageKibibytes](std::uint64_t kibibytes) { return kibibytes / pageKibibytes; };

  VirtualMemoryReading result;
  result.free = pages(*info.memFree);
  result.active = pages(*info.active);
  result.inactive = pages(*info.inactive);
  const auto rest =
      lessAtMost(pages(*info.memTotal), result.free + result.active + result.inactive);
  // The sources are not read at one instant, so the compressor may seem to hold more than is left.
  result.compressorPages =
      std::min(rest, pages(info.zswap.value_or(0)) + zram.memory.occupiedBytes / pageSize);
  result.wired = rest - result.compressorPages;
  result.uncompressedPages = pages(info.zswapped.value_or(0)) + zram.memory.heldBytes / pageSize;

  const auto& traffic = zram.traffic;
  if (counters.pgpgin)
    result.pageIns = pageIns_.pages(*counters.pgpgin, traffic.readSectors, pageSize);
  if (counters.pgpgout)
    result.pageOuts = pageOuts_.pages(*counters.pgpgout, traffic.writtenSectors, pageSize);
  result.faults = counters.pgfault;
  result.purges = counters.pglazyfreed;
  if (info.kReclaimable) result.purgeable = pages(*info.kReclaimable);
  const auto sectorsPerPage = pageSize / sectorSize;
  zswapOuts_ = counters.zswpout.value_or(zswapOuts_);
  zswapIns_ = counters.zswpin.value_or(zswapIns_);
  result.compressions = zswapOuts_ + traffic.writtenSectors / sectorsPerPage;
  result.decompressions = zswapIns_ + traffic.readSectors / sectorsPerPage;
  return result;
}

VirtualMemoryReading32 narrowed(const VirtualMemoryReading& reading) {
  VirtualMemoryReading32 narrow;
  narrow.free = clamped(reading.free);
  narrow.active = clamped(reading.active);
  narrow.inactive = clamped(reading.inactive);
  narrow.wired = clamped(reading.wired + reading.compressorPages);
  narrow.pageIns = wrapped(reading.pageIns);
  narrow.pageOuts = wrapped(reading.pageOuts);
  narrow.hits = wrapped(reading.hits);
  narrow.lookups = wrapped(reading.lookups);
  narrow.faults = wrapped(reading.faults);
  narrow.copyOnWriteFaults = wrapped(reading.copyOnWriteFaults);
  return narrow;
}

}  // namespace vantile
