#pragma once

#include <memory>

#include "vantile/platform/host_memory.h"

namespace vantile {

/// Host memory apart from the shared one. It asks for a send right to the host when the host is
/// first needed, and gives it back with its last owner: a name that it gave is dead from then on.
std::shared_ptr<HostMemory> makeHostMemory();

}  // namespace vantile
