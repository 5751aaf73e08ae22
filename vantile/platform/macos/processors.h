#pragma once

#include <memory>

#include "vantile/platform/processors.h"

namespace vantile {

/// Processors apart from the shared ones. They ask for send rights to the host and to its default
/// processor set when those are first needed, and give them back with their last owner.
std::shared_ptr<Processors> makeProcessors();

}  // namespace vantile
