#pragma once

#include <cstdint>

#include "vantile/foundation/api.h"

/// Folder traversals that call back once an item, and the size of a folder: functions of C linkage,
/// for C++. Paths are NUL-terminated bytes; items are reported as the given path continued, so give
/// an absolute one. The callbacks run on the calling thread, one after another, before the
/// function returns. Symbolic links are neither followed nor reported; one at the end of the given
/// path is followed. A folder that is missing or can't be read reports nothing. A stop flag that is
/// or becomes nonzero ends a traversal early; a null one never does. It is read atomically; set it
/// so, too. None of them throws: what a callback throws ends the traversal and is logged.
///
/// What an application is depends on the platform. macOS: a folder whose extension is "app". Linux:
/// that, a desktop entry that menus show (.desktop) and an AppImage.

extern "C" {

/// Receives the path of an item and its kind: 1 an application, 0 a plain folder.
typedef void (*folder_item_callback)(const char* path, std::int32_t kind);
/// Receives the path of an item.
typedef void (*download_item_callback)(const char* path);

/// Reports the applications and the plain folders below the folder at every depth, a folder before
/// what is in it; applications are not entered. `mode` makes no difference. 0; -1 when there is no
/// folder to read, the stop flag was set from the start, or a callback threw.
VANTILE_API std::int32_t trv_all_app(const char* path, std::int32_t mode,
                                     folder_item_callback callback, std::int32_t* stop) noexcept;

/// Reports the applications that stand in the folder itself. 0; -1 as above.
VANTILE_API std::int32_t trv_sub_app(const char* path, folder_item_callback callback,
                                     std::int32_t* stop) noexcept;

/// Reports the unfinished downloads that stand in the folder itself: files and folders with the
/// extension "download", "crdownload", "part" or "opdownload". 0; -1 as above.
VANTILE_API std::int32_t trv_sub_download(const char* path, download_item_callback callback,
                                          std::int32_t* stop) noexcept;

/// Bytes of the contents of all regular files below the folder, on whatever volumes are mounted
/// there, one with several names counted once; 0 for a missing folder. What can't be read is left
/// out.
VANTILE_API std::uint64_t get_folder_size(const char* path) noexcept;

}  // extern "C"

namespace vantile {

/// The kinds by which `folder_item_callback` is told of an item.
constexpr std::int32_t folderKind = 0, applicationKind = 1;

}  // namespace vantile
