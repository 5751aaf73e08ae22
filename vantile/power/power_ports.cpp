#include "vantile/power/power_ports.h"

namespace vantile {

PowerPorts& PowerPorts::installed() {
  static auto& ports = *new PowerPorts;
  return ports;
}

}  // namespace vantile
