#pragma once

#include "vantile/foundation/shared_instance.h"

namespace vantile {

class NetPPP;
class Network;

/// What the classes' `singleton` give. Here for tests, which begin without one.
SharedInstance<NetPPP>& sharedPppController();
SharedInstance<Network>& sharedNetworkMonitor();

}  // namespace vantile
