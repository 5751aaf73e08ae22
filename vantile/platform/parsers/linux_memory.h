#pragma once

#include <cstdint>
#include <map>
#include <optional>
#include <string>

#include "vantile/platform/host_memory.h"
#include "vantile/platform/parsers/meminfo.h"
#include "vantile/platform/parsers/vmstat.h"
#include "vantile/platform/parsers/zram.h"

namespace vantile {

/// All zram devices together: what they hold now, and their traffic since boot.
struct ZramTotals {
  ZramMemory memory;
  BlockTraffic traffic;
};

/// Adds up zram devices, which come and go: the traffic of one that is gone stays counted, since
/// the kernel's paging counters contain it for good.
class ZramSum {
 public:
  void beginReading() { totals_.memory = {}; }
  void add(const std::string& device, const ZramMemory& memory, const BlockTraffic& traffic);
  /// A device that is not there any more; one of its name that comes later is another one.
  void forget(const std::string& device) { last_.erase(device); }
  const ZramTotals& totals() const { return totals_; }

 private:
  ZramTotals totals_;
  std::map<std::string, BlockTraffic> last_;
};

/// A kernel counter of KiB moved to and from disks, turned into pages without zram's share, which
/// never touched a disk.
class PagingCounter {
 public:
  /// Does not run backwards when a zram device shows up whose traffic had already been counted;
  /// only a kernel counter that itself does starts anew.
  std::uint64_t pages(std::uint64_t kibibytes, std::uint64_t zramSectors, std::uint64_t pageSize);

 private:
  std::uint64_t lastKibibytes_ = 0;
  std::uint64_t lastPages_ = 0;
};

/// Turns what Linux says into a reading in pages of `pageSize` bytes. Free, active, inactive and
/// compressor pages are the kernel's; wired is the rest of MemTotal, so that the five make it up.
class LinuxMemory {
 public:
  /// Nothing where a count that the reading can't do without is missing.
  std::optional<VirtualMemoryReading> reading(const Meminfo& info, const Vmstat& counters,
                                              const ZramTotals& zram, std::uint64_t pageSize);

 private:
  PagingCounter pageIns_, pageOuts_;
  std::uint64_t zswapIns_ = 0, zswapOuts_ = 0;  // as last told
};

/// The same for the 32-bit interface: page counts are held at its largest number, counters go on
/// modulo 2^32. Compressor pages are among the wired.
VirtualMemoryReading32 narrowed(const VirtualMemoryReading& reading);

}  // namespace vantile
