#include "vantile/platform/parsers/vmstat.h"

#include "fuzz/fuzzer.h"

void vantile::fuzz::consume(std::string_view input) {
  const auto whole = parseWholeVmstat(input);
  require(isOnALine(whole.pgpgin, "pgpgin ", input), "pgpgin");
  require(isOnALine(whole.pgpgout, "pgpgout ", input), "pgpgout");
  require(isOnALine(whole.pgfault, "pgfault ", input), "pgfault");
  require(isOnALine(whole.pglazyfreed, "pglazyfreed ", input), "pglazyfreed");
  require(isOnALine(whole.zswpin, "zswpin ", input), "zswpin");
  require(isOnALine(whole.zswpout, "zswpout ", input), "zswpout");

  const auto first = parseVmstat(input);
  require(first.pgpgin == whole.pgpgin && first.pgpgout == whole.pgpgout &&
              first.pgfault == whole.pgfault && first.pglazyfreed == whole.pglazyfreed,
          "both read the first part alike");
  require(!first.zswpin && !first.zswpout, "the first part holds no zswap counters");
}
