#pragma once

#include "options.h"

namespace vantile::host {

/// Shows the monitors on the terminal until the user quits; gives the exit status.
int runDashboard(const Options& options);

}  // namespace vantile::host
