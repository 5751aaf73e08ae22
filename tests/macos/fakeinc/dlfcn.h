#pragma once

#include_next <dlfcn.h>

#ifdef __cplusplus
extern "C"
#endif
    void*
    fake_dlsym(void* handle, const char* name);
#define dlsym fake_dlsym
