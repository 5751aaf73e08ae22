#pragma once

#include <optional>
#include <string>
#include <string_view>

namespace vantile {

/// The folder that a user-dirs.dirs file assigns to `name`, such as "XDG_DOWNLOAD_DIR", without a
/// "/" at its end; nothing where it assigns none. The last assignment counts. A value is absolute
/// or begins with $HOME, anything else is no assignment.
std::optional<std::string> parseUserDirs(std::string_view text, std::string_view name,
                                         std::string_view home);

}  // namespace vantile
