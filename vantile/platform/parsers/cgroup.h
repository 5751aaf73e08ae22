#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "vantile/platform/parsers/mountinfo.h"

namespace vantile {

/// A control group whose memory is accounted: its folder and, up to the mount point, its
/// ancestors'. Innermost first.
struct MemoryGroup {
  bool unified = false;  ///< the second version of the interface
  std::vector<std::string> folders;
};

/// The memory groups of a process from its /proc/PID/cgroup and the mounts that it sees: one for
/// each version of the interface that accounts memory.
std::vector<MemoryGroup> memoryGroups(std::string_view cgroupText,
                                      const std::vector<Mount>& mounts);

/// A limit in a file such as memory.max. Nothing for "max" and for what is no number.
std::optional<std::uint64_t> parseGroupLimit(std::string_view text);

/// Bytes of file cache that a group could give back without writing anything first, from its
/// memory.stat.
std::uint64_t reclaimableCache(std::string_view memoryStat, bool unified);

}  // namespace vantile
