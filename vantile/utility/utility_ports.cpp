#include "vantile/utility/utility_ports.h"

namespace vantile {

UtilityPorts& UtilityPorts::installed() {
  static auto& ports = *new UtilityPorts;
  return ports;
}

}  // namespace vantile
