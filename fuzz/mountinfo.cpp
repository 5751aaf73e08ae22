#include "vantile/platform/parsers/mountinfo.h"

#include <set>

#include "vantile/platform/parsers/mounted_volumes.h"

#include "fuzz/fuzzer.h"

namespace vantile::fuzz {
namespace {

/// A line such as the kernel writes. A source may be empty, a type is not.
std::string lineOf(const Mount& mount, bool optionalFields) {
  return "36 35 98:0 " + asKernelWrites(mount.root) + " " + asKernelWrites(mount.mountPoint) +
         " rw,noatime" + (optionalFields ? " shared:1 master:2" : "") + " - " + mount.type + " " +
         asKernelWrites(mount.source) + " " + asKernelWrites(mount.superOptions) + "\n";
}

/// What can be said of the volumes of any table.
void checkVolumes(const std::vector<Mount>& mounts) {
  constexpr std::string_view types[] = {"ext4", "btrfs", "fuseblk"};
  const auto volumes = volumesIn(mounts, types);
  require(volumes.size() <= mounts.size(), "a mount is one volume at most");
  std::set<DeviceNumber> devices;
  for (const auto& volume : volumes) {
    require(devices.insert(volume.mount.device).second, "a file system is one volume");
    require(volume.mayHang || volume.mount.type != "fuseblk", "what is served may hang");
    require(volume.mayHang || !volume.wayMayHang, "what can't be reached can't be asked");
  }
}

}  // namespace

void consume(std::string_view input) {
  require(parseMountinfo(input).size() <= split(input, '\n').size(),
          "a line gives a mount at most");

  checkVolumes(parseMountinfo(input));

  std::string table;
  std::vector<Mount> written;
  for (const auto line : split(input, '\n')) {
    const auto cut = line.size() / 2;
    const std::string name(line.substr(0, cut)), other(line.substr(cut));
    Mount mount;
    mount.root = "/" + other;
    mount.mountPoint = "/" + name;
    mount.type = "fuse.kind";
    mount.source = name;
    mount.superOptions = "rw," + other;
    written.push_back(std::move(mount));
    table += lineOf(written.back(), line.size() % 2 == 1);
  }
  const auto read = parseMountinfo(table);
  require(read.size() == written.size(), "every mount of a table is read");
  for (std::size_t at = 0; at < read.size(); ++at) {
    require(read[at].root == written[at].root && read[at].mountPoint == written[at].mountPoint,
            "names come back as they were");
    require(read[at].type == written[at].type && read[at].source == written[at].source &&
                read[at].superOptions == written[at].superOptions,
            "type, source and options come back as they were");
  }
}

}  // namespace vantile::fuzz
