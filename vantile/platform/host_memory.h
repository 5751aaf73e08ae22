#pragma once

#include <cstdint>
#include <memory>
#include <optional>

#include "vantile/foundation/api.h"

namespace vantile {

/// Page counts and paging counters of the machine, taken together. Counts are pages of
/// `HostMemory::pageSize()` bytes, counters are events since boot. A counter that a system does
/// not keep is absent, not 0.
struct VirtualMemoryReading {
  std::uint64_t free = 0, active = 0, inactive = 0, wired = 0;
  std::uint64_t compressorPages = 0;    ///< pages that the compressor occupies
  std::uint64_t uncompressedPages = 0;  ///< pages that it holds
  std::optional<std::uint64_t> pageIns, pageOuts;
  std::optional<std::uint64_t> hits, lookups;  ///< of the page cache
  std::optional<std::uint64_t> faults, copyOnWriteFaults;
  std::optional<std::uint64_t> purges, purgeable, speculative;
  std::optional<std::uint64_t> compressions, decompressions;
};

/// The same from the older interface, whose words are 32 bits wide and which knows no compressor.
struct VirtualMemoryReading32 {
  std::uint32_t free = 0, active = 0, inactive = 0, wired = 0;
  std::optional<std::uint32_t> pageIns, pageOuts;
  std::optional<std::uint32_t> hits, lookups, faults, copyOnWriteFaults;
};

/// Page counts alone, 32 bits wide.
struct PageCounts {
  std::uint32_t free = 0, active = 0, inactive = 0, wired = 0;
};

/// Physical memory as the operating system counts it. Any thread.
class HostMemory {
 public:
  virtual ~HostMemory() = default;

  /// A name for the host whose memory this is; 0 when the system gives none, and then nothing else
  /// here can be had. macOS: mach_host_self. Linux: 1 where /proc/meminfo can be read.
  virtual std::uint32_t host() = 0;

  /// Finds the 64-bit statistics among the process's symbols and keeps what was found, null too.
  /// macOS: dlsym(RTLD_DEFAULT, "host_statistics64"). Linux: /proc always has them.
  virtual void lookUpStatistics64() = 0;
  /// Whether the last look-up found them; false before the first one.
  virtual bool hasStatistics64() const = 0;

  /// One whole reading of `host`, or nothing when the system refuses it or `hasStatistics64` is
  /// false. Counters that the adapter derives never run backwards.
  /// macOS: host_statistics64, HOST_VM_INFO64.
  /// Linux: /proc/meminfo, /proc/vmstat, mm_stat and stat of the zram devices. Together free,
  /// active, inactive, wired and compressor pages make up MemTotal: wired is the rest of it.
  /// Page-ins and page-outs leave zram's own traffic out. Purgeable pages are the kernel's
  /// reclaimable ones. Absent: hits, lookups, copy-on-write faults, speculative.
  virtual std::optional<VirtualMemoryReading> statistics64(std::uint32_t host) = 0;

  /// One whole reading through the 32-bit interface, or nothing when the system refuses it.
  /// macOS: host_statistics, HOST_VM_INFO. Linux: the 64-bit reading, the page counts held at 2^32
  /// - 1, the counters modulo 2^32; compressor pages are among the wired.
  virtual std::optional<VirtualMemoryReading32> statistics32(std::uint32_t host) = 0;

  /// The page counts alone, or nothing when the system refuses them.
  /// macOS: host_statistics64 on mach_host_self() with HOST_VM_INFO. Linux: as `statistics32`.
  virtual std::optional<PageCounts> pageCounts() = 0;

  /// Bytes in a page. macOS: vm_page_size. Linux: sysconf(_SC_PAGESIZE).
  virtual std::uint64_t pageSize() const = 0;

  /// Bytes of RAM, 0 when the system does not tell. macOS: sysctl hw.memsize, what NSProcessInfo
  /// physicalMemory gives. Linux: MemTotal, the RAM that the kernel manages.
  virtual std::uint64_t physicalMemory() = 0;
};

/// The machine's memory, shared by the process.
VANTILE_API std::shared_ptr<HostMemory> systemHostMemory();

}  // namespace vantile
