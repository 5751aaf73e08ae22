#include "vantile/watchers/watcher_ports.h"

namespace vantile {

WatcherPorts& WatcherPorts::installed() {
  static auto& ports = *new WatcherPorts;
  return ports;
}

}  // namespace vantile
