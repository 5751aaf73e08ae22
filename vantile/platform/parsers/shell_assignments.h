#pragma once

#include <optional>
#include <string>
#include <string_view>

namespace vantile {

/// What `line` has behind "NAME =", blanks around the "=" allowed, empty where that is a comment;
/// nothing where it is no assignment to `name`.
std::optional<std::string_view> assignedText(std::string_view line, std::string_view name);

/// The value that a file of shell assignments such as /etc/os-release gives to `name`; nothing
/// where it gives none. Quotes of both kinds and backslash escapes are resolved as a shell does it,
/// variables are not. What is not quoted may have blanks in it, a "#" behind one begins a comment.
/// The last assignment counts; one with a quote left open at its line's end is none.
std::optional<std::string> shellAssignment(std::string_view text, std::string_view name);

}  // namespace vantile
