#include "vantile/platform/ppp_daemon.h"

#include "vantile/platform/posix/ppp_daemon.h"

namespace vantile {

std::shared_ptr<PppDaemon> systemPppDaemon() {
  static auto& daemon = *new std::shared_ptr<PppDaemon>(pppDaemonAt("/var/run/pppconfd"));
  return daemon;
}

}  // namespace vantile
