#pragma once

#include "vantile/platform/host_resources.h"

namespace vantile {

/// Host resources apart from the shared ones, no folder set.
std::shared_ptr<HostResources> makeHostResources();

}  // namespace vantile
