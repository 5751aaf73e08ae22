#include "vantile/platform/pressure_memory.h"

#include <stdlib.h>

namespace vantile {
namespace {

class MacosPressureMemory final : public PressureMemory {
 public:
  void* zeroed(std::size_t bytes) noexcept override { return ::calloc(1, bytes); }
  void* chunk(std::size_t bytes) noexcept override { return ::valloc(bytes); }
  void release(void* block) noexcept override { ::free(block); }
};

}  // namespace

std::shared_ptr<PressureMemory> systemPressureMemory() {
  static auto& memory =
      *new std::shared_ptr<PressureMemory>(std::make_shared<MacosPressureMemory>());
  return memory;
}

}  // namespace vantile
