#pragma once

#include <cstddef>
#include <cstdint>

#include "vantile/foundation/api.h"
#include "vantile/platform/smc_record.h"

/// Access to the System Management Controller: functions of C linkage that share the process's one
/// connection to it. On Linux the processor's temperature sensor answers in its place. None throws.
/// They do no locking: one thread at a time, and not while a `CPUStatus` samples. Each open is to
/// be closed before the next one, which would leave the connection before it open for good. A null
/// argument gives kIOReturnBadArgument (0xe00002c2).
///
/// Keys and types are four ASCII characters, packed into a number with the first one highest. Of a
/// text no more is read than up to its NUL.

extern "C" {

/// The value of a key.
struct SMCValue {
  char key[5];  ///< left empty
  std::uint32_t dataSize;
  char dataType[5];  ///< four characters and a NUL
  std::uint8_t bytes[32];
};

/// Opens the connection. 0, or 1 on a failure, of which it prints a line to standard output.
VANTILE_API int SMCOpen(void) noexcept;

/// Closes the connection. The kernel's result, 0 for success, that of a bad connection where none
/// is open.
VANTILE_API std::int32_t SMCClose(void) noexcept;

/// Calls method `index` with one record and for one record. The kernel's result, 0 for success.
VANTILE_API std::int32_t SMCCall(std::uint32_t index, const SMCRecord* in, SMCRecord* out) noexcept;

/// Reads the key's value. 0, or the result of the call that failed: then the value holds what was
/// known by then.
VANTILE_API std::int32_t SMCReadKey(const char* key, SMCValue* value) noexcept;

/// Degrees Celsius of a key of the type "sp78"; 0 for any failure. The low byte counts as signed,
/// too: from 0x80 on it lowers the result by a degree.
VANTILE_API double SMCGetTemperature(const char* key) noexcept;

/// Adds up the first `size` characters, each a signed byte shifted to its place, the last one
/// lowest. By a `base` other than 16 only the lowest eight bits of each count after the shift, so
/// that only the last character does.
VANTILE_API std::uint32_t _strtoul(const char* text, std::int32_t size, std::int32_t base) noexcept;

/// Writes the value's four bytes, the highest first, and a NUL into `text`, which has room for
/// five.
VANTILE_API void _ultostr(char* text, std::uint32_t value) noexcept;

}  // extern "C"

static_assert(sizeof(SMCValue) == 52);
static_assert(offsetof(SMCValue, key) == 0 && offsetof(SMCValue, dataSize) == 8);
static_assert(offsetof(SMCValue, dataType) == 12 && offsetof(SMCValue, bytes) == 17);
