#pragma once

#include "vantile/foundation/value.h"

namespace vantile::keys {

// A volume. Sizes are unsigned 64-bit bytes, but for those of kinds of files.
inline constexpr Key disk_format = "disk_format";            ///< type of the file system
inline constexpr Key disk_mntfromname = "disk_mntfromname";  ///< the mounted device
inline constexpr Key disk_path = "disk_path";                ///< the mount point
inline constexpr Key disk_name = "disk_name";                ///< what the user calls it
/// An image; left out where the desktop has none. The spelling is the interface's.
inline constexpr Key disk_icom = "disk_icom";
inline constexpr Key disk_totalsize = "disk_totalsize";
inline constexpr Key disk_freesize = "disk_freesize";  ///< for users without privileges
/// What is not free for them: blocks kept for the superuser count as used.
inline constexpr Key disk_usedsize = "disk_usedsize";
inline constexpr Key disk_backups = "disk_backups";  ///< always 0; of the volume at "/" alone

// Of the used bytes, as the volume's metadata has them: each entry as it is stored, on macOS of
// whatever type, on Linux unsigned 64-bit. Each is left out where that goes without.
inline constexpr Key disk_movies = "disk_movies";
inline constexpr Key disk_apps = "disk_apps";
inline constexpr Key disk_audio = "disk_audio";
inline constexpr Key disk_photos = "disk_photos";
/// The rest, unsigned 64-bit; left out where the kinds come to the used bytes, or to more.
inline constexpr Key disk_other = "disk_other";
/// A boolean: whether there is a rest. False, too, where the volume has no metadata; left out where
/// its metadata has no list of sizes.
inline constexpr Key has_accumulated_sizes = "has_accumulated_sizes";

}  // namespace vantile::keys
