#pragma once

#include <memory>
#include <string>

#include "vantile/platform/ppp_daemon.h"

namespace vantile {

/// A daemon that listens at a local stream socket. Null where the path is too long for an address.
std::shared_ptr<PppDaemon> pppDaemonAt(const std::string& path);

}  // namespace vantile
