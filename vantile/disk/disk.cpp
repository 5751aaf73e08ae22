#include "vantile/disk/disk.h"

#include <algorithm>
#include <utility>

#include "vantile/disk/category_figures.h"
#include "vantile/disk/disk_ports.h"
#include "vantile/disk/shared_disk_monitor.h"
#include "vantile/disk/volume_types.h"
#include "vantile/foundation/guard.h"

namespace vantile {
namespace {

std::uint64_t usedBytes(const MountRecord& mount) {
  return (mount.totalBlocks - mount.availableBlocks) * mount.blockSize;
}

}  // namespace

SharedInstance<KVDDisk>& sharedDiskMonitor() {
  static auto& instance = *new SharedInstance<KVDDisk>;
  return instance;
}

std::shared_ptr<KVDDisk> KVDDisk::singleton() {
  return sharedDiskMonitor().get([] { return init(); });
}

std::shared_ptr<KVDDisk> KVDDisk::init() {
  std::shared_ptr<KVDDisk> monitor(new KVDDisk(DiskPorts::installed()));
  monitor->setFreshInterval(1);
  return monitor;
}

KVDDisk::KVDDisk(DiskPorts ports)
    : ports_(std::make_unique<const DiskPorts>(std::move(ports))),
      types_(volumeTypes(*ports_->volumes)),
      categories_(ports_->makeCategories()) {}

KVDDisk::~KVDDisk() = default;

void KVDDisk::updateInfo(const Timer*) {
  guarded("a disk sample", [this] { sample(); });
}

void KVDDisk::sample() {
  Array volumes;
  std::vector<VolumeKey> told;
  const auto mounts = ports_->volumes->mounts(types_);
  volumes.reserve(mounts.size());
  told.reserve(mounts.size());
  for (const auto& mount : mounts) {
    if (std::ranges::find(types_, mount.type) == types_.end()) continue;
    VolumeKey key(mount.mountPoint, mount.identity);
    if (auto volume = volumeAt(mount, key)) {
      volumes.emplace_back(std::move(volume));
      told.push_back(std::move(key));
    }
  }
  const auto listener = delegate();
  const bool isHeard = implements(listener, &DiskDelegate::diskDetails);
  // To count what nobody hears of would be a waste.
  want(isHeard ? std::move(told) : std::vector<VolumeKey>());
  tell(listener, &DiskDelegate::diskDetails, volumes);
}

/// The volume's dictionary, or null for one without a name, which is not told of.
std::shared_ptr<Dictionary> KVDDisk::volumeAt(const MountRecord& mount, const VolumeKey& key) {
  auto name = ports_->volumes->name(mount.mountPoint);
  if (!name) return nullptr;
  auto volume = std::make_shared<Dictionary>();
  volume->reserve(15);
  volume->set(keys::disk_format, mount.type);
  volume->set(keys::disk_mntfromname, mount.device);
  volume->set(keys::disk_path, mount.mountPoint);
  volume->set(keys::disk_name, std::move(*name));
  if (auto icon = ports_->volumes->icon(mount.mountPoint))
    volume->set(keys::disk_icom, std::move(icon));
  volume->set(keys::disk_totalsize, mount.blockSize * mount.totalBlocks);
  volume->set(keys::disk_freesize, mount.blockSize * mount.availableBlocks);
  volume->set(keys::disk_usedsize, usedBytes(mount));
  if (mount.mountPoint == "/") volume->set(keys::disk_backups, std::uint64_t{0});
  addCategories(*volume, categoriesOf(key), usedBytes(mount));
  return volume;
}

std::optional<CategorySizes> KVDDisk::categoriesOf(const VolumeKey& volume) {
  const std::lock_guard lock(categoriesLock_);
  return categories_->of(volume);
}

void KVDDisk::want(std::vector<VolumeKey> volumes) {
  const std::lock_guard lock(categoriesLock_);
  if (volumes == wanted_) return;
  categories_->want(volumes);
  wanted_ = std::move(volumes);
}

}  // namespace vantile
