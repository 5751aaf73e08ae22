#include "vantile/memory/memory_ports.h"

namespace vantile {

MemoryPorts& MemoryPorts::installed() {
  static auto& ports = *new MemoryPorts;
  return ports;
}

}  // namespace vantile
