#include "vantile/platform/linux/volumes.h"

#include <sys/statvfs.h>

#include <algorithm>
#include <cerrno>
#include <utility>

#include "vantile/platform/linux/retry_pace.h"

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

/// A row of the table, and what was asked of it since the table was read.
struct LinuxVolumes::Known {
  explicit Known(MountedVolume mounted) : volume(std::move(mounted)) {}

  const MountedVolume volume;
  std::once_flag identified;
  std::string identity;  // once it is
  std::mutex mutex;      // over the rest; held while nobody is asked
  std::optional<std::string> name;
  std::optional<std::shared_ptr<const Image>> icon;
  std::optional<std::chrono::steady_clock::time_point> labelDue;  // to be asked for again
  RetryPace pace;
};

LinuxVolumes::LinuxVolumes(const LinuxRoots& roots, Means means)
    : means_(std::move(means)),
      served_({.ask = means_.figures, .threads = means_.threads, .patience = means_.patience}),
      table_(roots.proc + "/self/mountinfo") {}

LinuxVolumes::~LinuxVolumes() = default;

Volumes::Types LinuxVolumes::localTypes() const {
  return {"ext2",     "ext3", "ext4", "xfs",   "btrfs",   "f2fs",    "jfs",    "reiserfs",
          "bcachefs", "zfs",  "vfat", "ntfs3", "fuseblk", "iso9660", "hfsplus"};
}

/// The table, read again where it changed.
std::shared_ptr<const LinuxVolumes::Table> LinuxVolumes::present(const Types& types) {
  const std::lock_guard lock(mutex_);
  if (!means_.changed(table_) && types == types_) return known_;
  types_.clear();
  known_ = std::make_shared<const Table>();
  const auto text = table_.text();
  if (!text) return known_;
  auto table = std::make_shared<Table>();
  for (auto& volume : volumesIn(parseMountinfo(*text), types))
    table->push_back(std::make_shared<Known>(std::move(volume)));
  known_ = std::move(table);
  types_ = types;
  return known_;
}

const std::string& LinuxVolumes::identityOf(Known& known) const {
  std::call_once(known.identified, [&] { known.identity = means_.identity(known.volume); });
  return known.identity;
}

std::vector<std::optional<VolumeFigures>> LinuxVolumes::figures(const Table& table) {
  std::vector<VolumeKey> served;
  for (const auto& known : table)
    if (known->volume.mayHang)
      served.emplace_back(known->volume.mount.mountPoint, identityOf(*known));
  const auto answers = served_.figures(served);
  auto answer = answers.begin();
  std::vector<std::optional<VolumeFigures>> figures;
  figures.reserve(table.size());
  for (const auto& known : table)
    figures.push_back(known->volume.mayHang ? *answer++
                                            : means_.figures(known->volume.mount.mountPoint));
  return figures;
}

std::vector<MountRecord> LinuxVolumes::mounts(const Types& types) {
  const auto table = present(types);
  const auto all = figures(*table);
  std::vector<MountRecord> records;
  records.reserve(table->size());
  for (std::size_t i = 0; i < all.size(); ++i) {
    if (!all[i]) continue;
    auto& known = *(*table)[i];
    const auto& mount = known.volume.mount;
    records.push_back({mount.type, mount.source, mount.mountPoint, all[i]->blockSize,
                       all[i]->totalBlocks, all[i]->availableBlocks, identityOf(known)});
  }
  return records;
}

std::shared_ptr<LinuxVolumes::Known> LinuxVolumes::knownAt(const std::string& mountPoint) {
  const std::lock_guard lock(mutex_);
  const auto found = std::ranges::find_if(*known_, [&mountPoint](const auto& known) {
    return known->volume.mount.mountPoint == mountPoint;
  });
  return found == known_->end() ? nullptr : *found;
}

std::optional<std::string> LinuxVolumes::name(const std::string& mountPoint) {
  const auto known = knownAt(mountPoint);
  if (!known) return std::nullopt;
  {
    const std::lock_guard lock(known->mutex);
    if (known->name && !(known->labelDue && *known->labelDue <= means_.now())) return known->name;
  }
  auto label = means_.label(known->volume);
  const bool isLabelled = label.has_value();
  auto name = isLabelled ? std::move(*label) : nameWithoutLabel(mountPoint);
  const std::lock_guard lock(known->mutex);
  known->name = std::move(name);
  known->labelDue.reset();
  if (const auto rest = known->pace.next(); !isLabelled && rest < RetryPace::longest)
    known->labelDue = means_.now() + rest;
  return known->name;
}

std::string LinuxVolumes::nameWithoutLabel(const std::string& mountPoint) const {
  return mountPoint == "/" ? means_.computerName().value_or(mountPoint) : lastPart(mountPoint);
}

std::shared_ptr<const Image> LinuxVolumes::icon(const std::string& mountPoint) {
  const auto known = knownAt(mountPoint);
  if (!known) return nullptr;
  {
    const std::lock_guard lock(known->mutex);
    if (known->icon) return *known->icon;
  }
  auto icon = means_.icon(mountPoint);
  const std::lock_guard lock(known->mutex);
  known->icon = icon;
  return icon;
}

std::vector<std::string> LinuxVolumes::localPaths(const Types& types) {
  std::vector<std::string> paths;
  for (const auto& known : *present(types)) paths.push_back(known->volume.mount.mountPoint);
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
