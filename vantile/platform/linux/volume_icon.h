#pragma once

#include <memory>
#include <string>

#include "vantile/foundation/value.h"

namespace vantile {

/// The picture that the desktop has for the mount at that place, by its name in the icon theme or
/// by its file; null for none. Goes by the mount table alone: the volume itself is not asked.
std::shared_ptr<const Image> iconOfMount(const std::string& mountPoint);

}  // namespace vantile
