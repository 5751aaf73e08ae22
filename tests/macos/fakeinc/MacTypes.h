#pragma once

#include <stdint.h>

typedef unsigned char Boolean;
typedef int32_t SInt32;
