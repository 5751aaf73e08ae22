#pragma once

#include <memory>

#include "vantile/platform/standard_folders.h"

namespace vantile {

/// Standard folders apart from the shared ones; they ask for the user's home once, here.
std::shared_ptr<StandardFolders> makeStandardFolders();

}  // namespace vantile
