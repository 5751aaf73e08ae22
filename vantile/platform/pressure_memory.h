#pragma once

#include <cstddef>
#include <memory>

#include "vantile/foundation/api.h"

namespace vantile {

/// Memory that the cleaner takes to put the system under pressure. Any thread.
class PressureMemory {
 public:
  virtual ~PressureMemory() = default;

  /// `bytes` zeroed bytes, or null. Both: calloc.
  virtual void* zeroed(std::size_t bytes) noexcept = 0;

  /// `bytes` page-aligned bytes, not touched, or null.
  /// macOS: valloc. Linux: valloc, refused when the chunk would leave less than a reserve of what
  /// is available: the kernel there hands out memory that it does not have and kills a process
  /// when it is touched. Available is the least of MemAvailable and what is left in the process's
  /// memory cgroups, the file cache charged to them counted as free; the reserve is the larger of
  /// 512 MiB and 5 % of the machine's memory or the cgroup's limit. Refused, too, when that can't
  /// be read.
  virtual void* chunk(std::size_t bytes) noexcept = 0;

  /// Gives either back. Null does nothing. Both: free.
  virtual void release(void* block) noexcept = 0;
};

/// The process's memory, shared by the process.
VANTILE_API std::shared_ptr<PressureMemory> systemPressureMemory();

}  // namespace vantile
