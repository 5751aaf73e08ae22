#pragma once

#include <cstdint>

namespace vantile {

/// Memory that a machine or a control group may use and what of it is available, in bytes.
struct MemoryRoom {
  std::uint64_t total = 0, available = 0;
};

/// What a group with this limit and usage has available, its reclaimable file cache included.
MemoryRoom groupRoom(std::uint64_t limit, std::uint64_t usage, std::uint64_t reclaimable);

/// Whether taking `bytes` leaves the reserve: 512 MiB or 5 % of the total, whichever is larger.
bool leavesReserve(const MemoryRoom& room, std::uint64_t bytes);

}  // namespace vantile
