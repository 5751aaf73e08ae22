#pragma once

#include_next <pthread.h>

#ifdef __cplusplus
extern "C" {
#endif
int pthread_main_np(void);
int fake_pthread_create(pthread_t* thread, const pthread_attr_t* attributes, void* (*start)(void*),
                        void* argument);
int fake_pthread_detach(pthread_t thread);
#ifdef __cplusplus
}

// A thread names itself alone. Linux's own takes the thread, too.
int pthread_setname_np(const char* name);
#endif

#define pthread_create fake_pthread_create
#define pthread_detach fake_pthread_detach
