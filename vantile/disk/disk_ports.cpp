#include "vantile/disk/disk_ports.h"

namespace vantile {

DiskPorts& DiskPorts::installed() {
  static auto& ports = *new DiskPorts;
  return ports;
}

}  // namespace vantile
