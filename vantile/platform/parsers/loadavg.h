#pragma once

#include <cstdint>
#include <optional>
#include <string_view>

namespace vantile {

/// How many threads the machine has, from /proc/loadavg: the second number of its "running/all".
std::optional<std::uint64_t> threadsInLoadavg(std::string_view text);

}  // namespace vantile
