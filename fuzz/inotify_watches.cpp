#include "vantile/platform/parsers/inotify_watches.h"

#include <cstdio>
#include <string>

#include "fuzz/fuzzer.h"

namespace vantile::fuzz {

void consume(std::string_view input) {
  const auto watches = parseInotifyWatches(input);
  require(watches.size() <= split(input, '\n').size(), "a line gives a watch at most");
  // What was read, written as the kernel writes it, is read again.
  std::string table = "pos:\t0\n";
  for (const int watch : watches) {
    require(watch >= 0, "a watch has a number");
    char line[64];
    std::snprintf(line, sizeof line, "inotify wd:%x ino:9e7e sdev:800013 mask:800\n", watch);
    table += line;
  }
  require(parseInotifyWatches(table) == watches, "what was written is read again");
}

}  // namespace vantile::fuzz
