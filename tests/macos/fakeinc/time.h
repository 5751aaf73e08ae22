#pragma once

#include <stdint.h>
#include_next <time.h>

// A value that no clock of Linux has.
#define CLOCK_UPTIME_RAW 1008

#ifdef __cplusplus
extern "C"
#endif
    uint64_t
    clock_gettime_nsec_np(clockid_t clock);
