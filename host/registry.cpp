#include "registry.h"

#include <algorithm>

#include "memory_monitor.h"

namespace vantile::host {

const std::vector<MonitorEntry>& monitors() {
  static const std::vector<MonitorEntry> all{
      {"memory", true, startMemory, memoryPanes},
  };
  return all;
}

const MonitorEntry& monitorNamed(std::string_view name) {
  return *std::ranges::find(monitors(), name, &MonitorEntry::name);
}

std::vector<std::string> monitorNames() {
  std::vector<std::string> names;
  for (const auto& monitor : monitors()) names.emplace_back(monitor.name);
  return names;
}

}  // namespace vantile::host
