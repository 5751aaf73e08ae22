// Declarations of the CoreFoundation functions that the macOS adapters use, written by hand after
// the published interface. The cross build links by them, the seam tests compile by them.
#pragma once

#include <MacTypes.h>

#ifdef __cplusplus
extern "C" {
#endif

typedef signed long CFIndex;
typedef unsigned long CFHashCode;
typedef unsigned long CFOptionFlags;
typedef double CFTimeInterval;
typedef CFTimeInterval CFAbsoluteTime;  // seconds since the beginning of 2001, UTC

typedef const void* CFTypeRef;
typedef const struct __CFAllocator* CFAllocatorRef;
typedef const struct __CFString* CFStringRef;

CFTypeRef CFRetain(CFTypeRef object);
void CFRelease(CFTypeRef object);

CFAbsoluteTime CFAbsoluteTimeGetCurrent(void);

typedef struct __CFRunLoop* CFRunLoopRef;
typedef struct __CFRunLoopSource* CFRunLoopSourceRef;
typedef struct __CFRunLoopTimer* CFRunLoopTimerRef;
typedef CFStringRef CFRunLoopMode;
typedef SInt32 CFRunLoopRunResult;

enum {
  kCFRunLoopRunFinished = 1,
  kCFRunLoopRunStopped = 2,
  kCFRunLoopRunTimedOut = 3,
  kCFRunLoopRunHandledSource = 4
};

extern const CFRunLoopMode kCFRunLoopDefaultMode;
extern const CFRunLoopMode kCFRunLoopCommonModes;

CFRunLoopRef CFRunLoopGetCurrent(void);
CFRunLoopRef CFRunLoopGetMain(void);
void CFRunLoopRun(void);
CFRunLoopRunResult CFRunLoopRunInMode(CFRunLoopMode mode, CFTimeInterval seconds,
                                      Boolean returnAfterSourceHandled);
void CFRunLoopStop(CFRunLoopRef loop);
void CFRunLoopWakeUp(CFRunLoopRef loop);

typedef struct {
  CFIndex version;
  void* info;
  const void* (*retain)(const void* info);
  void (*release)(const void* info);
  CFStringRef (*copyDescription)(const void* info);
  Boolean (*equal)(const void* info1, const void* info2);
  CFHashCode (*hash)(const void* info);
  void (*schedule)(void* info, CFRunLoopRef loop, CFRunLoopMode mode);
  void (*cancel)(void* info, CFRunLoopRef loop, CFRunLoopMode mode);
  void (*perform)(void* info);
} CFRunLoopSourceContext;

CFRunLoopSourceRef CFRunLoopSourceCreate(CFAllocatorRef allocator, CFIndex order,
                                         CFRunLoopSourceContext* context);
void CFRunLoopSourceSignal(CFRunLoopSourceRef source);
void CFRunLoopSourceInvalidate(CFRunLoopSourceRef source);
void CFRunLoopAddSource(CFRunLoopRef loop, CFRunLoopSourceRef source, CFRunLoopMode mode);

typedef struct {
  CFIndex version;
  void* info;
  const void* (*retain)(const void* info);
  void (*release)(const void* info);
  CFStringRef (*copyDescription)(const void* info);
} CFRunLoopTimerContext;

typedef void (*CFRunLoopTimerCallBack)(CFRunLoopTimerRef timer, void* info);

CFRunLoopTimerRef CFRunLoopTimerCreate(CFAllocatorRef allocator, CFAbsoluteTime fireDate,
                                       CFTimeInterval interval, CFOptionFlags flags, CFIndex order,
                                       CFRunLoopTimerCallBack callout,
                                       CFRunLoopTimerContext* context);
void CFRunLoopTimerSetNextFireDate(CFRunLoopTimerRef timer, CFAbsoluteTime fireDate);
void CFRunLoopTimerInvalidate(CFRunLoopTimerRef timer);
void CFRunLoopAddTimer(CFRunLoopRef loop, CFRunLoopTimerRef timer, CFRunLoopMode mode);

#ifdef __cplusplus
}
#endif
