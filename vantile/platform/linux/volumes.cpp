#include "vantile/platform/linux/volumes.h"

#include <sys/statvfs.h>

#include <algorithm>
#include <cerrno>
#include <utility>

namespace vantile {
namespace {

std::optional<struct statvfs> statisticsOf(const std::string& path) {
  struct statvfs status = {};
  while (::statvfs(path.c_str(), &status) != 0)
    if (errno != EINTR) return std::nullopt;
  return status;
}

std::string lastPart(const std::string& mountPoint) {
  return mountPoint.substr(mountPoint.rfind('/') + 1);
}

}  // namespace

std::optional<VolumeFigures> figuresOf(const std::string& mountPoint) {
  const auto status = statisticsOf(mountPoint);
  if (!status) return std::nullopt;
  return VolumeFigures{status->f_frsize, status->f_blocks, status->f_bavail};
}

LinuxVolumes::LinuxVolumes(const LinuxRoots& roots, Means means)
    : means_(std::move(means)),
      table_(roots.proc + "/self/mountinfo"),
      served_({.ask = means_.figures, .threads = means_.threads}) {}

Volumes::Types LinuxVolumes::localTypes() const {
  return {"ext2",     "ext3", "ext4", "xfs",   "btrfs",   "f2fs",    "jfs",    "reiserfs",
          "bcachefs", "zfs",  "vfat", "ntfs3", "fuseblk", "iso9660", "hfsplus"};
}

/// Reads the table again where it changed.
void LinuxVolumes::refresh(const Types& types) {
  if (!means_.changed(table_) && types == types_) return;
  known_.clear();
  types_.clear();
  const auto text = table_.text();
  if (!text) return;
  for (auto& volume : volumesIn(parseMountinfo(*text), types))
    known_.push_back({std::move(volume), std::nullopt, std::nullopt});
  types_ = types;
}

std::vector<std::optional<VolumeFigures>> LinuxVolumes::figures() {
  std::vector<const Mount*> served;
  for (const auto& known : known_)
    if (known.volume.mayHang) served.push_back(&known.volume.mount);
  const auto answers = served_.figures(served);
  auto answer = answers.begin();
  std::vector<std::optional<VolumeFigures>> figures;
  figures.reserve(known_.size());
  for (const auto& known : known_)
    figures.push_back(known.volume.mayHang ? *answer++
                                           : means_.figures(known.volume.mount.mountPoint));
  return figures;
}

std::vector<MountRecord> LinuxVolumes::mounts(const Types& types) {
  const std::lock_guard lock(mutex_);
  refresh(types);
  const auto all = figures();
  std::vector<MountRecord> records;
  records.reserve(known_.size());
  for (std::size_t i = 0; i < all.size(); ++i) {
    if (!all[i]) continue;
    const auto& mount = known_[i].volume.mount;
    records.push_back({mount.type, mount.source, mount.mountPoint, all[i]->blockSize,
                       all[i]->totalBlocks, all[i]->availableBlocks});
  }
  return records;
}

LinuxVolumes::Known* LinuxVolumes::knownAt(const std::string& mountPoint) {
  const auto found = std::ranges::find_if(known_, [&mountPoint](const Known& known) {
    return known.volume.mount.mountPoint == mountPoint;
  });
  return found == known_.end() ? nullptr : &*found;
}

std::optional<std::string> LinuxVolumes::name(const std::string& mountPoint) {
  const std::lock_guard lock(mutex_);
  auto* const known = knownAt(mountPoint);
  if (!known) return std::nullopt;
  if (!known->name) known->name = nameOf(known->volume);
  return known->name;
}

std::optional<std::string> LinuxVolumes::nameOf(const MountedVolume& volume) const {
  if (auto label = means_.label(volume)) return label;
  const auto& mountPoint = volume.mount.mountPoint;
  if (mountPoint != "/") return lastPart(mountPoint);
  auto name = means_.computerName();
  return name ? name : mountPoint;
}

std::shared_ptr<const Image> LinuxVolumes::icon(const std::string& mountPoint) {
  const std::lock_guard lock(mutex_);
  auto* const known = knownAt(mountPoint);
  if (!known) return nullptr;
  if (!known->icon) known->icon = means_.icon(mountPoint);
  return *known->icon;
}

std::vector<std::string> LinuxVolumes::localPaths(const Types& types) {
  const std::lock_guard lock(mutex_);
  refresh(types);
  std::vector<std::string> paths;
  for (const auto& known : known_) paths.push_back(known.volume.mount.mountPoint);
  return paths;
}

FileSystemSpace LinuxVolumes::space(const std::string& path) {
  const auto status = statisticsOf(path);
  if (!status) return {};
  return {status->f_blocks * status->f_frsize, status->f_bavail * status->f_frsize,
          status->f_files};
}

std::shared_ptr<Volumes> systemVolumes() {
  static auto& volumes = *new std::shared_ptr<Volumes>(std::make_shared<LinuxVolumes>());
  return volumes;
}

}  // namespace vantile
