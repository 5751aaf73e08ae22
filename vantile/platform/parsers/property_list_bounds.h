#pragma once

#include <cstddef>
#include <string_view>

namespace vantile {

/// How much a property list may hold to be read: readers of them nest their calls as the list does,
/// and a binary list of a few hundred bytes can hold one value as often as memory can't.
struct PropertyListBounds {
  std::size_t depth = 512;      ///< arrays and dictionaries within each other
  std::size_t values = 100000;  ///< in all, keys with them
};

/// Whether the list, binary or XML, stays within the bounds. It is told without building it; a list
/// that is malformed may be said to, or not to.
bool isWithin(const PropertyListBounds& bounds, std::string_view list);

}  // namespace vantile
