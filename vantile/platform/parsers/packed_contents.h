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

/// What was counted in a folder, and how long the list of the names is.
struct PackedContents {
  FolderSums sums;
  std::uint64_t namesSize = 0;
  friend bool operator==(const PackedContents&, const PackedContents&) = default;
};

/// Appends it; nothing where nothing was counted.
void appendPacked(std::string& text, const PackedContents& contents);
/// Takes it off `text`; nothing where that is none. An empty text says that nothing was counted.
std::optional<PackedContents> takeContents(std::string_view& text);

/// Whether a folder's entry can have that name.
bool isEntryName(std::string_view name);
/// Whether these are such names, each with its NUL.
bool areEntryNames(std::string_view names);

}  // namespace vantile
