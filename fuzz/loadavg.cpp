#include "vantile/platform/parsers/loadavg.h"

#include "fuzz/fuzzer.h"

void vantile::fuzz::consume(std::string_view input) {
  const auto found = threadsInLoadavg(input);
  const auto pieces = split(input, ' ');
  if (pieces.size() < 4 || pieces[3].find('/') == std::string_view::npos) {
    require(!found, "without the field there is nothing");
  } else {
    require(found == numberIn(pieces[3].substr(pieces[3].find('/') + 1)),
            "the field's second number");
  }
  const auto threads = std::to_string(input.size());
  require(threadsInLoadavg("0.00 0.49 1.67 2/" + threads + " 6316\n") == input.size(),
          "what the kernel writes is read back");
}
