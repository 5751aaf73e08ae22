#pragma once

#include <string>
#include <string_view>

#include "vantile/foundation/api.h"

namespace vantile {

// Path operations on text alone, with macOS's meaning of a path's components. "/" at the end does
// not count; names are bytes.

/// "/private/var/vm/swapfile" gives "swapfile"; "/" gives "/"; "" gives "".
VANTILE_API std::string lastPathComponent(std::string_view path);
/// "/private/var/vm/swapfile" gives "/private/var/vm"; "/swapfile" gives "/"; "swapfile" gives "".
VANTILE_API std::string withoutLastPathComponent(std::string_view path);
/// `path` and `component` with exactly one "/" in between; an empty path gives the component.
VANTILE_API std::string appendingPathComponent(std::string_view path, std::string_view component);
/// The text behind the last "." of the last component; "" where it has none, begins with its only
/// "." or ends in one.
VANTILE_API std::string pathExtension(std::string_view path);
/// "/d/a.tar.gz" gives "/d/a.tar"; a path without an extension, as `pathExtension` has it, is only
/// freed of a "/" at its end.
VANTILE_API std::string withoutPathExtension(std::string_view path);

}  // namespace vantile
