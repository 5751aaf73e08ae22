#pragma once

#include_next <stdlib.h>

#ifdef __cplusplus
extern "C"
#endif
    int
    fake_getloadavg(double averages[], int count);
#define getloadavg fake_getloadavg
