#pragma once

#include <vantile/foundation/value.h>

#include <chrono>
#include <string>

#include "report.h"

namespace vantile::host {

/// A value as JSON: numbers keep their width, dictionaries their order, dates are ISO 8601 text
/// in UTC, images {"name","file"}. Bytes that are not UTF-8 become U+FFFD.
std::string jsonText(const Value& value);

/// The line that `stream` prints for a report, with its newline. `time` becomes seconds since the
/// epoch.
std::string jsonLine(const Report& report, std::chrono::sys_time<std::chrono::milliseconds> time);

}  // namespace vantile::host
