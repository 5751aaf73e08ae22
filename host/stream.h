#pragma once

#include "options.h"

namespace vantile::host {

/// Prints the monitors' reports, for `stream` and `watch`, until the count is reached; gives the
/// exit status.
int runStream(const Options& options);

}  // namespace vantile::host
