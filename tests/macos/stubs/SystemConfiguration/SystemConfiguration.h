// Declarations of the SystemConfiguration functions that the macOS adapters use, written by hand
// after the published interface. The cross build links by them, the seam tests compile by them.
#pragma once

#include <CoreFoundation/CoreFoundation.h>

#ifdef __cplusplus
extern "C" {
#endif

typedef const struct __SCDynamicStore* SCDynamicStoreRef;

CFStringRef SCDynamicStoreCopyComputerName(SCDynamicStoreRef store, CFStringEncoding* encoding);

#ifdef __cplusplus
}
#endif
