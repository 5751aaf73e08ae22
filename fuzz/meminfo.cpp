#include "vantile/platform/parsers/meminfo.h"

#include "fuzz/fuzzer.h"

void vantile::fuzz::consume(std::string_view input) {
  const auto requireOnALine = [input](std::optional<std::uint64_t> found, const char* name) {
    require(isOnALine(found, name, input), name);
  };
  const auto info = parseMeminfo(input);
  requireOnALine(info.memTotal, "MemTotal:");
  requireOnALine(info.memFree, "MemFree:");
  requireOnALine(info.memAvailable, "MemAvailable:");
  requireOnALine(info.active, "Active:");
  requireOnALine(info.inactive, "Inactive:");
  requireOnALine(info.swapTotal, "SwapTotal:");
  requireOnALine(info.zswap, "Zswap:");
  requireOnALine(info.zswapped, "Zswapped:");
  requireOnALine(info.kReclaimable, "KReclaimable:");

  // A number that was cut off is absent, never a smaller one. Of what stands in one piece, the
  // whole lines count, so a text and its whole lines say the same.
  const auto wholeLines = input.substr(0, input.rfind('\n') + 1);
  const auto again = parseMeminfo(wholeLines);
  require(again.memTotal == info.memTotal && again.memFree == info.memFree &&
              again.active == info.active && again.kReclaimable == info.kReclaimable,
          "what was cut off does not count");
}
