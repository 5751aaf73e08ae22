#pragma once

#include_next <fcntl.h>

#define O_EVTONLY 0x8000

// Preferred to Linux's own, which takes any arguments after two.
int open(const char* path, int flags, int mode);
