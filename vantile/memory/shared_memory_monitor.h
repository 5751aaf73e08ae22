#pragma once

#include "vantile/foundation/shared_instance.h"

namespace vantile {

class KVDMemory;

/// What `KVDMemory::singleton` gives. Here for tests, which begin without one.
SharedInstance<KVDMemory>& sharedMemoryMonitor();

}  // namespace vantile
