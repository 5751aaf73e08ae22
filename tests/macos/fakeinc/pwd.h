#pragma once

#include_next <pwd.h>

#ifdef __cplusplus
extern "C"
#endif
    int
    fake_getpwuid_r(uid_t user, struct passwd* entry, char* text, size_t size,
                    struct passwd** found);
#define getpwuid_r fake_getpwuid_r
