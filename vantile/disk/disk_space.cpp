#include <algorithm>

#include "vantile/disk/disk.h"
#include "vantile/disk/disk_ports.h"
#include "vantile/disk/volume_types.h"
#include "vantile/foundation/guard.h"
#include "vantile/utility/strings.h"

namespace vantile {
namespace {

using Figure = std::optional<std::uint64_t> FileSystemSpace::*;

/// What is wrong with the system is a figure that it does not tell.
template <class Ask>
auto asked(Ask ask) {
  decltype(ask(DiskPorts::installed())) answer = {};
  guarded("a query of space", [&] { answer = ask(DiskPorts::installed()); });
  return answer;
}

std::uint64_t homeFigure(Figure figure) {
  return asked([figure](const DiskPorts& ports) {
           return ports.volumes->space(ports.folders->home()).*figure;
         })
      .value_or(0);
}

/// The mount point, or nothing where there is no such volume.
std::optional<std::string> bootCamp() {
  return asked([](const DiskPorts& ports) -> std::optional<std::string> {
    const auto paths = ports.volumes->localPaths(volumeTypes(*ports.volumes));
    const auto found = std::ranges::find_if(
        paths, [](const std::string& path) { return startWithString(path, "/Volumes/BOOTCAMP"); });
    return found == paths.end() ? std::nullopt : std::optional(*found);
  });
}

std::optional<std::uint64_t> bootCampFigure(Figure figure) {
  const auto path = bootCamp();
  if (!path) return std::nullopt;
  return asked([&](const DiskPorts& ports) { return ports.volumes->space(*path).*figure; })
      .value_or(0);
}

std::optional<std::string> shown(std::optional<std::uint64_t> bytes) {
  return bytes ? std::optional(KVDDisk::memoryFormatter(*bytes)) : std::nullopt;
}

}  // namespace

std::uint64_t KVDDisk::totalDiskSpaceInBytes() {
  return homeFigure(&FileSystemSpace::size);
}

std::uint64_t KVDDisk::freeDiskSpaceInBytes() {
  return homeFigure(&FileSystemSpace::free);
}

std::uint64_t KVDDisk::usedDiskSpaceInBytes() {
  const auto total = totalDiskSpaceInBytes();
  return total - freeDiskSpaceInBytes();
}

std::string KVDDisk::totalDiskSpace() {
  return memoryFormatter(totalDiskSpaceInBytes());
}

std::string KVDDisk::freeDiskSpace() {
  return memoryFormatter(freeDiskSpaceInBytes());
}

std::string KVDDisk::usedDiskSpace() {
  return memoryFormatter(usedDiskSpaceInBytes());
}

std::uint64_t KVDDisk::totalBootCampDiskSpaceInBytes() {
  return bootCampFigure(&FileSystemSpace::size).value_or(0);
}

std::uint64_t KVDDisk::freeBootCampDiskSpaceInBytes() {
  return bootCampFigure(&FileSystemSpace::free).value_or(0);
}

std::uint64_t KVDDisk::usedBootCampDiskSpaceInBytes() {
  const auto total = totalBootCampDiskSpaceInBytes();
  return total - freeBootCampDiskSpaceInBytes();
}

std::optional<std::string> KVDDisk::totalBootCampSpace() {
  return shown(bootCampFigure(&FileSystemSpace::size));
}

std::optional<std::string> KVDDisk::freeBootCampDiskSpace() {
  return shown(bootCampFigure(&FileSystemSpace::free));
}

std::string KVDDisk::usedBootCampDiskSpace() {
  return memoryFormatter(usedBootCampDiskSpaceInBytes());
}

std::uint64_t KVDDisk::numberOfNodes() {
  return homeFigure(&FileSystemSpace::nodes);
}

std::string KVDDisk::memoryFormatter(std::uint64_t bytes) {
  const auto number = static_cast<double>(bytes);
  if (number / 1e9 >= 1) return twoDecimals(number / 1e9) + " GB";
  if (number / 1e6 >= 1) return twoDecimals(number / 1e6) + " MB";
  return twoDecimals(number) + " bytes";
}

}  // namespace vantile
