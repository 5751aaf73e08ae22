#pragma once

#include "vantile/foundation/shared_instance.h"

namespace vantile {

class CPUStatus;

/// What `CPUStatus::singleton` gives. Here for tests, which begin without one.
SharedInstance<CPUStatus>& sharedCpuMonitor();

}  // namespace vantile
