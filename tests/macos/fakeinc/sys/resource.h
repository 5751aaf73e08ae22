#pragma once

#include_next <sys/resource.h>

#ifdef __cplusplus
extern "C"
#endif
    int
    fake_getrlimit(int resource, struct rlimit* limit);
#define getrlimit fake_getrlimit
