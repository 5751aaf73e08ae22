#include "vantile/memory/pager_arguments.h"

#include <algorithm>

#include "fuzz/fuzzer.h"

namespace vantile::fuzz {
namespace {

bool beginsWithDash(std::string_view word) {
  return word.starts_with('-');
}

}  // namespace

void consume(std::string_view input) {
  const auto file = pagerFileArgument(input);
  const auto words = split(file, ' ');
  require(std::none_of(words.begin(), words.end(), beginsWithDash), "an option is no path");
  require(file.find('\n') == file.npos, "a path stands on one line");
  require(input.find(file) != input.npos, "a path is a piece of the text");
  require(file.empty() ||
              (input.find("-F ") != input.npos && input.find("dynamic_pager") != input.npos),
          "a path is the pager's and behind its option");

  std::string path = "/" + std::string(split(input, '\n').front());
  const auto pieces = split(path, ' ');
  if (std::any_of(pieces.begin(), pieces.end(), beginsWithDash)) return;
  const auto list = "  PID TTY TIME CMD\n   60 ?? 0:00.01 /sbin/dynamic_pager -F " + path;
  require(pagerFileArgument(list) == path, "a path at the end comes back as it was");
  require(pagerFileArgument(list + " -H 4\n") == path, "a path before an option does, too");
}

}  // namespace vantile::fuzz
