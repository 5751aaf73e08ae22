#include "vantile/memory/memory_dictionaries.h"

#include "vantile/memory/memory_keys.h"

namespace vantile {
namespace {

/// Byte counts of one sample.
struct Bytes {
  std::uint64_t free, active, inactive, wired, compressed, uncompressed;
};

/// Inactive memory counts as free, what the compressor occupies as used.
Dictionary dictionaryOf(const Bytes& bytes) {
  Dictionary memory;
  memory.reserve(9);
  memory.set(keys::memory_total,
             bytes.inactive + bytes.active + bytes.wired + bytes.free + bytes.compressed);
  memory.set(keys::memory_free, bytes.free + bytes.inactive);
  memory.set(keys::memory_used, bytes.wired + bytes.active + bytes.compressed);
  memory.set(keys::memory_active, bytes.active);
  memory.set(keys::memory_inactive, bytes.inactive);
  memory.set(keys::memory_wired, bytes.wired);
  memory.set(keys::memory_freepage, bytes.free);
  memory.set(keys::memory_compressed, bytes.compressed);
  memory.set(keys::memory_uncompressed, bytes.uncompressed);
  return memory;
}

std::optional<std::uint64_t> widened(std::optional<std::uint32_t> counter) {
  return counter;
}

}  // namespace

Dictionary memoryDictionary(const VirtualMemoryReading& reading, std::uint64_t pageSize) {
  return dictionaryOf({reading.free * pageSize, reading.active * pageSize,
                       reading.inactive * pageSize, reading.wired * pageSize,
                       reading.compressorPages * pageSize, reading.uncompressedPages * pageSize});
}

Dictionary memoryDictionary(const VirtualMemoryReading32& reading, std::uint64_t pageSize) {
  const std::uint64_t page = static_cast<std::uint32_t>(pageSize);  // as wide as the interface
  return dictionaryOf({reading.free * page, reading.active * page, reading.inactive * page,
                       reading.wired * page, 0, 0});
}

Dictionary vmDictionary(const VirtualMemoryReading& reading, const PageDeltas& deltas) {
  Dictionary vm;
  vm.reserve(13);
  vm.set(keys::vm_hits, reading.hits);
  vm.set(keys::vm_lookups, reading.lookups);
  vm.set(keys::vm_pageins, reading.pageIns);
  vm.set(keys::vm_pageouts, reading.pageOuts);
  vm.set(keys::vm_faults, reading.faults);
  vm.set(keys::vm_cowfaults, reading.copyOnWriteFaults);
  vm.set(keys::vm_purges, reading.purges);
  vm.set(keys::vm_purgeablecount, reading.purgeable);
  vm.set(keys::vm_speculativecount, reading.speculative);
  vm.set(keys::vm_decompressions, reading.decompressions);
  vm.set(keys::vm_compressions, reading.compressions);
  vm.set(keys::vm_deltapageins, deltas.in);
  vm.set(keys::vm_deltapageouts, deltas.out);
  return vm;
}

Dictionary vmDictionary(const VirtualMemoryReading32& reading, const PageDeltas& deltas) {
  Dictionary vm;
  vm.reserve(8);
  vm.set(keys::vm_hits, widened(reading.hits));
  vm.set(keys::vm_lookups, widened(reading.lookups));
  vm.set(keys::vm_pageins, widened(reading.pageIns));
  vm.set(keys::vm_pageouts, widened(reading.pageOuts));
  vm.set(keys::vm_faults, widened(reading.faults));
  vm.set(keys::vm_cowfaults, widened(reading.copyOnWriteFaults));
  vm.set(keys::vm_deltapageins, deltas.in);
  vm.set(keys::vm_deltapageouts, deltas.out);
  return vm;
}

}  // namespace vantile
