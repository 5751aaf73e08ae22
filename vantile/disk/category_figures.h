#pragma once

#include <cstdint>
#include <optional>

#include "vantile/foundation/value.h"
#include "vantile/platform/category_sizes.h"

namespace vantile {

/// Sets what is known of the kinds of files that `used` bytes of the volume go to.
void addCategories(Dictionary& volume, const std::optional<CategorySizes>& categories,
                   std::uint64_t used);

}  // namespace vantile
