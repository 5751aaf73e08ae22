// Declarations of IOKit's functions for power sources that the macOS adapters use, written by hand
// after the published interface.
#pragma once

#include <CoreFoundation/CoreFoundation.h>

#ifdef __cplusplus
extern "C" {
#endif

CFTypeRef IOPSCopyPowerSourcesInfo(void);
CFArrayRef IOPSCopyPowerSourcesList(CFTypeRef info);
CFDictionaryRef IOPSGetPowerSourceDescription(CFTypeRef info, CFTypeRef source);
CFTimeInterval IOPSGetTimeRemainingEstimate(void);

typedef void (*IOPowerSourceCallbackType)(void* context);
CFRunLoopSourceRef IOPSNotificationCreateRunLoopSource(IOPowerSourceCallbackType callback,
                                                       void* context);

#ifdef __cplusplus
}
#endif
