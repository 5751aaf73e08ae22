#include "vantile/watchqueue/watch_queue_ports.h"

namespace vantile {

WatchQueuePorts& WatchQueuePorts::installed() {
  static auto& ports = *new WatchQueuePorts;
  return ports;
}

}  // namespace vantile
