// Declaration of IOKit's function for battery records that the macOS adapters use, written by hand
// after the published interface.
#pragma once

#include <CoreFoundation/CoreFoundation.h>
#include <IOKit/IOKitLib.h>

#ifdef __cplusplus
extern "C" {
#endif

IOReturn IOPMCopyBatteryInfo(mach_port_t mainPort, CFArrayRef* info);

#ifdef __cplusplus
}
#endif
