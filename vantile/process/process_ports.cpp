#include "vantile/process/process_ports.h"

namespace vantile {

ProcessPorts& ProcessPorts::installed() {
  static auto& ports = *new ProcessPorts;
  return ports;
}

}  // namespace vantile
