#pragma once

#include <CoreFoundation/CoreFoundation.h>

#include <memory>
#include <type_traits>

namespace vantile {

struct ReleaseObject {
  void operator()(CFTypeRef object) const { CFRelease(object); }
};

/// Owns one reference to a CoreFoundation object: what a function with "Create" or "Copy" in its
/// name gave, or `CFRetain` of what another one did.
template <class Reference>
using Owned = std::unique_ptr<std::remove_pointer_t<Reference>, ReleaseObject>;

}  // namespace vantile
