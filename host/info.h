#pragma once

#include <vantile/foundation/value.h>
#include <vantile/sysinfo/system_info.h>

#include <string>

namespace vantile::host {

/// What the machine is, and its volumes, as KVDDisk tells of them: a table of labels and values,
/// "-" for nil, two lines a volume, or one JSON object under the properties' names, null for nil,
/// and "volumes". Both end in a newline.
std::string systemTable(const KVDSystemInfo& info, const Array& volumes);
std::string systemJson(const KVDSystemInfo& info, const Array& volumes);

}  // namespace vantile::host
