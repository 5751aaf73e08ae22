#pragma once

#include <cstddef>
#include <filesystem>
#include <iterator>

namespace vantile::testing {

/// Of this process; the one that lists them is counted each time.
inline std::size_t openDescriptors() {
  const std::filesystem::directory_iterator all("/proc/self/fd");
  return static_cast<std::size_t>(std::distance(begin(all), end(all)));
}

}  // namespace vantile::testing
