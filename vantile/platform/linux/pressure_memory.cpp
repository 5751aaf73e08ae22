#include "vantile/platform/linux/pressure_memory.h"

#include <stdlib.h>

#include <algorithm>
#include <optional>

#include "vantile/platform/parsers/meminfo.h"
#include "vantile/platform/posix/files.h"

namespace vantile {
namespace {

/// The room of the group in `folder`, or nothing where it has no limit.
std::optional<MemoryRoom> roomOf(const std::string& folder, bool unified) {
  const auto number = [&folder](const char* file) {
    const auto text = contentsOf(folder + file);
    return text ? parseGroupLimit(*text) : std::nullopt;
  };
  auto limit = number(unified ? "/memory.max" : "/memory.limit_in_bytes");
  if (const auto high = unified ? number("/memory.high") : std::nullopt)
    limit = std::min(*high, limit.value_or(*high));  // above it, the group is slowed to a crawl
  const auto usage = number(unified ? "/memory.current" : "/memory.usage_in_bytes");
  const auto statistics = contentsOf(folder + "/memory.stat");
  if (!limit) return std::nullopt;
  if (!usage) return MemoryRoom{*limit, 0};  // it may be full
  return groupRoom(*limit, *usage, statistics ? reclaimableCache(*statistics, unified) : 0);
}

}  // namespace

void* LinuxPressureMemory::zeroed(std::size_t bytes) noexcept {
  return ::calloc(1, bytes);
}

void* LinuxPressureMemory::chunk(std::size_t bytes) noexcept {
  try {
    return mayTake(bytes) ? ::valloc(bytes) : nullptr;
  } catch (...) {  // no memory left even to look
    return nullptr;
  }
}

void LinuxPressureMemory::release(void* block) noexcept {
  ::free(block);
}

std::vector<MemoryRoom> LinuxPressureMemory::rooms() const {
  const auto text = contentsOf(roots_.proc + "/meminfo");
  const auto info = text ? parseMeminfo(*text) : Meminfo{};
  if (!info.memTotal || !info.memAvailable) return {};
  std::vector<MemoryRoom> rooms = {{*info.memTotal * 1024, *info.memAvailable * 1024}};
  const auto groups = contentsOf(roots_.proc + "/self/cgroup");
  const auto mounts = contentsOf(roots_.proc + "/self/mountinfo");
  if (!groups || !mounts) return rooms;
  for (const auto& group : memoryGroups(*groups, parseMountinfo(*mounts)))
    for (const auto& folder : group.folders)
      if (const auto room = roomOf(folder, group.unified)) rooms.push_back(*room);
  return rooms;
}

bool LinuxPressureMemory::mayTake(std::size_t bytes) const {
  const auto all = rooms();
  return !all.empty() && std::all_of(all.begin(), all.end(), [bytes](const MemoryRoom& room) {
    return leavesReserve(room, bytes);
  });
}

std::shared_ptr<PressureMemory> systemPressureMemory() {
  static auto& memory =
      *new std::shared_ptr<PressureMemory>(std::make_shared<LinuxPressureMemory>());
  return memory;
}

}  // namespace vantile
