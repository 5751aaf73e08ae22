#include "vantile/platform/ppp_daemon.h"

namespace vantile {

std::shared_ptr<PppDaemon> systemPppDaemon() {
  return nullptr;
}

}  // namespace vantile
