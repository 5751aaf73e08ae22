#pragma once

namespace vantile::testing {

// Whether this is a build with AddressSanitizer or ThreadSanitizer.
#if defined(__SANITIZE_ADDRESS__) || defined(__SANITIZE_THREAD__)
inline constexpr bool sanitized = true;
#elif defined(__has_feature)
#if __has_feature(address_sanitizer) || __has_feature(thread_sanitizer)
inline constexpr bool sanitized = true;
#else
inline constexpr bool sanitized = false;
#endif
#else
inline constexpr bool sanitized = false;
#endif

#if defined(__SANITIZE_THREAD__)
inline constexpr bool threadSanitized = true;
#elif defined(__has_feature)
#if __has_feature(thread_sanitizer)
inline constexpr bool threadSanitized = true;
#else
inline constexpr bool threadSanitized = false;
#endif
#else
inline constexpr bool threadSanitized = false;
#endif

}  // namespace vantile::testing
