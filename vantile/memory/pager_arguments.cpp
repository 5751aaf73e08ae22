#include "vantile/memory/pager_arguments.h"

#include <algorithm>
#include <vector>

namespace vantile {
namespace {

/// The pieces of `text` between single separators; two in a row have an empty piece in between.
std::vector<std::string_view> split(std::string_view text, char separator) {
  std::vector<std::string_view> pieces;
  while (true) {
    const auto end = text.find(separator);
    pieces.push_back(text.substr(0, end));
    if (end == std::string_view::npos) return pieces;
    text.remove_prefix(end + 1);
  }
}

bool namesPager(const std::vector<std::string_view>& words) {
  return std::any_of(words.begin(), words.end(), [](std::string_view word) {
    return word == "dynamic_pager" || word == "/sbin/dynamic_pager";
  });
}

}  // namespace

std::string pagerFileArgument(std::string_view processList) {
  std::string file;
  for (const auto line : split(processList, '\n')) {
    const auto words = split(line, ' ');
    if (!namesPager(words)) continue;
    const auto option = std::find(words.begin(), words.end(), "-F");
    if (option == words.end()) continue;
    for (auto word = option + 1; word != words.end() && !word->starts_with('-'); ++word) {
      if (!file.empty()) file.push_back(' ');
      file.append(*word);
    }
    if (!file.empty()) break;
  }
  return file;
}

}  // namespace vantile
