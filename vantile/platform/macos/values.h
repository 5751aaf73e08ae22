#pragma once

#include <CoreFoundation/CoreFoundation.h>

#include <memory>
#include <optional>

#include "vantile/foundation/value.h"

namespace vantile {

/// The object, as property lists hold them, as a value. Nothing for null, for data, for text that
/// is not Unicode, and for what is so deep that the calls here would nest without bound.
std::optional<Value> valueOf(CFTypeRef object);

/// The entries whose keys are text, with their values; those that are nothing are left out.
std::shared_ptr<Dictionary> dictionaryFrom(CFDictionaryRef entries);

}  // namespace vantile
