#pragma once

#include <optional>
#include <string>

#include "vantile/platform/parsers/mounted_volumes.h"

namespace vantile {

/// The label that the volume was given: what udev read of it or, where it did not, what the file
/// system itself tells, unless that may hang. Nothing for none.
std::optional<std::string> labelOf(const MountedVolume& volume);

}  // namespace vantile
