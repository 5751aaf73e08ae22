#include "vantile/platform/parsers/mounted_volumes.h"

#include <algorithm>
#include <cstddef>
#include <map>
#include <set>
#include <utility>

namespace vantile {
namespace {

/// Served by a process, or by another machine.
bool isServed(std::string_view type) {
  return type == "fuseblk" || type == "fuse" || type.starts_with("fuse.") ||
         type.starts_with("nfs") || type == "cifs" || type == "smb3" || type == "9p" ||
         type == "ceph" || type == "afs";
}

bool isWithin(std::string_view folder, std::string_view path) {
  if (folder == "/") return path.starts_with('/');
  return path.starts_with(folder) && (path.size() == folder.size() || path[folder.size()] == '/');
}

/// Whether all of the file system is mounted, or all of its subvolume, which it then names.
bool isWhole(const Mount& mount) {
  if (mount.root == "/" || mount.mountPoint == "/") return true;
  // Its name may have commas, which are told like those between the options.
  const auto options = "," + mount.superOptions + ",";
  return options.find(",subvol=" + mount.root + ",") != options.npos;
}

/// Follows paths through the mounts as the kernel does.
class MountTree {
 public:
  explicit MountTree(const std::vector<Mount>& mounts) {
    std::set<std::uint64_t> ids;
    for (const auto& mount : mounts) ids.insert(mount.id);
    for (const auto& mount : mounts) {
      const bool hasParent = mount.parent != mount.id && ids.contains(mount.parent);
      (hasParent ? within_[mount.parent] : outermost_).push_back(&mount);
    }
  }

  /// The mounts on the way to `path`, outermost first; the last one is what stands there.
  std::vector<const Mount*> way(std::string_view path) const {
    std::vector<const Mount*> way;
    std::set<std::uint64_t> seen;  // a table that is no tree must not lead in circles
    const auto* next = first(outermost_, path);
    while (next && seen.insert(next->id).second) {
      way.push_back(next);
      const auto children = within_.find(next->id);
      next = children == within_.end() ? nullptr : first(children->second, path);
    }
    return way;
  }

 private:
  using Mounts = std::vector<const Mount*>;

  /// The one that a path meets first: whose mount point is the shortest.
  static const Mount* first(const Mounts& mounts, std::string_view path) {
    const Mount* met = nullptr;
    for (const auto* mount : mounts) {
      if (!isWithin(mount->mountPoint, path)) continue;
      if (!met || mount->mountPoint.size() < met->mountPoint.size()) met = mount;
    }
    return met;
  }

  Mounts outermost_;
  std::map<std::uint64_t, Mounts> within_;
};

/// Whether the one is the better place to know a file system by.
bool isBetter(const Mount& mount, const Mount& other) {
  const bool isRoot = mount.mountPoint == "/", otherIsRoot = other.mountPoint == "/";
  if (isRoot != otherIsRoot) return isRoot;
  return mount.mountPoint.size() < other.mountPoint.size();
}

/// Whether the one shows what is part of the other, or the other way round. Mounts of one file
/// system differ in its options by the subvolume alone, and none shows what is in another.
bool overlap(const Mount& one, const Mount& other) {
  return one.superOptions == other.superOptions &&
         (isWithin(one.root, other.root) || isWithin(other.root, one.root));
}

/// Of these mounts of one file system, the others to go to beside `main`.
std::vector<std::string> othersThan(const Mount& main, std::vector<const Mount*> mounts) {
  std::ranges::stable_sort(mounts, [](const Mount* one, const Mount* other) {
    const auto size = one->root.size(), otherSize = other->root.size();
    return size != otherSize ? size < otherSize : isBetter(*one, *other);
  });
  std::vector<const Mount*> chosen = {&main};
  std::vector<std::string> others;
  for (const auto* const mount : mounts) {
    if (std::ranges::any_of(chosen, [&](auto* each) { return overlap(*each, *mount); })) continue;
    chosen.push_back(mount);
    others.push_back(mount->mountPoint);
  }
  return others;
}

}  // namespace

std::vector<MountedVolume> volumesIn(std::vector<Mount> mounts,
                                     std::span<const std::string_view> types) {
  struct Place {
    std::size_t row = 0;  // of the table
    bool mayHang = false, wayMayHang = false;
  };
  const MountTree tree(mounts);
  std::map<DeviceNumber, Place> best;
  std::map<DeviceNumber, std::vector<const Mount*>> all;  // that do not hang
  for (std::size_t row = 0; row < mounts.size(); ++row) {
    const auto& mount = mounts[row];
    if (std::ranges::find(types, mount.type) == types.end()) continue;
    auto way = tree.way(mount.mountPoint);
    if (way.empty() || way.back() != &mount) continue;
    way.pop_back();
    const bool wayMayHang =
        std::ranges::any_of(way, [](auto* each) { return isServed(each->type); });
    const Place place = {row, wayMayHang || isServed(mount.type), wayMayHang};
    if (!place.mayHang) all[mount.device].push_back(&mount);
    if (!isWhole(mount)) continue;
    const auto [known, isNew] = best.try_emplace(mount.device, place);
    if (!isNew && isBetter(mount, mounts[known->second.row])) known->second = place;
  }
  std::vector<Place> places;
  places.reserve(best.size());
  for (const auto& [device, place] : best) places.push_back(place);
  std::ranges::sort(places, {}, &Place::row);
  std::vector<MountedVolume> volumes;
  volumes.reserve(places.size());
  for (const auto& [row, mayHang, wayMayHang] : places) {
    const auto& mount = mounts[row];
    volumes.push_back({mount, mayHang, wayMayHang, othersThan(mount, all[mount.device])});
  }
  return volumes;
}

}  // namespace vantile
