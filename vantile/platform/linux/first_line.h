#pragma once

#include <optional>
#include <string>

#include "vantile/platform/parsers/text.h"
#include "vantile/platform/posix/files.h"

namespace vantile {

/// The first line of a file that holds one text; nothing where the file can't be read or the line
/// is empty.
inline std::optional<std::string> firstLineOf(const std::string& path) {
  constexpr std::size_t most = 4096;
  const auto text = contentsOf(path, most);
  if (!text) return std::nullopt;
  std::string_view rest = *text;
  const auto line = takeLine(rest);
  return line.empty() ? std::nullopt : std::optional<std::string>(line);
}

}  // namespace vantile
