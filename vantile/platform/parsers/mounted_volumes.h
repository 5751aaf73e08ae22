#pragma once

#include <span>
#include <string_view>
#include <vector>

#include "vantile/platform/parsers/mountinfo.h"

namespace vantile {

/// Where a volume is mounted.
struct MountedVolume {
  Mount mount;
  bool mayHang = false;     ///< what asks it may wait without end for whoever serves it
  bool wayMayHang = false;  ///< even what only goes there may, for what it is mounted in is served
  /// Where further folders or subvolumes of it are mounted, the largest ones: none is part of
  /// another, or of the one above, or the other way round. What may hang is not among them.
  std::vector<std::string> others = {};
};

/// The volumes of one of `types`, in the table's order. A file system is one volume however often
/// it is mounted: at "/" if it is there, else at the shortest path, of equal ones the first.
/// Which mounts are of one file system goes by its device number, which the kernel gives to no
/// other one while it is mounted: several that are served, or span disks, have made-up numbers of
/// their own, and all subvolumes of a btrfs share one, as they share their space. The statistics'
/// number would not do: it is 0 or made of the device for FUSE, FAT and XFS, differs by subvolume,
/// and what hangs does not tell it. `VolumeKey` tells apart what uses a device number one after the
/// other. A mount of a part of a file system (a file, a folder, a namespace) is none, but for one
/// at "/", and for a whole subvolume. What another mount covers can't be reached, and is left out.
std::vector<MountedVolume> volumesIn(std::vector<Mount> mounts,
                                     std::span<const std::string_view> types);

}  // namespace vantile
