#pragma once

#include <vantile/sysinfo/system_info.h>

#include <string>

namespace vantile::host {

/// What the machine is: a table of labels and values, "-" for nil, or one JSON object under the
/// properties' names, null for nil. Both end in a newline.
std::string systemTable(const KVDSystemInfo& info);
std::string systemJson(const KVDSystemInfo& info);

}  // namespace vantile::host
