#pragma once

#include <string>
#include <vector>

#include "vantile/platform/linux/roots.h"
#include "vantile/platform/parsers/cgroup.h"
#include "vantile/platform/parsers/memory_reserve.h"
#include "vantile/platform/pressure_memory.h"

namespace vantile {

/// The process's heap, and a look at what the machine and the process's memory groups have left
/// before a large piece of it is handed out.
class LinuxPressureMemory final : public PressureMemory {
 public:
  explicit LinuxPressureMemory(LinuxRoots roots = {}) : roots_(std::move(roots)) {}

  void* zeroed(std::size_t bytes) noexcept override;
  void* chunk(std::size_t bytes) noexcept override;
  void release(void* block) noexcept override;

  /// The machine's room and that of every group that limits the process. Empty when it can't be
  /// told.
  std::vector<MemoryRoom> rooms() const;

 private:
  bool mayTake(std::size_t bytes) const;

  const LinuxRoots roots_;
};

}  // namespace vantile
