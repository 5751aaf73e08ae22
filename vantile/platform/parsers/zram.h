#pragma once

#include <cstdint>
#include <optional>
#include <string_view>

namespace vantile {

/// What a zram device holds and occupies, from its mm_stat.
struct ZramMemory {
  std::uint64_t heldBytes = 0;      ///< before compression
  std::uint64_t occupiedBytes = 0;  ///< with everything that the device needs for it
};

/// Traffic of a block device since it was made, from its stat: sectors of 512 bytes.
struct BlockTraffic {
  std::uint64_t readSectors = 0, writtenSectors = 0;
};

/// Nothing where a field is missing or unreadable.
std::optional<ZramMemory> parseZramMemory(std::string_view mmStat);
std::optional<BlockTraffic> parseBlockTraffic(std::string_view stat);

}  // namespace vantile
