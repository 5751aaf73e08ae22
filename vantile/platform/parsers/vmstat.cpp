#include "vantile/platform/parsers/vmstat.h"

#include "vantile/platform/parsers/text.h"

namespace vantile {
namespace {

Vmstat firstPart(NamedNumbers& lines) {
  Vmstat counters;  // asked in the kernel's order
  counters.pgpgin = lines.find("pgpgin ");
  counters.pgpgout = lines.find("pgpgout ");
  counters.pgfault = lines.find("pgfault ");
  counters.pglazyfreed = lines.find("pglazyfreed ");
  counters.bytes = lines.position();
  return counters;
}

}  // namespace

Vmstat parseVmstat(std::string_view text) {
  NamedNumbers lines(text);
  return firstPart(lines);
}

Vmstat parseWholeVmstat(std::string_view text) {
  NamedNumbers lines(text);
  Vmstat counters = firstPart(lines);
  counters.zswpin = lines.find("zswpin ");
  counters.zswpout = lines.find("zswpout ");
  return counters;
}

}  // namespace vantile
