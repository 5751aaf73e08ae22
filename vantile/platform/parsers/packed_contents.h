#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

#include "vantile/platform/parsers/usage_index.h"

namespace vantile {

/// Appends `number`, seven bits a byte, the lowest first; the last byte is below 128.
void appendPacked(std::string& text, std::uint64_t number);
/// Takes such a number off `text`; nothing where it is cut off or does not fit.
std::optional<std::uint64_t> takePacked(std::string_view& text);

/// Appends what was counted in a folder, for the names of its files to follow.
void appendPacked(std::string& text, const FolderSums& sums);
/// What such a text says, or nothing where it is none: a name that leads elsewhere, say. An empty
/// one says that nothing was counted.
std::optional<FolderContents> contentsIn(std::string_view text);
/// Whether it says anything, without a copy.
bool isPackedContents(std::string_view text);
/// The sums in such a text.
FolderSums sumsIn(std::string_view text);

/// The names of counted files in such a text, each with its NUL.
std::string_view filesIn(std::string_view text);

/// Whether a folder's entry can have that name.
bool isEntryName(std::string_view name);

}  // namespace vantile
