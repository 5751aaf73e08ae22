#include "vantile/sensors/sensors_ports.h"

namespace vantile {

SensorsPorts& SensorsPorts::installed() {
  static auto& ports = *new SensorsPorts;
  return ports;
}

}  // namespace vantile
