// Foundation, as far as the macOS adapters use it: two functions, which they declare for
// themselves, since the real header is for Objective-C alone. They find its classes by name once
// the framework is loaded.
#pragma once

#include <objc/runtime.h>

#ifdef __cplusplus
extern "C" {
#endif

id NSUserName(void);
id NSFullUserName(void);

#ifdef __cplusplus
}
#endif
