#pragma once

#include <string>
#include <string_view>

namespace vantile {

/// The text in UTF-8. Half a surrogate pair, which UTF-8 has not, becomes U+FFFD.
std::string utf8Of(std::u16string_view text);

}  // namespace vantile
