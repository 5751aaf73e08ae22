#include "vantile/platform/parsers/memory_reserve.h"

#include <algorithm>

namespace vantile {

MemoryRoom groupRoom(std::uint64_t limit, std::uint64_t usage, std::uint64_t reclaimable) {
  const auto used = usage - std::min(usage, reclaimable);
  return {limit, limit - std::min(limit, used)};
}

bool leavesReserve(const MemoryRoom& room, std::uint64_t bytes) {
  constexpr std::uint64_t smallest = 512ull << 20;
  const auto reserve = std::max(smallest, room.total / 20);
  return room.available >= bytes && room.available - bytes >= reserve;
}

}  // namespace vantile
