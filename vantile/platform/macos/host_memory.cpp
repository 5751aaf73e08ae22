#include "vantile/platform/macos/host_memory.h"

#include <dlfcn.h>
#include <mach/mach.h>
#include <sys/sysctl.h>

#include <atomic>

#include "vantile/platform/macos/host_right.h"

namespace vantile {
namespace {

class MacosHostMemory final : public HostMemory {
 public:
  std::uint32_t host() override { return right_.name(); }

  void lookUpStatistics64() override {
    statistics64_ = reinterpret_cast<Statistics64>(::dlsym(RTLD_DEFAULT, "host_statistics64"));
  }
  bool hasStatistics64() const override { return statistics64_ != nullptr; }

  std::optional<VirtualMemoryReading> statistics64(std::uint32_t host) override;
  std::optional<VirtualMemoryReading32> statistics32(std::uint32_t host) override;
  std::optional<PageCounts> pageCounts() override;

  std::uint64_t pageSize() const override { return vm_page_size; }
  std::uint64_t physicalMemory() override;

 private:
  using Statistics64 = decltype(&::host_statistics64);

  HostRight right_;
  std::atomic<Statistics64> statistics64_ = nullptr;
};

std::optional<VirtualMemoryReading> MacosHostMemory::statistics64(std::uint32_t host) {
  const Statistics64 read = statistics64_;
  if (!read) return std::nullopt;
  vm_statistics64_data_t counts = {};
  mach_msg_type_number_t words = HOST_VM_INFO64_COUNT;
  if (read(host, HOST_VM_INFO64, reinterpret_cast<host_info64_t>(&counts), &words) != KERN_SUCCESS)
    return std::nullopt;

  VirtualMemoryReading reading;
  reading.free = counts.free_count;
  reading.active = counts.active_count;
  reading.inactive = counts.inactive_count;
  reading.wired = counts.wire_count;
  reading.compressorPages = counts.compressor_page_count;
  reading.uncompressedPages = counts.total_uncompressed_pages_in_compressor;
  reading.pageIns = counts.pageins;
  reading.pageOuts = counts.pageouts;
  reading.hits = counts.hits;
  reading.lookups = counts.lookups;
  reading.faults = counts.faults;
  reading.copyOnWriteFaults = counts.cow_faults;
  reading.purges = counts.purges;
  reading.purgeable = counts.purgeable_count;
  reading.speculative = counts.speculative_count;
  reading.compressions = counts.compressions;
  reading.decompressions = counts.decompressions;
  return reading;
}

std::optional<VirtualMemoryReading32> MacosHostMemory::statistics32(std::uint32_t host) {
  vm_statistics_data_t counts = {};
  mach_msg_type_number_t words = HOST_VM_INFO_COUNT;
  if (::host_statistics(host, HOST_VM_INFO, reinterpret_cast<host_info_t>(&counts), &words) !=
      KERN_SUCCESS)
    return std::nullopt;

  VirtualMemoryReading32 reading;
  reading.free = counts.free_count;
  reading.active = counts.active_count;
  reading.inactive = counts.inactive_count;
  reading.wired = counts.wire_count;
  reading.pageIns = counts.pageins;
  reading.pageOuts = counts.pageouts;
  reading.hits = counts.hits;
  reading.lookups = counts.lookups;
  reading.faults = counts.faults;
  reading.copyOnWriteFaults = counts.cow_faults;
  return reading;
}

std::optional<PageCounts> MacosHostMemory::pageCounts() {
  // The 32-bit record, though asked for through the 64-bit call.
  vm_statistics_data_t counts = {};
  mach_msg_type_number_t words = HOST_VM_INFO_COUNT;
  if (::host_statistics64(right_.name(), HOST_VM_INFO, reinterpret_cast<host_info64_t>(&counts),
                          &words) != KERN_SUCCESS)
    return std::nullopt;
  return PageCounts{counts.free_count, counts.active_count, counts.inactive_count,
                    counts.wire_count};
}

std::uint64_t MacosHostMemory::physicalMemory() {
  std::uint64_t bytes = 0;
  std::size_t size = sizeof bytes;
  return ::sysctlbyname("hw.memsize", &bytes, &size, nullptr, 0) == 0 ? bytes : 0;
}

}  // namespace

std::shared_ptr<HostMemory> makeHostMemory() {
  return std::make_shared<MacosHostMemory>();
}

std::shared_ptr<HostMemory> systemHostMemory() {
  static auto& memory = *new std::shared_ptr<HostMemory>(makeHostMemory());
  return memory;
}

}  // namespace vantile
