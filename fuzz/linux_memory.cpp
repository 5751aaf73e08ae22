#include "vantile/platform/parsers/linux_memory.h"

#include <fuzzer/FuzzedDataProvider.h>

#include <algorithm>
#include <array>

#include "fuzz/fuzzer.h"

namespace vantile::fuzz {
namespace {

constexpr std::uint64_t largest32 = 0xffffffff;
constexpr std::array pageSizes = {4096u, 16384u, 65536u};
constexpr std::array devices = {"zram0", "zram1", "zram2"};

/// A number of any magnitude below 2^bits; small ones are as likely as large ones.
std::uint64_t number(FuzzedDataProvider& data, unsigned bits = 64) {
  const auto width = data.ConsumeIntegralInRange(0u, bits);
  if (width == 0) return 0;
  return data.ConsumeIntegralInRange<std::uint64_t>(0, ~std::uint64_t{0} >> (64 - width));
}

std::optional<std::uint64_t> maybe(FuzzedDataProvider& data) {
  return data.ConsumeBool() ? std::optional(number(data)) : std::nullopt;
}

/// One kernel counter of KiB and what was made of it, from one reading to the next.
class CounterWitness {
 public:
  void saw(std::optional<std::uint64_t> kibibytes, std::optional<std::uint64_t> pages,
           std::uint64_t pageSize) {
    require(kibibytes.has_value() == pages.has_value(), "a counter is there where the kernel's is");
    if (!kibibytes) return;
    require(*pages <= *kibibytes / (pageSize / 1024), "no more was paged than the kernel says");
    const bool wentOn = seen_ && *kibibytes >= lastKibibytes_;
    require(!wentOn || *pages >= lastPages_, "a counter runs backwards only if the kernel's does");
    constexpr auto largestInSectors = std::uint64_t{1} << 62;
    require(!wentOn || *kibibytes > largestInSectors ||
                *pages - lastPages_ <= (*kibibytes - lastKibibytes_) / (pageSize / 1024) + 1,
            "a counter grows no faster than the kernel's");
    seen_ = true;
    lastKibibytes_ = *kibibytes;
    lastPages_ = *pages;
  }

 private:
  bool seen_ = false;
  std::uint64_t lastKibibytes_ = 0, lastPages_ = 0;
};

/// Lets devices come, go and start anew, in `sum`.
void readDevices(FuzzedDataProvider& data, ZramSum& sum) {
  const auto before = sum.totals().traffic;
  sum.beginReading();
  ZramMemory memory;
  BlockTraffic present;
  for (const char* const device : devices) {
    if (data.ConsumeBool()) {
      sum.forget(device);
      continue;
    }
    const ZramMemory held = {number(data, 48), number(data, 48)};
    const BlockTraffic traffic = {number(data, 48), number(data, 48)};
    sum.add(device, held, traffic);
    memory.heldBytes += held.heldBytes;
    memory.occupiedBytes += held.occupiedBytes;
    present.readSectors += traffic.readSectors;
    present.writtenSectors += traffic.writtenSectors;
  }
  const auto& totals = sum.totals();
  require(totals.memory.heldBytes == memory.heldBytes &&
              totals.memory.occupiedBytes == memory.occupiedBytes,
          "memory is that of the devices of this reading");
  require(
      totals.traffic.readSectors >= std::max(before.readSectors, present.readSectors) &&
          totals.traffic.writtenSectors >= std::max(before.writtenSectors, present.writtenSectors),
      "traffic of a device that is gone stays counted");
}

void checkCounts(const VirtualMemoryReading& reading, const Meminfo& info,
                 std::uint64_t pageKibibytes) {
  const auto total = *info.memTotal / pageKibibytes;
  const auto named = reading.free + reading.active + reading.inactive;
  require(reading.free == *info.memFree / pageKibibytes &&
              reading.active == *info.active / pageKibibytes &&
              reading.inactive == *info.inactive / pageKibibytes,
          "free, active and inactive are the kernel's");
  if (named <= total)
    require(named + reading.wired + reading.compressorPages == total, "the five make up MemTotal");
  else
    require(reading.wired == 0 && reading.compressorPages == 0, "nothing is left beyond MemTotal");
}

void checkNarrowed(const VirtualMemoryReading& reading) {
  const auto narrow = narrowed(reading);
  require(narrow.free == std::min(reading.free, largest32) &&
              narrow.active == std::min(reading.active, largest32) &&
              narrow.inactive == std::min(reading.inactive, largest32) &&
              narrow.wired == std::min(reading.wired + reading.compressorPages, largest32),
          "page counts are held at the largest number");
  require(narrow.pageIns.has_value() == reading.pageIns.has_value() &&
              narrow.pageIns.value_or(0) == (reading.pageIns.value_or(0) & largest32) &&
              narrow.faults.value_or(0) == (reading.faults.value_or(0) & largest32),
          "counters go on modulo 2^32");
}

}  // namespace

void consume(std::string_view input) {
  FuzzedDataProvider data(reinterpret_cast<const std::uint8_t*>(input.data()), input.size());
  const std::uint64_t pageSize = data.PickValueInArray(pageSizes);
  LinuxMemory memory;
  ZramSum zram;
  CounterWitness pageIns, pageOuts;
  while (data.remaining_bytes() > 0) {
    Meminfo info;
    for (auto* const field : {&info.memTotal, &info.memFree, &info.active, &info.inactive})
      if (data.ConsumeIntegral<std::uint8_t>() > 0) *field = number(data);
    for (auto* const field : {&info.zswap, &info.zswapped, &info.kReclaimable})
      *field = maybe(data);
    Vmstat counters;
    for (auto* const field : {&counters.pgpgin, &counters.pgpgout, &counters.pgfault,
                              &counters.pglazyfreed, &counters.zswpin, &counters.zswpout})
      *field = maybe(data);
    readDevices(data, zram);

    const auto reading = memory.reading(info, counters, zram.totals(), pageSize);
    const bool whole = info.memTotal && info.memFree && info.active && info.inactive;
    require(reading.has_value() == whole, "a reading needs its four counts and no more");
    if (!reading) continue;
    checkCounts(*reading, info, pageSize / 1024);
    pageIns.saw(counters.pgpgin, reading->pageIns, pageSize);
    pageOuts.saw(counters.pgpgout, reading->pageOuts, pageSize);
    require(
        !reading->hits && !reading->lookups && !reading->copyOnWriteFaults && !reading->speculative,
        "what has no source is absent");
    checkNarrowed(*reading);
  }
}

}  // namespace vantile::fuzz
