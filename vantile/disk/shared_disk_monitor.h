#pragma once

#include "vantile/foundation/shared_instance.h"

namespace vantile {

class KVDDisk;

/// What `KVDDisk::singleton` gives. Here for tests, which begin without one.
SharedInstance<KVDDisk>& sharedDiskMonitor();

}  // namespace vantile
