#pragma once

#include <cstddef>
#include <cstdint>
#include <string>

#include "vantile/platform/parsers/usage_index.h"

namespace vantile::testing {

/// All names of the folder's counted files, as far as they can be read.
inline std::string namesOf(const UsageIndex& index, UsageIndex::Number folder) {
  std::string names, piece;
  while (index.readNames(folder, names.size(), piece)) names += piece;
  return names;
}

/// Keeps all names in `kept`, as whoever writes a record does.
inline void keepNames(UsageIndex& index, std::string& kept) {
  std::string names;
  index.forEachFolder([&](UsageIndex::Number folder) {
    names += namesOf(index, folder);
    return true;
  });
  kept = names;
  index.setKept([&kept](std::uint64_t fromEnd, char* to, std::size_t size) {
    if (fromEnd > kept.size()) return false;
    return kept.copy(to, size, kept.size() - static_cast<std::size_t>(fromEnd)) == size;
  });
}

}  // namespace vantile::testing
