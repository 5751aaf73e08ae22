#pragma once

#include <optional>
#include <string>
#include <string_view>

namespace vantile {

/// The full name of an account, from the text that it keeps beside its login name: the first of
/// its fields, which commas separate, each "&" standing for the login name with a capital. Nothing
/// where that is blank.
std::optional<std::string> fullNameIn(std::string_view gecos, std::string_view login);

}  // namespace vantile
