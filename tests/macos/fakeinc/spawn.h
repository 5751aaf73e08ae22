#pragma once

#include_next <spawn.h>

#define POSIX_SPAWN_CLOEXEC_DEFAULT 0x4000

#ifdef __cplusplus
extern "C"
#endif
    int
    fake_posix_spawnattr_setflags(posix_spawnattr_t* attributes, int flags);
#define posix_spawnattr_setflags fake_posix_spawnattr_setflags
