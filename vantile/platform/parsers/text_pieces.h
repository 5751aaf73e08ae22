#pragma once

#include <functional>
#include <string>
#include <string_view>
#include <vector>

namespace vantile {

/// The pieces of UTF-8 `text` between characters that `separates` says yes to: one more than there
/// are such characters, empty ones included. A byte that is not UTF-8 belongs to its piece.
std::vector<std::string> piecesBetween(std::string_view text,
                                       const std::function<bool(char32_t)>& separates);

}  // namespace vantile
