#pragma once

#include <objc/runtime.h>

// To be called as a function of the method's own type.
#ifdef __cplusplus
extern "C"
#endif
    void
    objc_msgSend(void);
