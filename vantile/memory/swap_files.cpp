#include "vantile/memory/swap_files.h"

#include <algorithm>
#include <chrono>
#include <vector>

#include "vantile/memory/memory_ports.h"
#include "vantile/memory/pager_arguments.h"
#include "vantile/utility/folder_walk.h"
#include "vantile/utility/paths.h"
#include "vantile/utility/strings.h"

namespace vantile {
namespace {

/// What /bin/ps prints, as far as it is there while the program is seen running; nothing when it
/// can't be started or read. Bytes as they come: a piece may end inside a character.
std::optional<std::string> readProcessList(ChildTasks& tasks) {
  const auto task = tasks.launch("/bin/ps", {"-axww"});
  if (!task) return std::nullopt;
  std::string output;
  while (task->isRunning()) {
    const auto data = task->availableData();
    if (!data) return std::nullopt;
    output += *data;
    tasks.pause(std::chrono::microseconds(250000));
  }
  return output;
}

/// The path whose folder and name are the swap files' folder and prefix; empty where none is known.
std::string swapFilePath(const MemoryPorts& ports) {
  if (const auto areas = ports.swap->areas()) {
    const auto file = std::find_if(areas->begin(), areas->end(),
                                   [](const SwapArea& area) { return area.isFile; });
    return file == areas->end() ? std::string() : file->path;
  }
  const auto processes = readProcessList(*ports.tasks);
  return processes ? pagerFileArgument(*processes) : std::string();
}

SwapFiles sumOf(const std::vector<SwapArea>& areas) {
  SwapFiles files;
  for (const SwapArea& area : areas) {
    ++files.count;
    files.bytes += area.bytes;
  }
  files.anyEntry = !areas.empty();
  return files;
}

}  // namespace

SwapLocation findSwapLocation(const MemoryPorts& ports) {
  const auto path = swapFilePath(ports);
  if (path.empty()) return {"/private/var/vm/", "swapfile"};
  return {withoutLastPathComponent(path), lastPathComponent(path)};
}

SwapFiles countSwapFiles(const MemoryPorts& ports, const SwapLocation& location) {
  if (const auto areas = ports.swap->areas()) return sumOf(*areas);

  SwapFiles files;
  const auto start = appendingPathComponent(location.folder, "").size();
  walkFolder(*ports.folders, location.folder.c_str(), nullptr, [&](const WalkedEntry& entry) {
    files.anyEntry = true;
    const std::string path = entry.path();
    if (!startWithString(path.substr(std::min(start, path.size())), location.prefix))
      return Visit::enter;
    // A link counts where it leads to a file, with the size of the link itself.
    const auto target = ports.files->attributes(path, true);
    const auto self = ports.files->attributes(path, false);
    if (target && self && target->facts.kind != FileKind::folder) {
      ++files.count;
      files.bytes += self->facts.bytes;
    }
    return Visit::enter;
  });
  return files;
}

}  // namespace vantile
