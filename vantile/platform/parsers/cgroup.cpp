#include "vantile/platform/parsers/cgroup.h"

#include <algorithm>

#include "vantile/platform/parsers/text.h"

namespace vantile {
namespace {

bool listContains(std::string_view list, std::string_view wanted) {
  while (!list.empty()) {
    const auto comma = list.find(',');
    if (list.substr(0, comma) == wanted) return true;
    list.remove_prefix(comma == std::string_view::npos ? list.size() : comma + 1);
  }
  return false;
}

/// The folders of the group `path` below the mount that shows it, innermost first.
std::vector<std::string> foldersOf(std::string_view path, const Mount& mount) {
  // A container sees a group of the host mounted as the root; what stands above is out of sight.
  if (mount.root != "/") {
    const bool inside = path == mount.root || (path.starts_with(mount.root) &&
                                               path.substr(mount.root.size()).starts_with('/'));
    path = inside ? path.substr(mount.root.size()) : std::string_view();
  }
  std::vector<std::string> folders;
  for (auto end = path.size(); end > 0 && end != std::string_view::npos;
       end = path.rfind('/', end - 1)) {
    if (path.substr(0, end) != "/")
      folders.push_back(mount.mountPoint + std::string(path.substr(0, end)));
  }
  folders.push_back(mount.mountPoint);
  return folders;
}

}  // namespace

std::vector<MemoryGroup> memoryGroups(std::string_view cgroupText,
                                      const std::vector<Mount>& mounts) {
  std::vector<MemoryGroup> groups;
  while (!cgroupText.empty()) {
    const auto line = takeLine(cgroupText);  // hierarchy:controllers:path
    const auto first = line.find(':');
    const auto second = first == std::string_view::npos ? first : line.find(':', first + 1);
    if (second == std::string_view::npos) continue;
    const auto controllers = line.substr(first + 1, second - first - 1);
    const auto path = line.substr(second + 1);
    const bool unified = controllers.empty();
    if (!path.starts_with('/') || (!unified && !listContains(controllers, "memory"))) continue;
    const auto mount = std::find_if(mounts.begin(), mounts.end(), [unified](const Mount& each) {
      return unified ? each.type == "cgroup2"
                     : each.type == "cgroup" && listContains(each.superOptions, "memory");
    });
    if (mount != mounts.end()) groups.push_back({unified, foldersOf(path, *mount)});
  }
  return groups;
}

std::optional<std::uint64_t> parseGroupLimit(std::string_view text) {
  return leadingNumber(text);
}

std::uint64_t reclaimableCache(std::string_view memoryStat, bool unified) {
  NamedNumbers lines(memoryStat);
  const auto number = [&lines](std::string_view name) { return lines.find(name).value_or(0); };
  const auto cache = unified ? number("inactive_file ") + number("active_file ")
                             : number("total_inactive_file ") + number("total_active_file ");
  const auto dirty = unified ? number("file_dirty ") + number("file_writeback ")
                             : number("total_dirty ") + number("total_writeback ");
  return cache - std::min(cache, dirty);
}

}  // namespace vantile
