#pragma once

#include <cstdint>
#include <optional>

#include "vantile/foundation/value.h"
#include "vantile/platform/host_memory.h"

namespace vantile {

/// What was paged since the sample before; absent where the system does not count it.
struct PageDeltas {
  std::optional<std::uint64_t> in, out;
};

/// The dictionaries of a sample under the keys of memory_keys.h, from page counts and the bytes in
/// a page. The 32-bit ones know no compressor: its byte counts are 0, its events left out.
Dictionary memoryDictionary(const VirtualMemoryReading& reading, std::uint64_t pageSize);
Dictionary memoryDictionary(const VirtualMemoryReading32& reading, std::uint64_t pageSize);
Dictionary vmDictionary(const VirtualMemoryReading& reading, const PageDeltas& deltas);
Dictionary vmDictionary(const VirtualMemoryReading32& reading, const PageDeltas& deltas);

}  // namespace vantile
