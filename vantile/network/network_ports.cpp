#include "vantile/network/network_ports.h"

namespace vantile {

NetworkPorts& NetworkPorts::installed() {
  static auto& ports = *new NetworkPorts;
  return ports;
}

}  // namespace vantile
