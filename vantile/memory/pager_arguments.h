#pragma once

#include <string>
#include <string_view>

namespace vantile {

/// The path that the pager's command line gives its swap files, from the text of a process list:
/// the words behind the first "-F" of a line that names dynamic_pager, up to one that begins with
/// "-", joined by single spaces. Empty when no line gives one.
std::string pagerFileArgument(std::string_view processList);

}  // namespace vantile
