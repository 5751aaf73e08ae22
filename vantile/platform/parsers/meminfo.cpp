#include "vantile/platform/parsers/meminfo.h"

#include "vantile/platform/parsers/text.h"

namespace vantile {

Meminfo parseMeminfo(std::string_view text) {
  NamedNumbers lines(text);
  Meminfo info;  // asked in the kernel's order
  info.memTotal = lines.find("MemTotal:");
  info.memFree = lines.find("MemFree:");
  info.memAvailable = lines.find("MemAvailable:");
  info.active = lines.find("Active:");
  info.inactive = lines.find("Inactive:");
  info.swapTotal = lines.find("SwapTotal:");
  info.zswap = lines.find("Zswap:");
  info.zswapped = lines.find("Zswapped:");
  info.kReclaimable = lines.find("KReclaimable:");
  return info;
}

}  // namespace vantile
