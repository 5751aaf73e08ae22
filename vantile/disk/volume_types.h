#pragma once

#include "vantile/platform/volumes.h"

namespace vantile {

/// The types of file systems that count as volumes: those on local media that all platforms have,
/// and the platform's own.
Volumes::Types volumeTypes(const Volumes& volumes);

}  // namespace vantile
