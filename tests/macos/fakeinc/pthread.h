#pragma once

#include_next <pthread.h>

#ifdef __cplusplus
extern "C"
#endif
    int
    pthread_main_np(void);
