#pragma once

#include <optional>
#include <string>
#include <string_view>

namespace vantile {

/// What a table of translations, lines of `"key" = "text";` with comments as in C, holds under
/// `key`: the last such text. Nothing where there is none, or where the table is malformed.
std::optional<std::string> stringInTable(std::string_view table, std::string_view key);

}  // namespace vantile
