#pragma once

#include <string_view>

#include "vantile/platform/property_lists.h"

namespace vantile {

/// The dictionary that the bytes of a property list are, as `PropertyLists::read` gives it.
std::shared_ptr<Dictionary> dictionaryOf(std::string_view list);

}  // namespace vantile
