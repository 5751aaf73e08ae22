#pragma once

#include <CoreFoundation/CoreFoundation.h>

#include <memory>

#include "vantile/foundation/value.h"

namespace vantile {

/// The entries whose keys are text, with their values. Left out are data, text that is not Unicode
/// and what is nested deeper than lists may be.
std::shared_ptr<Dictionary> dictionaryFrom(CFDictionaryRef entries);

}  // namespace vantile
