#pragma once

#include <stdlib.h>

#include <algorithm>
#include <cstddef>
#include <vector>

namespace vantile {

/// The load averages of 1, 5 and 15 minutes, as many as the system gives.
inline std::vector<double> givenLoadAverages() {
  std::vector<double> averages(3);
  const int given = ::getloadavg(averages.data(), 3);
  averages.resize(static_cast<std::size_t>(std::clamp(given, 0, 3)));
  return averages;
}

}  // namespace vantile
