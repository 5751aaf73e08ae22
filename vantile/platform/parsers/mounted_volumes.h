#pragma once

#include <span>
#include <string_view>
#include <vector>

#include "vantile/platform/parsers/mountinfo.h"

namespace vantile {

/// Where a volume is mounted.
struct MountedVolume {
  Mount mount;
  bool mayHang = false;  ///< what asks it may wait without end for whoever serves it
};

/// The volumes of one of `types`, in the table's order. A file system is one volume however often
/// it is mounted: at "/" if it is there, else at the shortest path, of equal ones the first.
/// A mount of a part of a file system (a file, a folder, a namespace) is none, but for one at "/",
/// and for a whole subvolume. What another mount covers can't be reached, and is left out.
std::vector<MountedVolume> volumesIn(std::vector<Mount> mounts,
                                     std::span<const std::string_view> types);

}  // namespace vantile
