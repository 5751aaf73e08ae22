#pragma once

#include <CoreFoundation/CoreFoundation.h>

#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <type_traits>

namespace vantile {

struct ReleaseObject {
  void operator()(CFTypeRef object) const { CFRelease(object); }
};

/// Owns one reference to a CoreFoundation object: what a function with "Create" or "Copy" in its
/// name gave, or `CFRetain` of what another one did.
template <class Reference>
using Owned = std::unique_ptr<std::remove_pointer_t<Reference>, ReleaseObject>;

/// The object as one of the kind that `kind` stands for; null where it is null or of another kind.
template <class Reference>
Reference as(CFTypeID kind, CFTypeRef object) {
  return object && CFGetTypeID(object) == kind ? static_cast<Reference>(object) : nullptr;
}

/// The text as an object; null where it is not UTF-8.
Owned<CFStringRef> stringOf(std::string_view text);

/// A path as an object; null where the system can't tell its characters.
Owned<CFStringRef> pathString(const std::string& path);

/// The object's text as UTF-8; nothing where it is null or has characters that UTF-8 has not:
/// halves of a surrogate pair.
std::optional<std::string> textOf(CFStringRef string);

}  // namespace vantile
