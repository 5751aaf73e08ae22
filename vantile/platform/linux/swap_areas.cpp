#include "vantile/platform/swap_areas.h"

#include <sys/stat.h>
#include <sys/sysmacros.h>

#include <algorithm>

#include "vantile/platform/linux/swap_areas.h"
#include "vantile/platform/parsers/swaps.h"
#include "vantile/platform/posix/files.h"

namespace vantile {

std::optional<std::vector<SwapLine>> LinuxSwapAreas::lines() {
  const auto text = contentsOf(roots_.proc + "/swaps");
  return text ? std::optional(parseSwaps(*text)) : std::nullopt;
}

std::optional<std::vector<SwapArea>> LinuxSwapAreas::areas() {
  std::vector<SwapArea> areas;
  if (auto all = lines())
    for (auto& line : *all) areas.push_back(std::move(line.area));
  return areas;
}

std::optional<SwapUsage> LinuxSwapAreas::usage() {
  const auto all = lines();
  if (!all) return std::nullopt;
  SwapUsage usage;
  for (const auto& line : *all) usage.usedBytes += line.usedBytes;
  usage.encrypted =
      !all->empty() && std::all_of(all->begin(), all->end(),
                                   [this](const auto& line) { return isEncrypted(line.area); });
  return usage;
}

bool LinuxSwapAreas::isEncrypted(const SwapArea& area) {
  struct stat device = {};
  if (::stat(area.path.c_str(), &device) != 0 || !S_ISBLK(device.st_mode)) return false;
  const auto number =
      std::to_string(major(device.st_rdev)) + ":" + std::to_string(minor(device.st_rdev));
  const auto mapping = contentsOf(roots_.sys + "/dev/block/" + number + "/dm/uuid");
  return mapping && mapping->starts_with("CRYPT-");
}

std::shared_ptr<SwapAreas> systemSwapAreas() {
  static auto& areas = *new std::shared_ptr<SwapAreas>(std::make_shared<LinuxSwapAreas>());
  return areas;
}

}  // namespace vantile
