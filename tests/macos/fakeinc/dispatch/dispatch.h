#pragma once

#include <stdint.h>

typedef struct dispatch_queue_s* dispatch_queue_t;
typedef uint64_t dispatch_time_t;
typedef void (*dispatch_function_t)(void* context);

#define DISPATCH_TIME_NOW (0ull)

#ifdef __cplusplus
extern "C" {
#endif
dispatch_queue_t dispatch_get_global_queue(intptr_t identifier, uintptr_t flags);
dispatch_time_t dispatch_time(dispatch_time_t when, int64_t nanoseconds);
void dispatch_async_f(dispatch_queue_t queue, void* context, dispatch_function_t work);
void dispatch_after_f(dispatch_time_t when, dispatch_queue_t queue, void* context,
                      dispatch_function_t work);
#ifdef __cplusplus
}
#endif
