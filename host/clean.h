#pragma once

#include <vantile/memory/cleaner.h>

#include <string>

namespace vantile::host {

/// What a cleaning run achieved, in lines for the user.
std::string describeCleaning(const memory_info& before, const memory_info& after, double seconds,
                             bool stopped);

/// Runs the memory cleaner; gives the exit status.
int runClean();

}  // namespace vantile::host
