#pragma once

#include <vantile/foundation/value.h>

#include <chrono>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "report.h"

namespace vantile::host {

/// A value as JSON: numbers keep their width, dictionaries their order, dates are ISO 8601 text
/// in UTC, images {"name","file"}. Bytes that are not UTF-8 become U+FFFD.
std::string jsonText(const Value& value);

/// Values with their names, nothing for nil.
using NamedValues = std::vector<std::pair<std::string_view, std::optional<Value>>>;

/// One object under these names in their order, null for nil.
std::string jsonText(const NamedValues& values);

/// The line that `stream` prints for a report, with its newline. `time` becomes seconds since the
/// epoch.
std::string jsonLine(const Report& report, std::chrono::sys_time<std::chrono::milliseconds> time);

}  // namespace vantile::host
