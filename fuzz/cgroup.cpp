#include "vantile/platform/parsers/cgroup.h"

#include "fuzz/fuzzer.h"

namespace vantile::fuzz {
namespace {

const std::vector<Mount> mounts = {
    {.root = "/", .mountPoint = "/", .type = "ext4", .source = "/dev/vda", .superOptions = "rw"},
    {.root = "/",
     .mountPoint = "/sys/fs/cgroup/memory",
     .type = "cgroup",
     .source = "cgroup",
     .superOptions = "rw,memory"},
    {.root = "/inner/part",
     .mountPoint = "/sys/fs/cgroup/unified",
     .type = "cgroup2",
     .source = "cgroup2",
     .superOptions = "rw"},
};

void checkGroup(const MemoryGroup& group) {
  const std::string& mountPoint = mounts[group.unified ? 2 : 1].mountPoint;
  require(!group.folders.empty() && group.folders.back() == mountPoint,
          "a group's folders end at the mount point");
  for (std::size_t at = 0; at + 1 < group.folders.size(); ++at) {
    const std::string& folder = group.folders[at];
    const std::string& outer = group.folders[at + 1];
    require(folder.size() > outer.size() && folder.starts_with(outer + "/"),
            "a folder stands in the next one");
  }
}

/// A path of the kernel's comes out as its folder and every one above.
void checkPath(std::string_view name) {
  std::string path;
  for (const auto component : split(name, '/'))
    if (!component.empty()) path.append("/").append(component);
  const auto depth = split(path, '/').size();
  if (path.empty()) path = "/";
  const auto groups = memoryGroups("4:cpu,memory:" + path + "\n", mounts);
  require(groups.size() == 1 && !groups[0].unified, "the memory controller's group is found");
  require(groups[0].folders.size() == depth, "every ancestor is there");
  require(path == "/" || groups[0].folders[0] == mounts[1].mountPoint + path,
          "the group's own folder comes first");
}

}  // namespace

void consume(std::string_view input) {
  const auto lines = split(input, '\n');
  const auto groups = memoryGroups(input, mounts);
  require(groups.size() <= lines.size(), "a line gives a group at most");
  for (const auto& group : groups) checkGroup(group);
  checkPath(lines.front());

  require(parseGroupLimit(input) == numberIn(input), "a limit is a number or none");
  for (const bool unified : {false, true}) {
    const auto cache = reclaimableCache(input, unified);
    require(cache == 0 || input.find(unified ? "active_file " : "total_") != input.npos,
            "there is no cache that the text does not name");
  }
  const std::string dirtyOnly = std::string(input) + "\nfile_dirty 18446744073709551615\n";
  if (input.find("file_dirty ") == input.npos && input.find("file_writeback ") == input.npos)
    require(reclaimableCache(dirtyOnly, true) == 0, "what is dirty can't be given back");
}

}  // namespace vantile::fuzz
