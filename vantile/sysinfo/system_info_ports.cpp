#include "vantile/sysinfo/system_info_ports.h"

namespace vantile {

SystemInfoPorts& SystemInfoPorts::installed() {
  static auto& ports = *new SystemInfoPorts;
  return ports;
}

}  // namespace vantile
