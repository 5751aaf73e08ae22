#pragma once

#include <stdint.h>

typedef unsigned char Boolean;
typedef uint8_t UInt8;
typedef int32_t SInt32;
typedef uint32_t UInt32;
typedef int64_t SInt64;
